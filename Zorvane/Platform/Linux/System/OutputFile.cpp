#include "Zorvane/Platform/Foundation/OutputFile.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <utility>

#include "Zorvane/Platform/Foundation/NSError.hpp"

namespace zorvane {
namespace {

bool isOutOfSpace(int errorNumber) {
    return errorNumber == ENOSPC || errorNumber == EDQUOT;
}

NSError fileError(int errorNumber, std::string_view action, const std::string& path) {
    NSError error = NSError::posix(errorNumber, action, path);
    if (!isOutOfSpace(errorNumber)) {
        return error;
    }
    const std::string advice = " Free some space and record again.";
    return {error.domain(), error.code(), {error.localizedDescription() + advice, nullptr, {}}};
}

class PosixOutputFile final : public OutputFile {
  public:
    PosixOutputFile(int descriptor, std::string path) : descriptor_(descriptor), path_(std::move(path)) {}

    ~PosixOutputFile() override {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
        }
    }

    void append(std::span<const std::byte> bytes) override {
        writeAt(size_, bytes);
        size_ += bytes.size();
    }

    void overwrite(std::uint64_t offset, std::span<const std::byte> bytes) override { writeAt(offset, bytes); }

    void truncate(std::uint64_t size) override {
        while (::ftruncate(descriptor_, static_cast<off_t>(size)) != 0) {
            if (errno != EINTR) {
                throw fileError(errno, "shorten", path_);
            }
        }
        size_ = size;
    }

    void sync() override {
        while (::fdatasync(descriptor_) != 0) {
            if (errno != EINTR) {
                throw fileError(errno, "save", path_);
            }
        }
    }

    void close() override {
        // The descriptor is gone whatever the answer, so there is no second try.
        if (::close(std::exchange(descriptor_, -1)) != 0 && errno != EINTR) {
            throw fileError(errno, "close", path_);
        }
    }

  private:
    void writeAt(std::uint64_t offset, std::span<const std::byte> bytes) const {
        while (!bytes.empty()) {
            const ssize_t written = ::pwrite(descriptor_, bytes.data(), bytes.size(), static_cast<off_t>(offset));
            if (written < 0 && errno == EINTR) {
                continue;
            }
            if (written < 0) {
                throw fileError(errno, "write to", path_);
            }
            offset += static_cast<std::uint64_t>(written);
            bytes = bytes.subspan(static_cast<std::size_t>(written));
        }
    }

    int descriptor_;
    const std::string path_;
    std::uint64_t size_ = 0;
};

}  // namespace

std::unique_ptr<OutputFile> makeOutputFile(const std::filesystem::path& path) {
    const int descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (descriptor < 0) {
        throw fileError(errno, "create", path.string());
    }
    return std::make_unique<PosixOutputFile>(descriptor, path.string());
}

}  // namespace zorvane
