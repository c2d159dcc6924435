#include "Zorvane/Platform/Linux/X11/XServerFacts.hpp"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <thread>

#include "Zorvane/Platform/Linux/X11/XSession.hpp"
#include "tests/Support/PrivateXServer.hpp"

namespace zorvane {
namespace {

using Reach = XServerFacts::Reach;

XServerFacts readFacts() {
    XSession session;
    return readXServerFacts(session);
}

/// Listens like an X server and hangs up on every client.
class UnfriendlyServer {
  public:
    UnfriendlyServer() {
        std::filesystem::create_directories("/tmp/.X11-unix");
        sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
        std::strcpy(address.sun_path, path_.c_str());
        ::unlink(path_.c_str());
        if (::bind(listener_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
            ::listen(listener_, 8) != 0) {
            throw std::runtime_error("can't listen on " + path_);
        }
        thread_ = std::thread([this] {
            for (int client = 0; (client = ::accept(listener_, nullptr, nullptr)) >= 0;) {
                ::close(client);
            }
        });
    }
    ~UnfriendlyServer() {
        ::shutdown(listener_, SHUT_RDWR);
        thread_.join();
        ::close(listener_);
        ::unlink(path_.c_str());
    }

    std::string name() const { return ":" + number_; }

  private:
    const std::string number_ = std::to_string(20000 + ::getpid() % 20000);
    const std::string path_ = "/tmp/.X11-unix/X" + number_;
    const int listener_ = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    std::thread thread_;
};

TEST(XServerFacts, NameWhatAServerOffers) {
    const PrivateXServer server;
    const XServerFacts facts = readFacts();
    EXPECT_EQ(facts.reach, Reach::reachable);
    EXPECT_EQ(facts.name, server.name());
    EXPECT_TRUE(facts.hasDamage && facts.hasXFixes && facts.hasRecord && facts.hasXTest);
}

TEST(XServerFacts, NameWhatAServerLacks) {
    {
        const PrivateXServer server("320x240x24", "XTEST");
        EXPECT_FALSE(readFacts().hasXTest);
        EXPECT_TRUE(readFacts().hasDamage);
    }
    const PrivateXServer server("320x240x24", "DAMAGE");
    EXPECT_FALSE(readFacts().hasDamage);
    EXPECT_TRUE(readFacts().hasXTest);
}

TEST(XServerFacts, TellApartWhyAServerCannotBeReached) {
    const PrivateXServer server;  // the environment's at the end again
    const UnfriendlyServer unfriendly;
    const struct {
        std::string name;
        Reach reach;
    } cases[] = {{"", Reach::unnamed},
                 {unfriendly.name(), Reach::refused},
                 {":19999", Reach::absent},
                 {"no name", Reach::absent},
                 {"127.0.0.1:19999", Reach::outOfReach}};
    for (const auto& expected : cases) {
        ::setenv("DISPLAY", expected.name.c_str(), 1);
        EXPECT_EQ(readFacts().reach, expected.reach) << expected.name;
    }
    ::unsetenv("DISPLAY");
    EXPECT_EQ(readFacts().reach, Reach::unnamed);
}

TEST(XServerFacts, TellOfAServerThatHangs) {
    PrivateXServer server;
    XSession session;
    EXPECT_EQ(readXServerFacts(session).reach, Reach::reachable);
    server.suspend();
    EXPECT_EQ(readXServerFacts(session).reach, Reach::silent);
    server.resume();
}

}  // namespace
}  // namespace zorvane
