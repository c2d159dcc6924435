#include "Zorvane/Platform/Linux/X11/PictureFormats.hpp"

#include <xcb/render.h>

#include <unordered_set>

#include "Zorvane/Platform/Linux/X11/XConnection.hpp"
#include "Zorvane/Platform/Linux/X11/XReply.hpp"

namespace zorvane {
namespace {

std::unordered_set<std::uint32_t> formatsWithAlpha(const xcb_render_query_pict_formats_reply_t& reply) {
    std::unordered_set<std::uint32_t> formats;
    for (auto each = xcb_render_query_pict_formats_formats_iterator(&reply); each.rem > 0;
         xcb_render_pictforminfo_next(&each)) {
        if (each.data->type == XCB_RENDER_PICT_TYPE_DIRECT && each.data->direct.alpha_mask != 0) {
            formats.insert(each.data->id);
        }
    }
    return formats;
}

}  // namespace

PictureFormats::PictureFormats(const XConnection& connection) {
    const XReply<xcb_render_query_pict_formats_reply_t> reply(xcb_render_query_pict_formats_reply(
        connection.get(), xcb_render_query_pict_formats(connection.get()), nullptr));
    if (!reply) {
        return;
    }
    const auto withAlpha = formatsWithAlpha(*reply);
    auto screen = xcb_render_query_pict_formats_screens_iterator(reply.get());
    for (; screen.rem > 0; xcb_render_pictscreen_next(&screen)) {
        for (auto depth = xcb_render_pictscreen_depths_iterator(screen.data); depth.rem > 0;
             xcb_render_pictdepth_next(&depth)) {
            for (auto visual = xcb_render_pictdepth_visuals_iterator(depth.data); visual.rem > 0;
                 xcb_render_pictvisual_next(&visual)) {
                const std::uint32_t format = visual.data->format;
                byVisual_[visual.data->visual] = {format, withAlpha.contains(format)};
            }
        }
    }
}

PictureFormat PictureFormats::ofVisual(std::uint32_t visual) const {
    const auto found = byVisual_.find(visual);
    return found == byVisual_.end() ? PictureFormat{} : found->second;
}

}  // namespace zorvane
