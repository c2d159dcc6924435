// Standard error: messages, log lines and the live line share it.
#pragma once

#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>

namespace zorvane::cli {

/// Writes whole lines, and on a terminal one live line below them that is overwritten in place. On anything else but a
/// terminal no control character is written but line feeds. What can't be written is lost. Any thread.
class StandardError {
  public:
    StandardError();

    /// Prints a line; the live line moves down.
    void print(std::string_view line);

    /// Whether `showLive` shows anything.
    bool isTerminal() const { return isTerminal_; }
    /// Shows `text` in place of the live line before, cut to the terminal's width.
    void showLive(std::string_view text);
    /// Takes the live line away.
    void clearLive();

  private:
    const bool isTerminal_;
    std::mutex mutex_;
    std::string live_;  // guarded by mutex_
};

}  // namespace zorvane::cli
