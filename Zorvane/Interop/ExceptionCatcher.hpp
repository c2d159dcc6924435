// Guards a call into the platform that answers a programming error with an exception.
#pragma once

#include <utility>

#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Foundation/NSException.hpp"

namespace zorvane {

class ExceptionCatcher {
  public:
    /// Calls `callback` and returns what it returns. An `NSException` it throws is thrown on as an `NSError`; any
    /// other exception passes unchanged.
    template <typename Callback>
    static decltype(auto) catching(Callback&& callback) {
        try {
            return std::forward<Callback>(callback)();
        } catch (const NSException& exception) {
            throw error(exception);
        }
    }

  private:
    /// The error whose domain is the exception's name, with code 0, the reason as its text, the exception as its
    /// underlying error, and the exception's call stack.
    static NSError error(const NSException& exception);
};

}  // namespace zorvane
