#include "Zorvane/Platform/Foundation/PrivateFiles.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <utility>

#include "Zorvane/Platform/Foundation/NSError.hpp"

namespace zorvane {
namespace {

/// A file being written. Closed at the latest when it goes.
class OutputFile {
  public:
    explicit OutputFile(std::filesystem::path path)
        : path_(std::move(path)),
          descriptor_(::open(path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, S_IRUSR | S_IWUSR)) {
        if (descriptor_ < 0) {
            fail("create");
        }
    }
    ~OutputFile() {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
        }
    }
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void write(std::string_view bytes) {
        while (!bytes.empty()) {
            const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
            if (written >= 0) {
                bytes.remove_prefix(static_cast<std::size_t>(written));
            } else if (errno != EINTR) {
                fail("write");
            }
        }
    }

    void sync() const {
        if (::fsync(descriptor_) != 0) {
            fail("write");
        }
    }

    void close() {
        if (::close(std::exchange(descriptor_, -1)) != 0) {
            fail("close");
        }
    }

  private:
    [[noreturn]] void fail(std::string_view action) const { throw NSError::posix(errno, action, path_.native()); }

    const std::filesystem::path path_;
    int descriptor_;
};

}  // namespace

bool createPrivateDirectory(const std::filesystem::path& path) {
    if (::mkdir(path.c_str(), S_IRWXU) == 0) {
        return true;
    }
    if (errno != EEXIST) {
        throw NSError::posix(errno, "create", path.native());
    }
    return false;
}

void writePrivateFile(const std::filesystem::path& path, std::string_view bytes) {
    OutputFile file(path);
    file.write(bytes);
    file.sync();
    file.close();
}

void replacePrivateFile(const std::filesystem::path& path, std::string_view bytes) {
    const std::filesystem::path written = path.native() + ".new";
    try {
        OutputFile file(written);
        file.write(bytes);
        file.close();
        if (std::rename(written.c_str(), path.c_str()) != 0) {
            throw NSError::posix(errno, "replace", path.native());
        }
    } catch (const NSError&) {
        ::unlink(written.c_str());
        throw;
    }
}

}  // namespace zorvane
