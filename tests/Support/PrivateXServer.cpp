#include "tests/Support/PrivateXServer.hpp"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <vector>

namespace zorvane {
namespace {

/// In the child between fork and exec: only async-signal-safe calls.
[[noreturn]] void becomeServer(char* const* arguments) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    dup2(open("/dev/null", O_WRONLY), STDERR_FILENO);
    execvp(arguments[0], arguments);
    _exit(127);
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

/// Whether a line comes before the end.
bool hearsLine(int pipe) {
    for (char letter; read(pipe, &letter, 1) == 1;) {
        if (letter == '\n') {
            return true;
        }
    }
    return false;
}

/// Takes a number by a socket whose name, which begins with a zero byte, goes with the process at the latest.
bool reserve(int socket, int number) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string name = "zorvane-test-display-" + std::to_string(number);
    name.copy(address.sun_path + 1, sizeof address.sun_path - 1);
    if (bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
        return true;
    }
    if (errno != EADDRINUSE) {
        throw std::runtime_error("no socket to reserve a display number with");
    }
    return false;
}

constexpr int firstNumber = 1000;  // servers that choose their own number begin at 0

}  // namespace

ReservedDisplay::ReservedDisplay() : number_(firstNumber), socket_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    while (!reserve(socket_, number_)) {
        ++number_;
    }
}

ReservedDisplay::~ReservedDisplay() {
    close(socket_);
}

PrivateXServer::PrivateXServer(const std::string& screen, const std::string& withoutExtension)
    : screen_(screen), withoutExtension_(withoutExtension) {
    start();
    if (const char* previous = std::getenv("DISPLAY")) {
        previousName_ = previous;
    }
    setenv("DISPLAY", name_.c_str(), 1);
}

/// The server writes its number when it is there.
void PrivateXServer::start() {
    int ends[2];
    if (pipe(ends) != 0) {
        throw std::runtime_error("no pipe for the X server");
    }
    std::vector<std::string> arguments{
        "Xvfb", name_, "-displayfd", std::to_string(ends[1]), "-screen", "0", screen_, "-noreset", "-nolisten", "tcp"};
    if (!withoutExtension_.empty()) {
        arguments.insert(arguments.end(), {"-extension", withoutExtension_});
    }
    const auto pointers = pointersTo(arguments);
    process_ = fork();
    if (process_ == 0) {
        close(ends[0]);
        becomeServer(pointers.data());
    }
    close(ends[1]);
    const bool isThere = hearsLine(ends[0]);
    close(ends[0]);
    if (!isThere) {
        kill();
        throw std::runtime_error("Xvfb did not start; is it installed?");
    }
}

PrivateXServer::~PrivateXServer() {
    end(SIGTERM);
    previousName_ ? setenv("DISPLAY", previousName_->c_str(), 1) : unsetenv("DISPLAY");
}

void PrivateXServer::kill() {
    end(SIGKILL);
}

void PrivateXServer::restart() {
    start();
}

void PrivateXServer::end(int signal) {
    if (process_ > 0) {
        ::kill(process_, signal);
        waitpid(process_, nullptr, 0);
        process_ = -1;
    }
}

void PrivateXServer::suspend() {
    ::kill(process_, SIGSTOP);
}

void PrivateXServer::resume() {
    ::kill(process_, SIGCONT);
}

}  // namespace zorvane
