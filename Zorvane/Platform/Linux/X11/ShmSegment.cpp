#include "Zorvane/Platform/Linux/X11/ShmSegment.hpp"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>
#include <xcb/shm.h>
#include <xcb/xcb.h>

#include "Zorvane/Platform/Linux/X11/XConnection.hpp"
#include "Zorvane/Platform/Linux/X11/XReply.hpp"

namespace zorvane {
namespace {

/// Memory in a file without a name, so that nothing is left behind whatever happens. -1 on failure.
int makeMemoryFile(std::size_t size) {
    const int file = memfd_create("zorvane-screen", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    if (file < 0) {
        return -1;
    }
    // The server may rely on the size.
    if (ftruncate(file, static_cast<off_t>(size)) != 0 || fcntl(file, F_ADD_SEALS, F_SEAL_SHRINK) != 0) {
        close(file);
        return -1;
    }
    return file;
}

}  // namespace

std::shared_ptr<ShmSegment> ShmSegment::make(XConnection& connection, std::size_t size) {
    if (!connection.extensions().shm.isAtLeast(1, 2) || !connection.isLocal()) {
        return nullptr;
    }
    const int file = makeMemoryFile(size);
    if (file < 0) {
        return nullptr;
    }
    void* memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (memory == MAP_FAILED) {
        close(file);
        return nullptr;
    }
    std::shared_ptr<ShmSegment> segment(new ShmSegment(static_cast<std::byte*>(memory), size));
    segment->name_ = xcb_generate_id(connection.get());
    // XCB closes the file when it has sent it.
    const auto attach = xcb_shm_attach_fd_checked(connection.get(), segment->name_, file, 0);
    const XReply<xcb_generic_error_t> error(xcb_request_check(connection.get(), attach));
    return error || !connection.isAlive() ? nullptr : segment;
}

ShmSegment::~ShmSegment() {
    munmap(bytes_, size_);
}

}  // namespace zorvane
