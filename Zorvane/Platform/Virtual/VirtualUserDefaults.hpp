// User defaults that live as long as their object.
#pragma once

#include <exception>
#include <functional>
#include <map>
#include <string>
#include <utility>

#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"
#include "Zorvane/Platform/Foundation/NSUserDefaults.hpp"

namespace zorvane {

class VirtualUserDefaults final : public NSUserDefaults {
  public:
    std::optional<NSUserDefaultsArray> array(std::string_view key) override;
    void update(std::string_view key, const Change& change) override;

    /// What `update` throws from now on instead of keeping a value; null mends it.
    void failUpdates(std::exception_ptr error);

  private:
    std::optional<NSUserDefaultsArray> find(std::string_view key) const ZV_REQUIRES(mutex_);

    Mutex mutex_;
    std::map<std::string, NSUserDefaultsArray, std::less<>> values_ ZV_GUARDED_BY(mutex_);
    std::exception_ptr updateError_ ZV_GUARDED_BY(mutex_);
};

}  // namespace zorvane
