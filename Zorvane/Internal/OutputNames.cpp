#include "Zorvane/Internal/OutputNames.hpp"

#include <fmt/format.h>

#include <system_error>

#include "Zorvane/ZVError.hpp"

namespace zorvane {

void OutputNames::claim(const std::filesystem::path& url) {
    const std::filesystem::path name = url.lexically_normal();
    std::error_code ignored;
    if (!std::filesystem::is_directory(name.parent_path(), ignored)) {
        throw ZVError::invalidConfiguration(
            fmt::format("\"{}\" can't be written: there is no directory \"{}\". A name in the schema must not have "
                        "directories in it unless they are there.",
                        name.native(), name.parent_path().native()));
    }
    const MutexLock lock(mutex_);
    if (!claimed_.insert(name).second) {
        throw ZVError::invalidConfiguration(
            fmt::format("Two sources would write to \"{}\". Give each of them an output name of its own.",
                        name.filename().native()));
    }
}

}  // namespace zorvane
