#include "Zorvane/Platform/Linux/Phone/PhoneService.hpp"

#include <usbmuxd.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <set>
#include <utility>

#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"
#include "Zorvane/Platform/Linux/Phone/PropertyList.hpp"

namespace zorvane {
namespace {

AttachedPhone phoneOf(const usbmuxd_device_info_t& device) {
    using Attachment = AttachedPhone::Attachment;
    return {device.handle, device.udid,
            device.conn_type == CONNECTION_TYPE_NETWORK ? Attachment::network : Attachment::cable};
}

/// The process's one subscription at the library. It never ends: to end one, the library waits for its thread, which
/// misses that for good when the service has just gone.
class Events {
  public:
    using Event = PhoneSubscription::Event;
    using Handler = PhoneSubscription::Handler;

    static Events& shared() {
        static auto& events = *new Events;
        return events;
    }

    void add(const Handler& handler) {
        const MutexLock lock(mutex_);
        handlers_.insert(&handler);
        for (const auto& [deviceID, phone] : phones_) {
            handler(Event::attached, phone);
        }
    }

    void remove(const Handler& handler) {
        const MutexLock lock(mutex_);
        handlers_.erase(&handler);
    }

  private:
    Events() {
        // The library's watch of the socket's folder knows one folder only, misses a socket that comes just before it,
        // and wakes up once a second as well.
        libusbmuxd_set_use_inotify(0);
        usbmuxd_events_subscribe(&context_, take, this);
    }

    static void take(const usbmuxd_event_t* event, void* events) {
        const AttachedPhone phone = phoneOf(event->device);
        static_cast<Events*>(events)->tell(eventOf(*event), phone);
    }

    static Event eventOf(const usbmuxd_event_t& event) {
        switch (event.event) {
            case UE_DEVICE_ADD:
                return Event::attached;
            case UE_DEVICE_REMOVE:
                return Event::detached;
            default:
                return Event::paired;
        }
    }

    void tell(Event event, const AttachedPhone& phone) {
        const MutexLock lock(mutex_);
        if (event == Event::attached) {
            phones_[phone.deviceID] = phone;
        } else if (event == Event::detached) {
            phones_.erase(phone.deviceID);
        }
        for (const Handler* handler : handlers_) {
            (*handler)(event, phone);
        }
    }

    usbmuxd_subscription_context_t context_ = nullptr;
    Mutex mutex_;
    std::map<std::uint32_t, AttachedPhone> phones_ ZV_GUARDED_BY(mutex_);
    std::set<const Handler*> handlers_ ZV_GUARDED_BY(mutex_);
};

}  // namespace

PhoneSubscription::PhoneSubscription(Handler handler) : handler_(std::move(handler)) {
    Events::shared().add(handler_);
}

PhoneSubscription::~PhoneSubscription() {
    Events::shared().remove(handler_);
}

std::vector<AttachedPhone> listPhones() {
    usbmuxd_device_info_t* devices = nullptr;
    const int count = usbmuxd_get_device_list(&devices);
    std::vector<AttachedPhone> phones;
    for (int index = 0; index < count; ++index) {
        phones.push_back(phoneOf(devices[index]));
    }
    usbmuxd_device_list_free(&devices);
    return phones;
}

std::optional<std::string> readHostID(const std::string& udid) {
    char* bytes = nullptr;
    std::uint32_t size = 0;
    if (usbmuxd_read_pair_record(udid.c_str(), &bytes, &size) < 0) {
        return std::nullopt;
    }
    const std::unique_ptr<char, decltype(&std::free)> owner(bytes, &std::free);
    return textOf(parsePropertyList(bytes, size), "HostID").value_or("");
}

}  // namespace zorvane
