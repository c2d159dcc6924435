// Owner of what XCB hands out with malloc: replies, events and errors.
#pragma once

#include <cstdlib>
#include <memory>

namespace zorvane {

struct XFree {
    void operator()(void* memory) const noexcept { std::free(memory); }
};

/// Null when the request failed or the connection is gone.
template <class Reply>
using XReply = std::unique_ptr<Reply, XFree>;

}  // namespace zorvane
