// Keeps the application objects current.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "Zorvane/Internal/Concurrency/AsyncStream.hpp"
#include "Zorvane/Internal/CurrentValueSubject.hpp"
#include "Zorvane/Internal/Discovery/AnswerPoll.hpp"
#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Platform/AppKit/NSWorkspace.hpp"
#include "Zorvane/Sources/ZVRunningApplication.hpp"

namespace zorvane {

/// Reads the running applications when the workspace tells of a change, and polls them, since not every workspace
/// does. Keeps one object for every process id ever seen. Updates happen on the main executor. Reading is safe on any
/// thread.
class ApplicationDiscovery : public std::enable_shared_from_this<ApplicationDiscovery> {
  public:
    using List = ZVRunningApplication::List;

    /// The current world's, started.
    static std::shared_ptr<ApplicationDiscovery> shared();

    ApplicationDiscovery();

    /// Reads the applications for the first time, and begins to poll.
    void start();

    /// The applications that run, by name and then by process id.
    List applications() const { return applications_.value(); }
    AsyncStream<List> updates() const { return applications_.publisher().values(); }

    /// Brings the objects up to date with the running applications. The owners of windows decide nothing; that they
    /// changed is a reason to ask for the applications. Main executor only.
    void updateApplications(const std::vector<NSRunningApplication>& apps, const std::vector<std::int32_t>& winAppPIDs);

  private:
    struct Answer {
        std::vector<NSRunningApplication> apps;
        std::vector<std::int32_t> winAppPIDs;

        bool operator==(const Answer&) const = default;
    };

    static Answer ask();
    bool put(const NSRunningApplication& seen);
    void publish(List list, bool anyChanged);

    const Logger logger_;
    CurrentValueSubject<List> applications_;
    /// By process id. Belongs to the main executor; never shrinks.
    std::map<std::int32_t, std::shared_ptr<ZVRunningApplication>> allApplications_;
    std::shared_ptr<AnswerPoll<Answer>> poll_;
    NSKeyValueObservation nsApplicationsObservation_;
};

}  // namespace zorvane
