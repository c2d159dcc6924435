#include "Zorvane/Platform/Linux/X11/XExtensions.hpp"

#include <xcb/composite.h>
#include <xcb/damage.h>
#include <xcb/randr.h>
#include <xcb/record.h>
#include <xcb/render.h>
#include <xcb/res.h>
#include <xcb/shape.h>
#include <xcb/shm.h>
#include <xcb/xcb.h>
#include <xcb/xfixes.h>
#include <xcb/xinput.h>

#include "Zorvane/Platform/Linux/X11/XReply.hpp"

namespace zorvane {
namespace {

struct Version {
    std::uint32_t major;
    std::uint32_t minor;
};

template <class Reply>
Version versionIn(const Reply& reply) {
    return {reply.major_version, reply.minor_version};
}

Version versionIn(const xcb_res_query_version_reply_t& reply) {
    return {reply.server_major, reply.server_minor};
}

/// `query` asks for the version and returns the reply. It isn't called for an extension that isn't there, because XCB
/// closes a connection that uses one.
template <class Query>
XExtension negotiateOne(xcb_connection_t* connection, xcb_extension_t& extension, Query query) {
    const xcb_query_extension_reply_t* data = xcb_get_extension_data(connection, &extension);
    if (!data || !data->present) {
        return {};
    }
    const auto reply = query();
    if (!reply) {
        return {};
    }
    const Version version = versionIn(*reply);
    return {true, data->major_opcode, data->first_event, version.major, version.minor};
}

void prefetch(xcb_connection_t* connection) {
    for (xcb_extension_t* extension : {&xcb_composite_id, &xcb_damage_id, &xcb_randr_id, &xcb_record_id, &xcb_render_id,
                                       &xcb_res_id, &xcb_shape_id, &xcb_shm_id, &xcb_xfixes_id, &xcb_input_id}) {
        xcb_prefetch_extension_data(connection, extension);
    }
}

}  // namespace

XExtensions XExtensions::negotiate(xcb_connection_t* c) {
    prefetch(c);
    XExtensions offered;
    // XFIXES first: DAMAGE builds on it.
    offered.xfixes = negotiateOne(c, xcb_xfixes_id, [c] {
        const auto query = xcb_xfixes_query_version(c, XCB_XFIXES_MAJOR_VERSION, XCB_XFIXES_MINOR_VERSION);
        return XReply<xcb_xfixes_query_version_reply_t>(xcb_xfixes_query_version_reply(c, query, nullptr));
    });
    offered.composite = negotiateOne(c, xcb_composite_id, [c] {
        const auto query = xcb_composite_query_version(c, XCB_COMPOSITE_MAJOR_VERSION, XCB_COMPOSITE_MINOR_VERSION);
        return XReply<xcb_composite_query_version_reply_t>(xcb_composite_query_version_reply(c, query, nullptr));
    });
    offered.damage = negotiateOne(c, xcb_damage_id, [c] {
        const auto query = xcb_damage_query_version(c, XCB_DAMAGE_MAJOR_VERSION, XCB_DAMAGE_MINOR_VERSION);
        return XReply<xcb_damage_query_version_reply_t>(xcb_damage_query_version_reply(c, query, nullptr));
    });
    offered.randr = negotiateOne(c, xcb_randr_id, [c] {
        const auto query = xcb_randr_query_version(c, XCB_RANDR_MAJOR_VERSION, XCB_RANDR_MINOR_VERSION);
        return XReply<xcb_randr_query_version_reply_t>(xcb_randr_query_version_reply(c, query, nullptr));
    });
    offered.record = negotiateOne(c, xcb_record_id, [c] {
        const auto query = xcb_record_query_version(c, XCB_RECORD_MAJOR_VERSION, XCB_RECORD_MINOR_VERSION);
        return XReply<xcb_record_query_version_reply_t>(xcb_record_query_version_reply(c, query, nullptr));
    });
    offered.render = negotiateOne(c, xcb_render_id, [c] {
        const auto query = xcb_render_query_version(c, XCB_RENDER_MAJOR_VERSION, XCB_RENDER_MINOR_VERSION);
        return XReply<xcb_render_query_version_reply_t>(xcb_render_query_version_reply(c, query, nullptr));
    });
    offered.resources = negotiateOne(c, xcb_res_id, [c] {
        const auto query = xcb_res_query_version(c, XCB_RES_MAJOR_VERSION, XCB_RES_MINOR_VERSION);
        return XReply<xcb_res_query_version_reply_t>(xcb_res_query_version_reply(c, query, nullptr));
    });
    offered.shape = negotiateOne(c, xcb_shape_id, [c] {
        const auto query = xcb_shape_query_version(c);
        return XReply<xcb_shape_query_version_reply_t>(xcb_shape_query_version_reply(c, query, nullptr));
    });
    offered.shm = negotiateOne(c, xcb_shm_id, [c] {
        const auto query = xcb_shm_query_version(c);
        return XReply<xcb_shm_query_version_reply_t>(xcb_shm_query_version_reply(c, query, nullptr));
    });
    offered.xinput = negotiateOne(c, xcb_input_id, [c] {
        const auto query = xcb_input_xi_query_version(c, 2, 2);
        return XReply<xcb_input_xi_query_version_reply_t>(xcb_input_xi_query_version_reply(c, query, nullptr));
    });
    return offered;
}

}  // namespace zorvane
