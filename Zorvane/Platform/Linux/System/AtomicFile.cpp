#include "Zorvane/Platform/Linux/System/AtomicFile.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>

#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Foundation/PrivateFiles.hpp"

namespace zorvane {
namespace {

namespace fs = std::filesystem;

constexpr int longestLinkChain = 40;

/// An open file or directory.
class Descriptor {
  public:
    // Without waiting for the other end of what may turn out to be a pipe.
    explicit Descriptor(const fs::path& path) : descriptor_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}
    ~Descriptor() {
        if (isOpen()) {
            ::close(descriptor_);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool isOpen() const { return descriptor_ >= 0; }
    bool isOrdinaryFile() const {
        struct stat status {};
        return ::fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode);
    }
    int get() const { return descriptor_; }

  private:
    const int descriptor_;
};

std::string readAll(const Descriptor& file, const fs::path& path) {
    std::string bytes;
    std::array<char, 4096> block{};
    while (true) {
        const ssize_t count = ::read(file.get(), block.data(), block.size());
        if (count == 0) {
            return bytes;
        }
        if (count > 0) {
            bytes.append(block.data(), static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            throw NSError::posix(errno, "read", path.native());
        }
    }
}

}  // namespace

fs::path linkTarget(fs::path path) {
    for (int links = 0; links < longestLinkChain && fs::is_symlink(path); links++) {
        path = path.parent_path() / fs::read_symlink(path);
    }
    return path;
}

std::optional<std::string> readWholeFile(const fs::path& path) {
    const Descriptor file(path);
    if (!file.isOpen()) {
        if (errno == ENOENT) {
            return std::nullopt;
        }
        throw NSError::posix(errno, "open", path.native());
    }
    if (!file.isOrdinaryFile()) {
        throw NSError::posix(EINVAL, "read", path.native());
    }
    return readAll(file, path);
}

void replaceFile(const fs::path& path, std::string_view bytes) {
    const fs::path written = path.native() + ".new";
    try {
        writePrivateFile(written, bytes);
        moveFile(written, path);
    } catch (const NSError&) {
        ::unlink(written.c_str());
        throw;
    }
    const Descriptor directory(path.parent_path());
    ::fsync(directory.get());  // not every file system can; the file is in place in any case
}

void moveFile(const fs::path& from, const fs::path& to) {
    if (std::rename(from.c_str(), to.c_str()) != 0) {
        throw NSError::posix(errno, "replace", to.native());
    }
}

}  // namespace zorvane
