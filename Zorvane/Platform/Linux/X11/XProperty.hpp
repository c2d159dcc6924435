// Properties: what programs write on windows.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "Zorvane/Platform/Linux/X11/XReply.hpp"

struct xcb_get_property_reply_t;

namespace zorvane {

class XConnection;

/// A property's value. Empty for one that isn't there, and for a window that isn't.
class XProperty {
  public:
    explicit XProperty(XReply<xcb_get_property_reply_t> reply) : reply_(std::move(reply)) {}

    /// 0 if there is no value.
    std::uint32_t type() const;
    /// The value as 32-bit numbers; empty if it has another form.
    std::vector<std::uint32_t> numbers() const;
    /// The first of them.
    std::uint32_t numberOr(std::uint32_t substitute) const;
    /// The value as bytes, which live as long as this object; empty if it has another form.
    std::string_view bytes() const;

  private:
    XReply<xcb_get_property_reply_t> reply_;
};

/// The question for one. It is sent when made, and must be answered once.
class XPropertyQuery {
  public:
    /// Of a longer value the first `bytesAtMost` are asked for.
    XPropertyQuery(const XConnection& connection, std::uint32_t window, std::uint32_t property,
                   std::uint32_t bytesAtMost = 1024);
    /// Waits for the server.
    XProperty answer() const;

  private:
    const XConnection* connection_;
    unsigned int sequence_;
};

}  // namespace zorvane
