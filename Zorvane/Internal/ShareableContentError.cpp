#include "Zorvane/Internal/ShareableContentError.hpp"

namespace zorvane {
namespace {

struct Texts {
    const char* name;
    const char* description;
};

Texts textsOf(ShareableContentError::Case errorCase) {
    using Case = ShareableContentError::Case;
    switch (errorCase) {
        case Case::timeout:
            return {"timeout", "Cannot access ScreenCaptureKit. If this error persists, try rebooting your computer."};
        case Case::timeoutRecordWindow:
            return {"timeoutRecordWindow",
                    "Cannot record window. If this error persists, try rebooting your computer."};
        case Case::timeoutRecordDisplay:
            return {"timeoutRecordDisplay",
                    "Cannot record display. If this error persists, try rebooting your computer."};
        case Case::timeoutRecordSystemAudio:
            return {"timeoutRecordSystemAudio",
                    "Cannot record system audio. If this error persists, try rebooting your computer."};
        case Case::timeoutListWindows:
            return {"timeoutListWindows", "Cannot list windows. If this error persists, try rebooting your computer."};
        case Case::timeoutListDisplays:
            return {"timeoutListDisplays",
                    "Cannot list displays. If this error persists, try rebooting your computer."};
        case Case::timeoutListApplications:
            return {"timeoutListApplications",
                    "Cannot list applications. If this error persists, try rebooting your computer."};
    }
    return {"unknown", "Unknown error."};
}

}  // namespace

ShareableContentError::ShareableContentError(Case errorCase)
    : ZVDescribedError(textsOf(errorCase).description, textsOf(errorCase).name), case_(errorCase) {}

}  // namespace zorvane
