// The log core: filters by level, builds a message only if somebody will read it, hands it to the handlers.
#pragma once

#include <array>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

namespace zorvane {

class SystemLog;

using LogMetadata = std::map<std::string, std::string>;

/// Ordered from the least to the most severe.
enum class ZVLogLevel { trace, debug, info, warning, error, critical };

inline constexpr std::array<ZVLogLevel, 6> allLogLevels{ZVLogLevel::trace,   ZVLogLevel::debug, ZVLogLevel::info,
                                                        ZVLogLevel::warning, ZVLogLevel::error, ZVLogLevel::critical};

/// The level's name in lower case, as it stands in a log line and in JSON.
std::string_view rawValue(ZVLogLevel level);
/// The level of that name, if there is one.
std::optional<ZVLogLevel> logLevelFromRawValue(std::string_view name);

/// The log sink of the process. The library logs to `shared()`; its messages go to the system's log until a host takes
/// the output over with `setLogHandler`.
///
/// All operations may be called on any thread, also from within a handler. A line below its threshold, or one that no
/// handler would read, costs a guarded read: nothing of it is evaluated and nothing is allocated.
class ZVLogger {
  public:
    /// One event that was logged.
    struct LogMessage {
        std::chrono::system_clock::time_point timestamp;
        ZVLogLevel level = ZVLogLevel::debug;
        std::string category;
        std::string message;
        LogMetadata metadata;

        /// The log line, in local time:
        ///
        ///     2024-03-01T14:05:09.123+0100 info [Category] Message. key=value other=value
        ///
        /// Without metadata it ends in a space.
        std::string description() const;
        /// The pairs "key=value", unquoted, sorted, joined by single spaces.
        std::string formattedMetadata() const;
    };

    enum class HandlerMode {
        nonblocking,  ///< runs later, one message at a time and in order, on a queue of the logger's
        realtime,     ///< runs at once on the logging thread, concurrently with itself: must be fast and safe there
    };

    /// Must not throw.
    using LogHandler = std::function<void(const LogMessage&)>;

    class HandlerWrapper;
    /// Keeps a handler registered. After its release the handler may still get a message that was on its way, and in
    /// nonblocking mode those already queued, so what it captures must live as long as the handler itself.
    using HandlerToken = std::shared_ptr<HandlerWrapper>;

    /// A text or a map, or a callable that makes it when it is asked for. Refers to its source: to be passed, not kept.
    template <typename Result>
    class Deferred;

    /// The one instance of the process, made on first use. It is never destroyed, so that static objects may still log
    /// when they go.
    static const std::shared_ptr<ZVLogger>& shared();

    /// A logger of one's own, with level `debug`, that writes to the given log, or nowhere until it gets a handler.
    explicit ZVLogger(std::shared_ptr<SystemLog> systemLog = nullptr);
    /// Messages already queued for nonblocking handlers are still delivered.
    ~ZVLogger();
    ZVLogger(const ZVLogger&) = delete;
    ZVLogger& operator=(const ZVLogger&) = delete;

    /// Sets the threshold of all categories that have none of their own.
    void setLogLevel(ZVLogLevel level);
    /// Sets the threshold of one category, which may be looser or stricter than that of the others.
    void setLogLevel(std::string_view category, ZVLogLevel level);

    /// Replaces the output: the system's log, or the handler set before. An empty handler leaves no output. Handlers
    /// that were added stay.
    void setLogHandler(HandlerMode mode, LogHandler handler);
    /// Adds a handler, which isn't empty, for as long as the token is kept.
    [[nodiscard]] HandlerToken addLogHandler(HandlerMode mode, LogHandler handler);

    /// Logs a line. Both deferred values are evaluated at most once, on the calling thread. A key of the message's
    /// metadata wins over the same key of the logger's.
    void log(ZVLogLevel level, std::string_view category, Deferred<std::string> message,
             const LogMetadata& loggerMetadata, Deferred<LogMetadata> messageMetadata);

  private:
    struct State;

    bool isEnabled(ZVLogLevel level, std::string_view category) const;

    const std::unique_ptr<State> state_;
};

template <typename Result>
class ZVLogger::Deferred {
  public:
    template <typename Source>
    requires(std::is_invocable_v<const Source&> || std::is_constructible_v<Result, const Source&>)
        Deferred(const Source& source)
        : source_(&source), evaluate_(&evaluateSource<Source>) {}
    Deferred(const Deferred&) = default;

    Result evaluate() const { return evaluate_(source_); }

  private:
    template <typename Source>
    static Result evaluateSource(const void* source) {
        if constexpr (std::is_invocable_v<const Source&>) {
            return Result((*static_cast<const Source*>(source))());
        } else {
            return Result(*static_cast<const Source*>(source));
        }
    }

    const void* source_;
    Result (*evaluate_)(const void*);
};

}  // namespace zorvane
