// Lists the windows that can be recorded and says what becomes of them.
//
//     watch_windows [--virtual] [SECONDS]
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <map>
#include <memory>
#include <stop_token>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "Zorvane/Zorvane.hpp"

using namespace zorvane;

namespace {

/// Works on the main executor only, so that it needs no lock.
class WindowNews {
  public:
    void listed(const ZVWindow::List& windows) {
        for (const auto& window : windows) {
            if (!subscriptions_.contains(window->id())) {
                follow(window);
            }
        }
    }

  private:
    /// Windows are told of once: each stays the same object, also when it is closed.
    void follow(const std::shared_ptr<ZVWindow>& window) {
        const std::uint32_t id = window->id();
        std::cout << window->debugDescription() << '\n';
        subscriptions_.emplace(
            id, std::pair(window->titlePublisher().subscribe([id](const std::optional<std::string>& title) {
                std::cout << id << " is called " << title.value_or("nothing") << '\n';
            }),
                          window->availabilityPublisher().subscribe([id](ZVWindow::Availability availability) {
                              std::cout << id << " is " << rawValue(availability) << '\n';
                          })));
    }

    std::map<std::uint32_t, std::pair<ZVSubscription, ZVSubscription>> subscriptions_;
};

ZVTask<> follow(std::shared_ptr<WindowNews> news) {
    auto updates = ZVWindow::updates();
    while (const auto windows = co_await updates.next()) {
        ZVMainExecutor::post([news, list = *windows] { news->listed(list); });
    }
}

}  // namespace

int main(int argc, char** argv) {
    double seconds = 10;
    for (int index = 1; index < argc; ++index) {
        if (argv[index] == std::string_view("--virtual")) {
            ZVPlatform::use(ZVPlatformKind::virtualDesktop);
        } else {
            seconds = std::atof(argv[index]);
        }
    }
    std::stop_source stop;
    follow(std::make_shared<WindowNews>()).start([](const ZVOutcome<>&) {}, stop.get_token());
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    stop.request_stop();
}
