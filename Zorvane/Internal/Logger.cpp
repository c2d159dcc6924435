#include "Zorvane/Internal/Logger.hpp"

#include <utility>

namespace zorvane {
namespace {

LogMetadata merged(const LogMetadata& base, const LogMetadata& newer) {
    LogMetadata result = newer;
    result.insert(base.begin(), base.end());
    return result;
}

}  // namespace

std::string_view logCategory(std::string_view filePath) {
    const std::size_t end = filePath.find_last_not_of('/');
    if (end == std::string_view::npos) {
        return filePath;
    }
    std::string_view name = filePath.substr(0, end + 1);
    name = name.substr(name.rfind('/') + 1);
    return name.substr(0, name.rfind('.'));
}

Logger::Logger(std::shared_ptr<ZVLogger> zvLogger, std::string_view category, Identifier identifier,
               LogMetadata metadata) {
    State state{std::move(zvLogger), std::string(category), std::move(metadata)};
    if (identifier) {
        state.metadata.insert_or_assign(state.category, std::string(*identifier));
    }
    state_ = std::make_shared<const State>(std::move(state));
}

Logger Logger::forFile(Identifier identifier, LogMetadata metadata, std::shared_ptr<ZVLogger> zvLogger,
                       std::string_view sourceFile) {
    return Logger(std::move(zvLogger), logCategory(sourceFile), identifier, std::move(metadata));
}

Logger Logger::with(std::string_view category, Identifier identifier, const LogMetadata& additionalMetadata) const {
    return Logger(zvLogger(), category, identifier, merged(metadata(), additionalMetadata));
}

Logger Logger::withFile(Identifier identifier, const LogMetadata& additionalMetadata,
                        std::string_view sourceFile) const {
    return with(logCategory(sourceFile), identifier, additionalMetadata);
}

Logger Logger::adding(const LogMetadata& metadata) const {
    return with(category(), std::nullopt, metadata);
}

}  // namespace zorvane
