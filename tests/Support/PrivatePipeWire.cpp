#include "tests/Support/PrivatePipeWire.hpp"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <thread>

#include "Zorvane/Platform/Linux/PipeWire/PipeWireSocket.hpp"

namespace zorvane {
namespace {

constexpr const char* configuration = R"(
context.properties = { core.daemon = true, core.name = pipewire-0, support.dbus = false }
context.spa-libs = {
    audio.convert.* = audioconvert/libspa-audioconvert
    audiotestsrc    = audiotestsrc/libspa-audiotestsrc
    support.*       = support/libspa-support
}
context.modules = [
    { name = libpipewire-module-protocol-native }
    { name = libpipewire-module-metadata }
    { name = libpipewire-module-spa-node-factory }
    { name = libpipewire-module-client-node }
    { name = libpipewire-module-client-device }
    { name = libpipewire-module-access }
    { name = libpipewire-module-adapter }
    { name = libpipewire-module-link-factory }
]
context.objects = [
    { factory = metadata, args = { metadata.name = default } }
    { factory = spa-node-factory
      args = { factory.name = support.node.driver, node.name = driver, node.group = pipewire.dummy } }
]
)";

/// In the child between fork and exec: only async-signal-safe calls.
[[noreturn]] void becomeService(const char* configurationPath) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    dup2(open("/dev/null", O_WRONLY), STDERR_FILENO);
    execlp("pipewire", "pipewire", "-c", configurationPath, nullptr);
    _exit(127);
}

}  // namespace

PrivatePipeWire::PrivatePipeWire() {
    std::filesystem::create_directory(runtimeDirectory());
    std::ofstream(directory_.path() / "pipewire.conf") << configuration;
    for (const char* name : {"XDG_RUNTIME_DIR", "PIPEWIRE_RUNTIME_DIR", "PIPEWIRE_REMOTE"}) {
        const char* value = std::getenv(name);
        outerEnvironment_[name] = value ? std::optional<std::string>(value) : std::nullopt;
        unsetenv(name);
    }
    setenv("XDG_RUNTIME_DIR", runtimeDirectory().c_str(), 1);
}

PrivatePipeWire::~PrivatePipeWire() {
    stop();
    for (const auto& [name, value] : outerEnvironment_) {
        value ? setenv(name.c_str(), value->c_str(), 1) : unsetenv(name.c_str());
    }
}

void PrivatePipeWire::start() {
    const std::string path = directory_.path() / "pipewire.conf";
    process_ = fork();
    if (process_ == 0) {
        becomeService(path.c_str());
    }
}

void PrivatePipeWire::startAndWait() {
    start();
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!connectToPipeWire(socket()).socket) {
        if (std::chrono::steady_clock::now() > deadline) {
            throw std::runtime_error("PipeWire did not start; is it installed?");
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

void PrivatePipeWire::kill() {
    end(SIGKILL);
}

void PrivatePipeWire::stop() {
    end(SIGTERM);
}

void PrivatePipeWire::suspend() {
    ::kill(process_, SIGSTOP);
}

void PrivatePipeWire::resume() {
    ::kill(process_, SIGCONT);
}

void PrivatePipeWire::end(int signal) {
    if (process_ > 0) {
        ::kill(process_, SIGCONT);
        ::kill(process_, signal);
        waitpid(process_, nullptr, 0);
        process_ = -1;
    }
}

}  // namespace zorvane
