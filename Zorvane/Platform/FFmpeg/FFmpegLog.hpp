// What the FFmpeg libraries would print.
#pragma once

namespace zorvane {

/// Keeps the FFmpeg libraries from printing to standard error, unless the host has chosen a level of its own: errors
/// come back as results. Whatever uses these libraries calls it first. Any thread.
void silenceFFmpegLog();

}  // namespace zorvane
