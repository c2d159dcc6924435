#include "Zorvane/Platform/Linux/LinuxScreenCapture.hpp"

#include <algorithm>
#include <utility>
#include <vector>

#include "Zorvane/Platform/Linux/LinuxStream.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSystemSoundPlayers.hpp"
#include "Zorvane/Platform/Linux/System/ApplicationCatalog.hpp"

namespace zorvane {
namespace {

using Players = std::vector<PipeWireSystemSoundPlayer>;

void add(const Players& players, ApplicationCatalog& catalog, std::vector<SCRunningApplication>& applications) {
    for (const PipeWireSystemSoundPlayer& player : players) {
        if (std::ranges::count(applications, player.processID, &SCRunningApplication::processID) == 0) {
            auto identity = catalog.identify(player.processID, player.applicationName, player.program);
            applications.push_back({.processID = player.processID,
                                    .bundleIdentifier = std::move(identity.identifier),
                                    .applicationName = std::move(identity.name)});
        }
    }
}

}  // namespace

LinuxScreenCapture::LinuxScreenCapture(std::shared_ptr<SCScreenCapture> screens,
                                       std::shared_ptr<PipeWireSession> pipeWire,
                                       std::shared_ptr<AVAudioConverting> converting,
                                       std::shared_ptr<ApplicationCatalog> catalog)
    : screens_(std::move(screens)),
      pipeWire_(std::move(pipeWire)),
      converting_(std::move(converting)),
      catalog_(std::move(catalog)),
      players_(std::make_unique<PipeWireSystemSoundPlayers>(pipeWire_)) {}

LinuxScreenCapture::~LinuxScreenCapture() = default;

void LinuxScreenCapture::getShareableContent(SCShareableContentScope scope, ContentHandler handler) {
    players_->get([screens = screens_, catalog = catalog_, scope, handler = std::move(handler)](Players players) {
        auto join = [catalog, handler, players = std::move(players)](SCShareableContent content,
                                                                     std::exception_ptr error) {
            if (!error) {
                add(players, *catalog, content.applications);
            }
            handler(std::move(content), std::move(error));
        };
        screens->getShareableContent(scope, std::move(join));
    });
}

std::shared_ptr<SCStream> LinuxScreenCapture::makeStream(const SCContentFilter& filter,
                                                         const SCStreamConfiguration& configuration,
                                                         std::weak_ptr<SCStreamDelegate> delegate) {
    return LinuxStream::make({.screens = screens_, .pipeWire = pipeWire_, .converting = converting_}, filter,
                             configuration, std::move(delegate));
}

void LinuxScreenCapture::restartCaptureService(std::function<void(std::exception_ptr error)> handler) {
    screens_->restartCaptureService(std::move(handler));
}

}  // namespace zorvane
