// A program that shows things on an X server.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

struct xcb_connection_t;
struct xcb_screen_t;

namespace zorvane {

struct TestRect {
    std::int16_t x;
    std::int16_t y;
    std::uint16_t width;
    std::uint16_t height;
};

/// Every operation has happened on the server when it returns.
class X11TestClient {
  public:
    /// On the server that DISPLAY names. Throws `std::runtime_error`.
    X11TestClient();
    X11TestClient(const X11TestClient&) = delete;
    X11TestClient& operator=(const X11TestClient&) = delete;
    ~X11TestClient();

    /// Fills a part of the root window; `pixel` has the screen's own form (0xRRGGBB at depth 24). Tells the time, on
    /// `CLOCK_MONOTONIC`, right before the request left.
    std::chrono::nanoseconds fill(const TestRect& rect, std::uint32_t pixel);

    /// A window filled with one colour, which no window manager touches.
    std::uint32_t makeWindow(const TestRect& rect, std::uint32_t pixel);
    /// One that a window manager, if there is one, takes care of.
    std::uint32_t makeManagedWindow(const TestRect& rect, const std::string& title, const std::string& windowClass);
    void closeWindow(std::uint32_t window);
    void moveWindow(std::uint32_t window, std::int16_t x, std::int16_t y);
    void raiseWindow(std::uint32_t window);
    void unmapWindow(std::uint32_t window);
    /// Puts a window into another one, as a window manager does with its frames, and shows both.
    void putInto(std::uint32_t frame, std::uint32_t window, std::int16_t x, std::int16_t y);

    /// Writes a property; window 0 is the root window. Types and properties go by their names.
    void setText(std::uint32_t window, const std::string& property, const std::string& type, const std::string& text);
    void setNumbers(std::uint32_t window, const std::string& property, const std::string& type,
                    const std::vector<std::uint32_t>& numbers);
    void setAtoms(std::uint32_t window, const std::string& property, const std::vector<std::string>& names);
    void removeProperty(std::uint32_t window, const std::string& property);
    /// Asks the window manager for something by a message of that name, such as "WM_CHANGE_STATE".
    void askWindowManager(std::uint32_t window, const std::string& message, std::uint32_t number);

    void movePointer(std::int16_t x, std::int16_t y);
    /// Gives the root window a cursor that is a square of one colour, its hot spot at the top left.
    /// Gives it the name, if there is one.
    void setSquareCursor(std::uint8_t size, std::uint32_t color, const std::string& name = {});
    /// Gives the root window a cursor of the theme, which the environment and the server's resources choose. Throws
    /// `std::runtime_error` if it has none of that name.
    void setThemeCursor(const std::string& name);

    /// Gives the root window a cursor of the server's own font, as terminals do: a glyph by its number, in two colours.
    void setFontCursor(std::uint16_t glyph, std::uint32_t foreground, std::uint32_t background);

    /// Sets the size of the root window and of its one output, as a user does who changes the resolution.
    void resizeScreen(std::uint16_t width, std::uint16_t height, std::uint32_t refreshRate = 60);
    /// Sets an area of the screen apart as a monitor of its own; `takesOutput` takes that area from the one panel.
    void setMonitor(const std::string& name, const TestRect& rect, bool isPrimary, bool takesOutput);
    void removeMonitor(const std::string& name);
    /// Gives the one output this EDID block.
    void setEDID(const std::vector<std::uint8_t>& bytes);

  private:
    std::uint32_t makeBareWindow(const TestRect& rect, std::uint32_t pixel, bool overridesRedirect);
    void change(std::uint32_t window, const std::string& property, const std::string& type, std::uint8_t format,
                const void* data, std::size_t size);
    std::uint32_t output();
    std::uint32_t atom(const std::string& name);
    void synchronize();

    xcb_connection_t* connection_;
    xcb_screen_t* screen_;
    std::uint32_t context_;
};

}  // namespace zorvane
