#include "Zorvane/Platform/Virtual/VirtualUserDefaults.hpp"

namespace zorvane {

std::optional<NSUserDefaultsArray> VirtualUserDefaults::array(std::string_view key) {
    MutexLock lock(mutex_);
    return find(key);
}

void VirtualUserDefaults::update(std::string_view key, const Change& change) {
    MutexLock lock(mutex_);
    if (updateError_) {
        std::rethrow_exception(updateError_);
    }
    values_.insert_or_assign(std::string(key), change(find(key)));
}

void VirtualUserDefaults::failUpdates(std::exception_ptr error) {
    MutexLock lock(mutex_);
    updateError_ = std::move(error);
}

std::optional<NSUserDefaultsArray> VirtualUserDefaults::find(std::string_view key) const {
    const auto found = values_.find(key);
    return found == values_.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace zorvane
