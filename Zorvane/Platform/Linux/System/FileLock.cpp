#include "Zorvane/Platform/Linux/System/FileLock.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <thread>

#include "Zorvane/Platform/Foundation/NSError.hpp"

namespace zorvane {
namespace {

// The kernel's own wait for such a lock can't be given an end.
constexpr std::chrono::milliseconds pollInterval{5};

/// 0, or why the lock can't be had.
int lockWithin(int descriptor, std::chrono::milliseconds longestWait) {
    const auto deadline = std::chrono::steady_clock::now() + longestWait;
    while (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EINTR && (errno != EWOULDBLOCK || std::chrono::steady_clock::now() >= deadline)) {
            return errno;
        }
        std::this_thread::sleep_for(pollInterval);
    }
    return 0;
}

}  // namespace

FileLock::FileLock(const std::filesystem::path& path, std::chrono::milliseconds longestWait)
    : descriptor_(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK, S_IRUSR | S_IWUSR)) {
    if (descriptor_ < 0) {
        throw NSError::posix(errno, "open", path.native());
    }
    if (const int error = lockWithin(descriptor_, longestWait)) {
        ::close(descriptor_);
        throw NSError::posix(error, "lock", path.native());
    }
}

FileLock::~FileLock() {
    ::close(descriptor_);
}

}  // namespace zorvane
