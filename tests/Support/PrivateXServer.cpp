#include "tests/Support/PrivateXServer.hpp"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

namespace zorvane {
namespace {

/// In the child between fork and exec: only async-signal-safe calls.
[[noreturn]] void becomeServer(const char* descriptor, const char* screen) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    execlp("Xvfb", "Xvfb", "-displayfd", descriptor, "-screen", "0", screen, "-noreset", "-nolisten", "tcp",
           static_cast<char*>(nullptr));
    _exit(127);
}

std::string readLine(int pipe) {
    std::string line;
    for (char letter; read(pipe, &letter, 1) == 1 && letter != '\n';) {
        line += letter;
    }
    return line;
}

}  // namespace

PrivateXServer::PrivateXServer(const std::string& screen) {
    int ends[2];
    if (pipe(ends) != 0) {
        throw std::runtime_error("no pipe for the X server");
    }
    const std::string descriptor = std::to_string(ends[1]);
    process_ = fork();
    if (process_ == 0) {
        close(ends[0]);
        becomeServer(descriptor.c_str(), screen.c_str());
    }
    close(ends[1]);
    const std::string number = readLine(ends[0]);
    close(ends[0]);
    if (number.empty()) {
        kill();
        throw std::runtime_error("Xvfb did not start; is it installed?");
    }
    name_ = ":" + number;
    if (const char* previous = std::getenv("DISPLAY")) {
        previousName_ = previous;
    }
    setenv("DISPLAY", name_.c_str(), 1);
}

PrivateXServer::~PrivateXServer() {
    end(SIGTERM);
    previousName_ ? setenv("DISPLAY", previousName_->c_str(), 1) : unsetenv("DISPLAY");
}

void PrivateXServer::kill() {
    end(SIGKILL);
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
