// A program with windows on an X server.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "tests/Support/X11TestClient.hpp"

namespace zorvane {

/// Has a connection of its own, and says of its windows that they belong to whatever process it is told. Every
/// operation has happened on the server when it returns. Colours are 0xRRGGBB, for a screen of depth 24.
class X11TestProgram {
  public:
    /// Without a process number, windows say nothing of where they belong.
    explicit X11TestProgram(std::optional<std::int32_t> processID = std::nullopt);
    X11TestProgram(const X11TestProgram&) = delete;
    X11TestProgram& operator=(const X11TestProgram&) = delete;
    ~X11TestProgram();

    /// A window filled with one colour, on top of all others.
    std::uint32_t makeWindow(const TestRect& rect, std::uint32_t color, std::uint16_t border = 0);
    /// One that a window manager may place and frame.
    std::uint32_t makeManagedWindow(const TestRect& rect, std::uint32_t color);
    /// One without a background: until it is painted it looks like what was on the screen before.
    std::uint32_t makeUnpaintedWindow(const TestRect& rect);
    /// One with an alpha channel, filled with a premultiplied colour.
    std::uint32_t makeTranslucentWindow(const TestRect& rect, std::uint32_t argb);

    void fill(std::uint32_t window, const TestRect& rect, std::uint32_t color);
    void move(std::uint32_t window, std::int16_t x, std::int16_t y);
    void resize(std::uint32_t window, std::uint16_t width, std::uint16_t height);
    void raise(std::uint32_t window);
    void lower(std::uint32_t window);
    void show(std::uint32_t window);
    void hide(std::uint32_t window);
    void close(std::uint32_t window);
    /// Cuts the window to this part of itself.
    void cut(std::uint32_t window, const TestRect& rect);

    /// Says of a window, of whatever program, that it belongs to a process.
    void nameOwner(std::uint32_t window, std::int32_t processID);

    /// Window managers' frames override redirection, or are windows like any other.
    enum class FrameKind : std::uint8_t { overriding, ordinary };
    /// Puts a window, of whatever program, into a frame, as a window manager does. Returns the frame.
    std::uint32_t frame(std::uint32_t window, const TestRect& rect, std::int16_t thickness, std::uint32_t color,
                        FrameKind kind = FrameKind::overriding);
    /// Puts a further window into a frame that is on the screen, as window managers with tabs do.
    void addToFrame(std::uint32_t window, std::uint32_t frame);

    /// Gives the root window a background of one colour.
    void setBackground(std::uint32_t color);
    /// The same as programs do that set a picture: they leave the pixmap behind and say which it is.
    void setBackgroundPicture(std::uint32_t color);

    /// Takes the showing of all windows upon itself, as a compositor does, and never shows any.
    void takeAllWindows();
    /// Has the server make a window above all others that shows the whole screen, as compositors draw to.
    void makeOverlay();
    /// Whether the server keeps what the window, which is on the screen, holds in a pixmap of its own.
    bool hasOwnPixmap(std::uint32_t window);

    /// Whether the window has been told to paint since it was last asked.
    bool wasAskedToPaint(std::uint32_t window);

  private:
    std::uint32_t make(const TestRect& rect, std::uint16_t border, std::uint32_t mask,
                       const std::vector<std::uint32_t>& values, std::uint8_t depth, std::uint32_t visual);
    void takeCareOf(std::uint32_t window, std::uint32_t frame, std::int16_t place);
    std::uint32_t atom(const char* name);
    void configure(std::uint32_t window, std::uint16_t mask, const std::vector<std::uint32_t>& values);
    void synchronize();

    xcb_connection_t* connection_;
    xcb_screen_t* screen_;
    std::uint32_t context_;
    const std::optional<std::int32_t> processID_;
};

}  // namespace zorvane
