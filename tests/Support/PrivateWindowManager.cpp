#include "tests/Support/PrivateWindowManager.hpp"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <csignal>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string_view>

namespace zorvane {
namespace {

template <class T>
std::unique_ptr<T, decltype(&std::free)> owned(T* reply) {
    return {reply, &std::free};
}

/// In the child between fork and exec: only async-signal-safe calls.
[[noreturn]] void becomeWindowManager() {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int nothing = open("/dev/null", O_WRONLY);
    dup2(nothing, STDOUT_FILENO);
    dup2(nothing, STDERR_FILENO);
    execlp("openbox", "openbox", "--sm-disable", nullptr);
    _exit(127);
}

/// Asks the window manager for something that it answers for any window. It says early that it is there, but leaves
/// what it is told while it starts lying until it hears the next word; so the question is asked until it is answered.
class Probe {
  public:
    Probe() : window_(xcb_generate_id(connection_.get())) {
        const auto* screen = xcb_setup_roots_iterator(xcb_get_setup(connection_.get())).data;
        root_ = screen->root;
        xcb_create_window(connection_.get(), XCB_COPY_FROM_PARENT, window_, root_, 0, 0, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    }

    bool isAnswered() {
        xcb_client_message_event_t question{.response_type = XCB_CLIENT_MESSAGE, .format = 32, .window = window_};
        question.type = atom("_NET_REQUEST_FRAME_EXTENTS");
        xcb_send_event(connection_.get(), 0, root_,
                       XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                       reinterpret_cast<const char*>(&question));
        const auto query =
            xcb_get_property(connection_.get(), 0, window_, atom("_NET_FRAME_EXTENTS"), XCB_ATOM_CARDINAL, 0, 1);
        const auto answer = owned(xcb_get_property_reply(connection_.get(), query, nullptr));
        return answer && answer->type == XCB_ATOM_CARDINAL;
    }

  private:
    xcb_atom_t atom(std::string_view name) {
        const auto query = xcb_intern_atom(connection_.get(), 0, static_cast<std::uint16_t>(name.size()), name.data());
        const auto reply = owned(xcb_intern_atom_reply(connection_.get(), query, nullptr));
        return reply ? reply->atom : XCB_NONE;
    }

    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection_{xcb_connect(nullptr, nullptr),
                                                                                   &xcb_disconnect};
    const std::uint32_t window_;
    std::uint32_t root_ = 0;
};

}  // namespace

PrivateWindowManager::PrivateWindowManager() : process_(fork()) {
    if (process_ == 0) {
        becomeWindowManager();
    }
    for (Probe probe; !probe.isAnswered(); usleep(1000)) {
        if (waitpid(process_, nullptr, WNOHANG) != 0) {
            throw std::runtime_error("openbox did not start; is it installed?");
        }
    }
}

PrivateWindowManager::~PrivateWindowManager() {
    kill(process_, SIGTERM);
    waitpid(process_, nullptr, 0);
}

}  // namespace zorvane
