// Somebody at the mouse and the keyboard of an X server.
#pragma once

#include <cstdint>

struct xcb_connection_t;

namespace zorvane {

/// Operations are put into one burst, which `act` performs.
class X11TestUser {
  public:
    /// On the server that DISPLAY names. Throws `std::runtime_error`.
    X11TestUser();
    X11TestUser(const X11TestUser&) = delete;
    X11TestUser& operator=(const X11TestUser&) = delete;
    ~X11TestUser();

    X11TestUser& moveTo(std::int16_t x, std::int16_t y);
    /// What a program does that sets the pointer.
    X11TestUser& warpTo(std::int16_t x, std::int16_t y);
    /// By the server's numbers of buttons and keys.
    X11TestUser& press(std::uint8_t button);
    X11TestUser& release(std::uint8_t button);
    X11TestUser& click(std::uint8_t button) { return press(button).release(button); }
    X11TestUser& keyDown(std::uint8_t key);
    X11TestUser& keyUp(std::uint8_t key);
    X11TestUser& type(std::uint8_t key) { return keyDown(key).keyUp(key); }
    /// Has a key type another letter, as xmodmap does.
    X11TestUser& relabel(std::uint8_t key, char letter);
    /// From then on, all of it is for this client, which asks for none of it.
    X11TestUser& grabAll();

    /// All that was asked for has happened when it returns.
    void act();

  private:
    X11TestUser& fake(std::uint8_t type, std::uint8_t detail, std::int16_t x = 0, std::int16_t y = 0);

    xcb_connection_t* connection_;
    std::uint32_t root_;
};

}  // namespace zorvane
