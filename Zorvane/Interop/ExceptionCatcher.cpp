#include "Zorvane/Interop/ExceptionCatcher.hpp"

namespace zorvane {

NSError ExceptionCatcher::error(const NSException& exception) {
    return {
        exception.name(), 0, {exception.reason(), std::make_exception_ptr(exception), exception.callStackSymbols()}};
}

}  // namespace zorvane
