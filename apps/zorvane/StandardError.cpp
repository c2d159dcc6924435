#include "StandardError.hpp"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <system_error>

#include "WriteAll.hpp"

namespace zorvane::cli {
namespace {

constexpr std::string_view toLineStart = "\r\x1b[K";

/// A full line would wrap, and so would one to which the terminal adds the "^C" of who stops the recording.
constexpr std::size_t beyondLive = 3;

bool canShowLive() {
    const char* kind = std::getenv("TERM");
    return isatty(STDERR_FILENO) != 0 && kind && std::string_view(kind) != "dumb";
}

std::size_t columns() {
    winsize size = {};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

void writeOrLose(std::string_view text) {
    try {
        writeAll(STDERR_FILENO, text);
    } catch (const std::system_error&) {  // there is nowhere left to say it
    }
}

}  // namespace

StandardError::StandardError() : isTerminal_(canShowLive()) {}

void StandardError::print(std::string_view line) {
    std::lock_guard lock(mutex_);
    std::string text;
    if (!live_.empty()) {
        text += toLineStart;
    }
    text.append(line).append("\n").append(live_);
    writeOrLose(text);
}

void StandardError::showLive(std::string_view text) {
    if (!isTerminal_) {
        return;
    }
    std::lock_guard lock(mutex_);
    live_ = text.substr(0, columns() - std::min(columns(), beyondLive));
    writeOrLose(std::string(toLineStart) + live_);
}

void StandardError::clearLive() {
    std::lock_guard lock(mutex_);
    if (!live_.empty()) {
        live_.clear();
        writeOrLose(toLineStart);
    }
}

}  // namespace zorvane::cli
