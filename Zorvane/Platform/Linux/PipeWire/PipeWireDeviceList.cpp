#include "Zorvane/Platform/Linux/PipeWire/PipeWireDeviceList.hpp"

#include <pipewire/keys.h>

#include <algorithm>
#include <utility>

#include "Zorvane/Platform/Linux/PipeWire/PipeWireCaptureCards.hpp"

namespace zorvane {

PipeWireDeviceList::Devices PipeWireDeviceList::devices() {
    MutexLock lock(mutex_);
    waitForFirstUpdate(lock);
    Devices devices;
    for (const Listed& entry : listed_) {
        devices.push_back(entry.device);
    }
    return devices;
}

PipeWireDeviceList::Cards PipeWireDeviceList::cards() {
    MutexLock lock(mutex_);
    waitForFirstUpdate(lock);
    return cards_;
}

std::string PipeWireDeviceList::defaultDeviceID(AVMediaType mediaType) {
    MutexLock lock(mutex_);
    waitForFirstUpdate(lock);
    const auto chosen = defaultNodes_.find(mediaType);
    if (chosen == defaultNodes_.end()) {
        return {};
    }
    const auto preferred = std::ranges::find_if(listed_, [&](const Listed& entry) {
        return entry.device->description().mediaType == mediaType && entry.nodeName == chosen->second;
    });
    return preferred == listed_.end() ? std::string() : preferred->device->uniqueID();
}

bool PipeWireDeviceList::isConnected() {
    const MutexLock lock(mutex_);
    return isConnected_;
}

void PipeWireDeviceList::waitForFirstUpdate(MutexLock& lock) {
    const auto deadline = std::chrono::steady_clock::now() + longestFirstUpdate;
    while (!isUpdated_ && updated_.wait_until(lock, deadline) == std::cv_status::no_timeout) {
    }
    isUpdated_ = true;
}

void PipeWireDeviceList::update(const PipeWireSources& sources) {
    const std::vector<Listed> now = makeList(sources.sources);
    const Cards cards = makeCards(sources.sources, now);
    const std::vector<Listed> before = listed();
    const auto isListed = [&now](const Listed& entry) {
        return std::ranges::find(now, entry.device, &Listed::device) != now.end();
    };
    for (const Listed& entry : before) {
        if (!isListed(entry)) {
            entry.device->setGone();  // before the list lacks it: what isn't listed is never connected
        }
    }
    bool hasOtherCards = false;
    {
        const MutexLock lock(mutex_);
        listed_ = now;
        hasOtherCards = std::exchange(cards_, cards) != cards;
        defaultNodes_ = sources.defaultNodes;
        isUpdated_ = true;
        isConnected_ = sources.isConnected;
    }
    updated_.notify_all();
    if (hasOtherCards || !std::ranges::equal(before, now, {}, &Listed::device, &Listed::device)) {
        observers_.notify();
    }
    updateObservers_.notify();
}

std::vector<PipeWireDeviceList::Listed> PipeWireDeviceList::listed() {
    const MutexLock lock(mutex_);
    return listed_;
}

std::vector<PipeWireDeviceList::Listed> PipeWireDeviceList::makeList(const std::vector<PipeWireSource>& sources) {
    std::erase_if(known_, [](const auto& entry) { return entry.second.expired(); });
    std::vector<std::string> ids = ids_.assign(sources);
    std::vector<Listed> list;
    for (std::size_t index = 0; index < sources.size(); ++index) {
        const PipeWireSource& source = sources[index];
        const auto device = deviceFor(describeDevice(source, std::move(ids[index])));
        device->update(source);
        list.push_back({device, rawValue(source.node, PW_KEY_NODE_NAME)});
    }
    return list;
}

PipeWireDeviceList::Cards PipeWireDeviceList::makeCards(const std::vector<PipeWireSource>& sources,
                                                        const std::vector<Listed>& list) {
    std::erase_if(knownCards_, [](const auto& entry) { return entry.second.expired(); });
    Cards cards;
    for (const PipeWireCardHalves& halves : captureCardsIn(sources)) {
        const auto& camera = list[halves.camera].device;
        const auto& microphone = list[halves.microphone].device;
        std::weak_ptr<PipeWireCaptureCard>& known = knownCards_[PipeWireCaptureCard::idOf(*camera)];
        auto card = known.lock();
        if (!card || card->camera() != camera || card->microphone() != microphone) {
            card = std::make_shared<PipeWireCaptureCard>(camera, microphone);
            known = card;
        }
        cards.push_back(std::move(card));
    }
    return cards;
}

std::shared_ptr<PipeWireCaptureDevice> PipeWireDeviceList::deviceFor(PipeWireDeviceDescription description) {
    std::weak_ptr<PipeWireCaptureDevice>& known = known_[description.uniqueID];
    auto device = known.lock();
    // A device keeps its name for as long as it is listed; after that another one may have got its id.
    if (!device || (!device->isConnected() && device->description() != description)) {
        device = std::make_shared<PipeWireCaptureDevice>(std::move(description));
        known = device;
    }
    return device;
}

}  // namespace zorvane
