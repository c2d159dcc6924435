#include "Zorvane/ZVLogger.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "Zorvane/Internal/Concurrency/DispatchQueue.hpp"
#include "Zorvane/Internal/LocalDate.hpp"
#include "Zorvane/Platform/Foundation/SystemLog.hpp"

namespace zorvane {

class ZVLogger::HandlerWrapper {
  public:
    explicit HandlerWrapper(LogHandler wrapped) : handler(std::move(wrapped)) {}

    const LogHandler handler;
};

namespace {

constexpr std::array<std::string_view, 6> levelNames{"trace", "debug", "info", "warning", "error", "critical"};

using WeakHandlers = std::vector<std::weak_ptr<ZVLogger::HandlerWrapper>>;

SystemLogType systemLogType(ZVLogLevel level) {
    switch (level) {
        case ZVLogLevel::trace:
            return SystemLogType::debug;
        case ZVLogLevel::debug:
            return SystemLogType::info;
        case ZVLogLevel::info:
            return SystemLogType::notice;
        case ZVLogLevel::warning:
        case ZVLogLevel::error:
        case ZVLogLevel::critical:
            break;
    }
    return SystemLogType::error;
}

ZVLogger::LogHandler writingTo(std::shared_ptr<SystemLog> systemLog) {
    return [systemLog = std::move(systemLog)](const ZVLogger::LogMessage& message) {
        const SystemLogType type = systemLogType(message.level);
        if (!systemLog->isEnabled(type)) {
            return;
        }
        const std::string text =
            fmt::format("[{}] {} {}", message.category, message.message, message.formattedMetadata());
        systemLog->write({type, text, message.category, message.metadata});
    };
}

}  // namespace

std::string_view rawValue(ZVLogLevel level) {
    return levelNames.at(static_cast<std::size_t>(level));
}

std::optional<ZVLogLevel> logLevelFromRawValue(std::string_view name) {
    const auto* const found = std::ranges::find(allLogLevels, name, &rawValue);
    return found == allLogLevels.end() ? std::nullopt : std::optional(*found);
}

std::string ZVLogger::LogMessage::description() const {
    return fmt::format("{} {} [{}] {} {}", logTimestamp(timestamp), rawValue(level), category, message,
                       formattedMetadata());
}

std::string ZVLogger::LogMessage::formattedMetadata() const {
    std::vector<std::string> pairs;
    pairs.reserve(metadata.size());
    for (const auto& [key, value] : metadata) {
        pairs.push_back(key + "=" + value);
    }
    // By whole pairs: a key that goes on where another ends may change places with it.
    std::ranges::sort(pairs);
    return fmt::format("{}", fmt::join(pairs, " "));
}

struct ZVLogger::State {
    const DispatchQueue logLevelQueue = DispatchQueue::concurrent("ZVLogStream.LogLevel");
    // The next two are guarded by logLevelQueue.
    ZVLogLevel logLevel = ZVLogLevel::debug;
    std::map<std::string, ZVLogLevel, std::less<>> categoryLogLevel;

    const DispatchQueue handlersQueue = DispatchQueue::serial("ZVLogStream.Handler");
    // The next two are guarded by handlersQueue. The list is replaced, never changed, so that a reader keeps a
    // snapshot without copying it.
    std::shared_ptr<const WeakHandlers> handlers = std::make_shared<const WeakHandlers>();
    HandlerToken externalLogHandler;

    // Runs the handlers of nonblocking mode.
    const DispatchQueue handlerDispatchQueue = DispatchQueue::serial("ZVLogStream.Dispatch");

    LogHandler dispatched(LogHandler handler) const {
        auto shared = std::make_shared<const LogHandler>(std::move(handler));
        return [queue = handlerDispatchQueue, shared = std::move(shared)](const LogMessage& message) {
            queue.async([shared, message] { (*shared)(message); });
        };
    }
};

const std::shared_ptr<ZVLogger>& ZVLogger::shared() {
    static const auto* const logger = new auto(std::make_shared<ZVLogger>(makeSystemLog()));
    return *logger;
}

ZVLogger::ZVLogger(std::shared_ptr<SystemLog> systemLog) : state_(std::make_unique<State>()) {
    if (systemLog) {
        setLogHandler(HandlerMode::realtime, writingTo(std::move(systemLog)));
    }
}

ZVLogger::~ZVLogger() = default;

void ZVLogger::setLogLevel(ZVLogLevel level) {
    state_->logLevelQueue.syncBarrier([&] { state_->logLevel = level; });
}

void ZVLogger::setLogLevel(std::string_view category, ZVLogLevel level) {
    state_->logLevelQueue.syncBarrier([&] { state_->categoryLogLevel.insert_or_assign(std::string(category), level); });
}

void ZVLogger::setLogHandler(HandlerMode mode, LogHandler handler) {
    HandlerToken token = handler ? addLogHandler(mode, std::move(handler)) : nullptr;
    state_->handlersQueue.sync([&] { state_->externalLogHandler.swap(token); });
    // The previous handler goes here, outside the queue: what it captured may log when it is destroyed.
}

ZVLogger::HandlerToken ZVLogger::addLogHandler(HandlerMode mode, LogHandler handler) {
    auto wrapper = std::make_shared<HandlerWrapper>(
        mode == HandlerMode::nonblocking ? state_->dispatched(std::move(handler)) : std::move(handler));
    state_->handlersQueue.sync([&] {
        WeakHandlers live;
        std::ranges::copy_if(*state_->handlers, std::back_inserter(live),
                             [](const auto& weak) { return !weak.expired(); });
        live.push_back(wrapper);
        state_->handlers = std::make_shared<const WeakHandlers>(std::move(live));
    });
    return wrapper;
}

bool ZVLogger::isEnabled(ZVLogLevel level, std::string_view category) const {
    return state_->logLevelQueue.sync([&] {
        const auto found = state_->categoryLogLevel.find(category);
        return level >= (found != state_->categoryLogLevel.end() ? found->second : state_->logLevel);
    });
}

void ZVLogger::log(ZVLogLevel level, std::string_view category, Deferred<std::string> message,
                   const LogMetadata& loggerMetadata, Deferred<LogMetadata> messageMetadata) {
    if (!isEnabled(level, category)) {
        return;
    }
    const auto handlers = state_->handlersQueue.sync([&] { return state_->handlers; });
    std::optional<LogMessage> logMessage;
    for (const std::weak_ptr<HandlerWrapper>& weak : *handlers) {
        const HandlerToken wrapper = weak.lock();
        if (!wrapper) {
            continue;
        }
        if (!logMessage) {
            logMessage = LogMessage{std::chrono::system_clock::now(), level, std::string(category), message.evaluate(),
                                    messageMetadata.evaluate()};
            // Keeps what is there already: the message's value wins.
            logMessage->metadata.insert(loggerMetadata.begin(), loggerMetadata.end());
        }
        wrapper->handler(*logMessage);
    }
}

}  // namespace zorvane
