#include "WriteAll.hpp"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <string>
#include <system_error>

namespace zorvane::cli {

void writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(descriptor, text.data(), text.size());
        if (written >= 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EAGAIN) {  // a terminal or pipe that somebody has made non-blocking
            pollfd wait = {descriptor, POLLOUT, 0};
            poll(&wait, 1, -1);
        } else if (errno != EINTR) {
            throw std::system_error(errno, std::generic_category());
        }
    }
}

void printResult(std::string_view text) {
    try {
        writeAll(STDOUT_FILENO, text);
    } catch (const std::system_error& error) {
        throw std::runtime_error("Can't write to standard output: " + error.code().message() + ".");
    }
}

void occupyStandardDescriptors() {
    int descriptor = -1;
    do {
        descriptor = open("/dev/null", O_RDONLY);
    } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    if (descriptor >= 0) {
        close(descriptor);
    }
}

}  // namespace zorvane::cli
