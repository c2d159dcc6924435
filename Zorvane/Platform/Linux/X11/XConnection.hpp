// One connection to an X server.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <future>
#include <memory>
#include <string>
#include <string_view>

#include "Zorvane/Platform/Linux/X11/XExtensions.hpp"

struct xcb_connection_t;
struct xcb_screen_t;

namespace zorvane {

/// The domain of the X server's `NSError`s. The code is the protocol's error code, or 0 when the connection is at
/// fault, or one of those below.
inline constexpr std::string_view X11ErrorDomain = "X11ErrorDomain";
inline constexpr std::int64_t X11NoAnswerError = -1;
inline constexpr std::int64_t X11MissingExtensionError = -2;

/// What a server is given to answer before it counts as hanging, where nobody else can end the wait.
inline constexpr std::chrono::milliseconds longestXAnswer{3500};

/// A connection, open or hung up. Requests on it may be made from any thread.
class XConnection {
  public:
    /// A connection that is being made.
    using Opening = std::shared_future<std::shared_ptr<XConnection>>;

    /// Connects to the server that the environment's DISPLAY names, on a thread of its own, since nothing calls XCB
    /// back from a server that doesn't answer. It gets a connection, or null if there is none to be had.
    static Opening beginOpening();
    /// Blocks for `longestXAnswer` at most. Throws `NSError`, with a text that tells the user what to do.
    static std::shared_ptr<XConnection> await(const Opening& opening);
    /// Both of them.
    static std::shared_ptr<XConnection> open() { return await(beginOpening()); }

    XConnection(const XConnection&) = delete;
    XConnection& operator=(const XConnection&) = delete;
    ~XConnection();

    xcb_connection_t* get() const { return connection_; }
    const xcb_screen_t& screen() const { return *screen_; }
    std::uint32_t root() const;
    const XExtensions& extensions() const { return extensions_; }

    /// The server's name, as in ":0".
    const std::string& name() const { return name_; }

    bool isAlive() const;
    /// Throws `NSError` if the connection is gone.
    void requireAlive() const;

    /// Throws `NSError`, as a stream's error, if the server lacks what a capture needs. `extension` names it.
    void requireExtension(bool isPresent, std::string_view extension) const;

    /// Whether client and server are on one machine, so that files and memory can be shared.
    bool isLocal() const;

    /// Cuts the connection, from any thread: whoever waits for the server comes back at once with nothing, also when
    /// the server hangs. The object stays valid.
    void hangUp();
    /// The same, for the reason that the server doesn't answer.
    void giveUp();

  private:
    explicit XConnection(std::string name);

    std::string name_;
    xcb_connection_t* connection_;
    xcb_screen_t* screen_ = nullptr;
    XExtensions extensions_;
    std::atomic<bool> isGivenUp_ = false;
};

}  // namespace zorvane
