#include "tests/Support/PrivateXServer.hpp"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <vector>

namespace zorvane {
namespace {

/// In the child between fork and exec: only async-signal-safe calls.
[[noreturn]] void becomeServer(char* const* arguments) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    dup2(open("/dev/null", O_WRONLY), STDERR_FILENO);  // it complains of every display number that is taken
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

std::string readLine(int pipe) {
    std::string line;
    for (char letter; read(pipe, &letter, 1) == 1 && letter != '\n';) {
        line += letter;
    }
    return line;
}

}  // namespace

PrivateXServer::PrivateXServer(const std::string& screen, const std::string& withoutExtension)
    : screen_(screen), withoutExtension_(withoutExtension) {
    start({});
    if (const char* previous = std::getenv("DISPLAY")) {
        previousName_ = previous;
    }
    setenv("DISPLAY", name_.c_str(), 1);
}

/// Under a name that is free if `name` is empty.
void PrivateXServer::start(const std::string& name) {
    int ends[2];
    if (pipe(ends) != 0) {
        throw std::runtime_error("no pipe for the X server");
    }
    std::vector<std::string> arguments{
        "Xvfb", "-displayfd", std::to_string(ends[1]), "-screen", "0", screen_, "-noreset", "-nolisten", "tcp"};
    if (!withoutExtension_.empty()) {
        arguments.insert(arguments.end(), {"-extension", withoutExtension_});
    }
    if (!name.empty()) {
        arguments.insert(arguments.begin() + 1, name);
    }
    const auto pointers = pointersTo(arguments);
    process_ = fork();
    if (process_ == 0) {
        close(ends[0]);
        becomeServer(pointers.data());
    }
    close(ends[1]);
    const std::string number = readLine(ends[0]);
    close(ends[0]);
    if (number.empty()) {
        kill();
        throw std::runtime_error("Xvfb did not start; is it installed?");
    }
    name_ = ":" + number;
}

PrivateXServer::~PrivateXServer() {
    end(SIGTERM);
    previousName_ ? setenv("DISPLAY", previousName_->c_str(), 1) : unsetenv("DISPLAY");
}

void PrivateXServer::kill() {
    end(SIGKILL);
}

void PrivateXServer::restart() {
    start(name_);
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
