#include "Zorvane/Platform/FFmpeg/FFmpegLog.hpp"

extern "C" {
#include <libavutil/log.h>
}

namespace zorvane {

void silenceFFmpegLog() {
    static const bool isSilenced = [] {
        if (av_log_get_level() == AV_LOG_INFO) {  // the libraries' default
            av_log_set_level(AV_LOG_QUIET);
        }
        return true;
    }();
    static_cast<void>(isSilenced);
}

}  // namespace zorvane
