#include "Zorvane/Platform/CoreGraphics/CGError.hpp"

namespace zorvane {
namespace {

const char* caseName(CGError error) {
    switch (error) {
        case CGError::success:
            return "success";
        case CGError::failure:
            return "failure";
        case CGError::illegalArgument:
            return "illegalArgument";
        case CGError::invalidConnection:
            return "invalidConnection";
        case CGError::invalidContext:
            return "invalidContext";
        case CGError::cannotComplete:
            return "cannotComplete";
        case CGError::notImplemented:
            return "notImplemented";
        case CGError::rangeCheck:
            return "rangeCheck";
        case CGError::typeCheck:
            return "typeCheck";
        case CGError::invalidOperation:
            return "invalidOperation";
        case CGError::noneAvailable:
            return "noneAvailable";
    }
    return "@unknown default";
}

}  // namespace

CGErrorDescription::CGErrorDescription(CGError error, const std::string& detail)
    : ZVDescribedError(detail, caseName(error)), error_(error) {}

}  // namespace zorvane
