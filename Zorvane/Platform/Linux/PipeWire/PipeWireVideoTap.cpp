#include "Zorvane/Platform/Linux/PipeWire/PipeWireVideoTap.hpp"

#include <spa/buffer/meta.h>
#include <spa/param/param.h>
#include <sys/epoll.h>

#include <cerrno>
#include <ctime>
#include <utility>

#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWirePictureTime.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireVideoPods.hpp"

namespace zorvane {
namespace {

/// The session manager connects what asks for it, and gives it another source when its own goes. This asks for nothing.
pw_properties* nodeProperties(const std::string& name) {
    return pw_properties_new(PW_KEY_MEDIA_TYPE, "Video", PW_KEY_MEDIA_CATEGORY, "Capture", PW_KEY_MEDIA_ROLE, "Camera",
                             PW_KEY_MEDIA_CLASS, "Stream/Input/Video", PW_KEY_MEDIA_NAME, name.c_str(),
                             PW_KEY_NODE_NAME, name.c_str(), PW_KEY_NODE_AUTOCONNECT, "false",
                             PW_KEY_NODE_DONT_RECONNECT, "true", nullptr);
}

pw_stream* makeStream(pw_core& core, const std::string& name) {
    pw_stream* stream = pw_stream_new(&core, name.c_str(), nodeProperties(name));
    if (!stream) {
        throw NSError::posix(errno, "make a node of PipeWire");
    }
    return stream;
}

std::chrono::nanoseconds monotonicTime() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

const spa_meta_header* headerOf(const spa_buffer& buffer) {
    return static_cast<const spa_meta_header*>(
        spa_buffer_find_meta_data(&buffer, SPA_META_Header, sizeof(spa_meta_header)));
}

bool isBroken(const spa_meta_header* header) {
    return header && (header->flags & (SPA_META_HEADER_FLAG_CORRUPTED | SPA_META_HEADER_FLAG_GAP));
}

}  // namespace

PipeWireVideoTap::PipeWireVideoTap(pw_core& core, const std::string& name, const PipeWireVideoSource& source,
                                   PipeWirePictureExchange& exchange, FlowHandler flowChanged)
    : exchange_(exchange),
      flowChanged_(std::move(flowChanged)),
      stream_(makeStream(core, name)),
      links_(core, [this] { return pw_stream_get_node_id(stream_.get()); }) {
    static const pw_stream_events events{.version = PW_VERSION_STREAM_EVENTS,
                                         .state_changed = onStateChanged,
                                         .param_changed = onParameter,
                                         .add_buffer = onBufferAdded,
                                         .remove_buffer = onBufferRemoved,
                                         .process = onProcess};
    pw_stream_add_listener(stream_.get(), streamHook_.get(), &events, this);
    pw_loop* loop = pw_context_get_main_loop(pw_core_get_context(&core));
    const auto onReturn = [](void* self, int, std::uint32_t) { static_cast<PipeWireVideoTap*>(self)->takeBack(); };
    returning_ = {spa_loop_utils_add_io(loop->utils, exchange_.signal().get(), EPOLLIN, false, onReturn, this), {loop}};
    PipeWireVideoPods formats(source.format);
    const int result = pw_stream_connect(stream_.get(), PW_DIRECTION_INPUT, PW_ID_ANY, PW_STREAM_FLAG_NO_CONVERT,
                                         formats.get(), formats.count());
    if (result < 0) {
        throw NSError::posix(-result, "connect a node of PipeWire");
    }
    links_.onFailure([this](const std::string& reason) { fail(reason); });
    links_.setWires({{.outputPort = source.outputPort}}, PipeWireInputLinks::Waking::wakes);
}

/// The buffers go while they are listened for.
PipeWireVideoTap::~PipeWireVideoTap() {
    pw_stream_disconnect(stream_.get());
    exchange_.withdraw();
}

void PipeWireVideoTap::onStateChanged(void* data, pw_stream_state, pw_stream_state state, const char* error) {
    if (state == PW_STREAM_STATE_ERROR) {
        static_cast<PipeWireVideoTap*>(data)->fail(error ? error : "");
    }
}

void PipeWireVideoTap::fail(const std::string& reason) {
    isFlowing_ = false;
    flowChanged_(reason);
}

void PipeWireVideoTap::onParameter(void* data, std::uint32_t id, const spa_pod* parameter) {
    if (id == SPA_PARAM_Format) {
        static_cast<PipeWireVideoTap*>(data)->formatChanged(parameter);
    }
}

void PipeWireVideoTap::formatChanged(const spa_pod* parameter) {
    format_ = parameter ? parseVideoFormat(parameter) : std::nullopt;
    if (format_) {
        PipeWireVideoPods needs{PipeWireVideoPods::ForBuffers()};
        pw_stream_update_params(stream_.get(), needs.get(), needs.count());
    }
}

void PipeWireVideoTap::onBufferAdded(void* data, pw_buffer* buffer) {
    auto& self = *static_cast<PipeWireVideoTap*>(data);
    self.memories_[buffer] = std::make_unique<PipeWireMemory>(*buffer->buffer);
    self.exchange_.setCapacity(self.memories_.size() / 2);  // the other half is for the camera and for who converts
}

/// They all go together: the format changes, or the stream sleeps or ends.
void PipeWireVideoTap::onBufferRemoved(void* data, pw_buffer* buffer) {
    auto& self = *static_cast<PipeWireVideoTap*>(data);
    self.exchange_.withdraw();
    self.memories_.erase(buffer);
}

void PipeWireVideoTap::onProcess(void* data) {
    auto& self = *static_cast<PipeWireVideoTap*>(data);
    while (pw_buffer* buffer = pw_stream_dequeue_buffer(self.stream_.get())) {
        self.handOver(buffer);
    }
}

void PipeWireVideoTap::handOver(pw_buffer* buffer) {
    const auto memory = memories_.find(buffer);
    const spa_meta_header* header = headerOf(*buffer->buffer);
    if (!format_ || memory == memories_.end() || isBroken(header)) {
        pw_stream_queue_buffer(stream_.get(), buffer);
        return;
    }
    pw_time cycle{};
    pw_stream_get_time_n(stream_.get(), &cycle, sizeof cycle);
    PipeWirePictureTimes times{.cycle = std::chrono::nanoseconds(cycle.now), .arrival = monotonicTime()};
    if (header) {
        times.stamp = std::chrono::nanoseconds(header->pts);
    }
    exchange_.put({.buffer = buffer, .memory = memory->second.get(), .format = *format_, .time = timeOfPicture(times)});
    if (!std::exchange(isFlowing_, true)) {
        flowChanged_(std::nullopt);
    }
}

void PipeWireVideoTap::takeBack() {
    PipeWirePictureExchange::Buffers buffers;
    for (pw_buffer* buffer : exchange_.takeBack(buffers)) {
        pw_stream_queue_buffer(stream_.get(), buffer);
    }
}

}  // namespace zorvane
