#include "Zorvane/ZVOutcome.hpp"

namespace zorvane {

const char* ZVCancelled::what() const noexcept {
    return "The operation was cancelled.";
}

bool isCancellation(const std::exception_ptr& error) noexcept {
    if (!error) {
        return false;
    }
    try {
        std::rethrow_exception(error);
    } catch (const ZVCancelled&) {
        return true;
    } catch (...) {
        return false;
    }
}

}  // namespace zorvane
