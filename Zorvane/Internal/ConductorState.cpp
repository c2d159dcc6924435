#include "Zorvane/Internal/ConductorState.hpp"

namespace zorvane {

std::string_view ConductorState::debugDescription() const {
    switch (kind()) {
        case Case::prepareFailed:
            return "prepareFailed";
        case Case::stopped:
            return "stopped";
        case Case::stopFailed:
            return "stopFailed";
        case Case::aborted:
            return "aborted";
        case Case::initial:
            return "initial";
        case Case::preparing:
            return "preparing";
        case Case::prepared:
            return "prepared";
        case Case::recording:
            return "recording";
        case Case::stopping:
            return "stopping";
        case Case::abortingPrepared:
            return "abortingPrepared";
        case Case::abortingRecording:
            return "abortingRecording";
    }
    return "";
}

}  // namespace zorvane
