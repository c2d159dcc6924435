#include "Zorvane/Internal/Recorders/InputRecorder/CGEventTapError.hpp"

namespace zorvane {
namespace {

struct Texts {
    const char* name;
    const char* description;
};

Texts textsOf(CGEventTapError::Case errorCase) {
    using Case = CGEventTapError::Case;
    switch (errorCase) {
        case Case::tapCreationFailed:
            return {"tapCreationFailed",
                    "Can't record the keyboard because the desktop doesn't let this application listen to it. Record "
                    "without keyboard events, or allow the application to monitor input."};
        case Case::tapDisabledByTimeout:
            return {
                "tapDisabledByTimeout",
                "Recording mouse and keyboard ended because this computer was too busy. Close other applications and "
                "record again."};
        case Case::tapDisabledByUserInput:
            return {
                "tapDisabledByUserInput",
                "Recording mouse and keyboard ended because the desktop no longer lets this application listen. Record "
                "again."};
    }
    return {"unknown", "Unknown error."};
}

}  // namespace

CGEventTapError::CGEventTapError(Case errorCase)
    : ZVDescribedError(textsOf(errorCase).description, textsOf(errorCase).name), case_(errorCase) {}

}  // namespace zorvane
