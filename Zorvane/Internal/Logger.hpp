// The scoped logger: a category and the metadata that ride along on every line of an object.
#pragma once

#include <concepts>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

#include "Zorvane/Internal/TypeName.hpp"
#include "Zorvane/ZVLogger.hpp"

namespace zorvane {

/// Immutable; a copy costs a reference count and may go to any thread. Deriving one from another is how identity
/// travels downward: each object adds what it knows.
///
/// A logger with an identifier has it in its metadata under the category's name, such as `Conductor=Ab3dE`; it wins
/// over that key in the metadata given. On any other duplicate key the newer value wins.
///
/// A line takes a message and, optionally, metadata. The message is a text or a callable that returns one, the metadata
/// a callable that returns a `LogMetadata`. Callables run only if the line will be read:
///
///     logger.debug("Started.", [&] { return LogMetadata{{"recordFrom", fmt::format("{}", recordFrom)}}; });
class Logger {
  public:
    using Identifier = std::optional<std::string_view>;

    /// The category is the unqualified name of `Owner`.
    template <typename Owner>
    static Logger forType(Identifier identifier = std::nullopt, LogMetadata metadata = {},
                          std::shared_ptr<ZVLogger> zvLogger = ZVLogger::shared()) {
        return Logger(std::move(zvLogger), unqualifiedTypeName<Owner>(), identifier, std::move(metadata));
    }
    /// The category is the name of the calling source file, without folders and extension.
    static Logger forFile(Identifier identifier = std::nullopt, LogMetadata metadata = {},
                          std::shared_ptr<ZVLogger> zvLogger = ZVLogger::shared(),
                          std::string_view sourceFile = __builtin_FILE());

    /// The category is `category`, for objects that act on behalf of another one.
    static Logger forCategory(std::string_view category, Identifier identifier = std::nullopt,
                              LogMetadata metadata = {}, std::shared_ptr<ZVLogger> zvLogger = ZVLogger::shared()) {
        return Logger(std::move(zvLogger), category, identifier, std::move(metadata));
    }

    /// The same core and metadata under another category, with more metadata.
    template <typename Owner>
    Logger with(Identifier identifier = std::nullopt, const LogMetadata& additionalMetadata = {}) const {
        return with(unqualifiedTypeName<Owner>(), identifier, additionalMetadata);
    }
    Logger withFile(Identifier identifier = std::nullopt, const LogMetadata& additionalMetadata = {},
                    std::string_view sourceFile = __builtin_FILE()) const;
    /// The same category with more metadata.
    Logger adding(const LogMetadata& metadata) const;

    const std::shared_ptr<ZVLogger>& zvLogger() const { return state_->zvLogger; }
    const std::string& category() const { return state_->category; }
    const LogMetadata& metadata() const { return state_->metadata; }

    struct NoMetadata {
        LogMetadata operator()() const { return {}; }
    };

    template <typename Message, typename Metadata = NoMetadata>
    void trace(const Message& message, const Metadata& metadata = {}) const {
        log(ZVLogLevel::trace, message, metadata);
    }
    template <typename Message, typename Metadata = NoMetadata>
    void debug(const Message& message, const Metadata& metadata = {}) const {
        log(ZVLogLevel::debug, message, metadata);
    }
    template <typename Message, typename Metadata = NoMetadata>
    void info(const Message& message, const Metadata& metadata = {}) const {
        log(ZVLogLevel::info, message, metadata);
    }
    template <typename Message, typename Metadata = NoMetadata>
    void warning(const Message& message, const Metadata& metadata = {}) const {
        log(ZVLogLevel::warning, message, metadata);
    }
    template <typename Message, typename Metadata = NoMetadata>
    void error(const Message& message, const Metadata& metadata = {}) const {
        log(ZVLogLevel::error, message, metadata);
    }
    template <typename Message, typename Metadata = NoMetadata>
    void critical(const Message& message, const Metadata& metadata = {}) const {
        log(ZVLogLevel::critical, message, metadata);
    }

  private:
    struct State {
        std::shared_ptr<ZVLogger> zvLogger;
        std::string category;
        LogMetadata metadata;
    };

    Logger(std::shared_ptr<ZVLogger> zvLogger, std::string_view category, Identifier identifier, LogMetadata metadata);

    Logger with(std::string_view category, Identifier identifier, const LogMetadata& additionalMetadata) const;

    template <typename Message, std::invocable Metadata>
    void log(ZVLogLevel level, const Message& message, const Metadata& metadata) const {
        state_->zvLogger->log(level, state_->category, message, state_->metadata, metadata);
    }

    std::shared_ptr<const State> state_;
};

/// The category for a source file: the last component of its path, without its extension. A path without a component
/// is its own category.
std::string_view logCategory(std::string_view filePath);

}  // namespace zorvane
