#include "Zorvane/Platform/Linux/X11/XProperty.hpp"

#include <xcb/xcb.h>

#include "Zorvane/Platform/Linux/X11/XConnection.hpp"

namespace zorvane {

std::uint32_t XProperty::type() const {
    return reply_ ? reply_->type : 0U;
}

std::vector<std::uint32_t> XProperty::numbers() const {
    if (!reply_ || reply_->format != 32) {
        return {};
    }
    const auto* numbers = static_cast<const std::uint32_t*>(xcb_get_property_value(reply_.get()));
    return {numbers, numbers + xcb_get_property_value_length(reply_.get()) / static_cast<int>(sizeof *numbers)};
}

std::uint32_t XProperty::numberOr(std::uint32_t substitute) const {
    const auto all = numbers();
    return all.empty() ? substitute : all.front();
}

std::string_view XProperty::bytes() const {
    if (!reply_ || reply_->format != 8) {
        return {};
    }
    return {static_cast<const char*>(xcb_get_property_value(reply_.get())),
            static_cast<std::size_t>(xcb_get_property_value_length(reply_.get()))};
}

XPropertyQuery::XPropertyQuery(const XConnection& connection, std::uint32_t window, std::uint32_t property,
                               std::uint32_t bytesAtMost)
    : connection_(&connection),
      sequence_(xcb_get_property(connection.get(), 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, bytesAtMost / 4)
                    .sequence) {}

XProperty XPropertyQuery::answer() const {
    return XProperty(
        XReply<xcb_get_property_reply_t>(xcb_get_property_reply(connection_->get(), {sequence_}, nullptr)));
}

}  // namespace zorvane
