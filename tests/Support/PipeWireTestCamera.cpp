#include "tests/Support/PipeWireTestCamera.hpp"

#include <pipewire/pipewire.h>
#include <spa/buffer/meta.h>
#include <spa/param/buffers.h>
#include <spa/param/format-utils.h>
#include <spa/param/video/format-utils.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <ctime>
#include <limits>
#include <optional>
#include <stdexcept>
#include <utility>

#include "Zorvane/Platform/Linux/PipeWire/PipeWireVideoPods.hpp"
#include "tests/Support/TestPicture.hpp"

namespace zorvane {
namespace {

using std::chrono::nanoseconds;

nanoseconds hostTime() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::chrono::seconds(now.tv_sec) + nanoseconds(now.tv_nsec);
}

spa_video_format rawFormatOf(AVVideoSourceFormat format) {
    using enum AVVideoSourceFormat;
    switch (format) {
        case yuyv:
            return SPA_VIDEO_FORMAT_YUY2;
        case uyvy:
            return SPA_VIDEO_FORMAT_UYVY;
        case yvyu:
            return SPA_VIDEO_FORMAT_YVYU;
        case nv12:
            return SPA_VIDEO_FORMAT_NV12;
        case nv21:
            return SPA_VIDEO_FORMAT_NV21;
        case i420:
            return SPA_VIDEO_FORMAT_I420;
        case yv12:
            return SPA_VIDEO_FORMAT_YV12;
        case gray8:
            return SPA_VIDEO_FORMAT_GRAY8;
        case rgb:
            return SPA_VIDEO_FORMAT_RGB;
        case bgr:
            return SPA_VIDEO_FORMAT_BGR;
        case rgbx:
            return SPA_VIDEO_FORMAT_RGBx;
        case bgrx:
            return SPA_VIDEO_FORMAT_BGRx;
        case xrgb:
            return SPA_VIDEO_FORMAT_xRGB;
        case xbgr:
            return SPA_VIDEO_FORMAT_xBGR;
        case jpeg:
            break;
    }
    return SPA_VIDEO_FORMAT_UNKNOWN;
}

/// `EnumFormat` parameters in memory of their own.
class Offers {
  public:
    Offers(const std::vector<PipeWireVideoFormat>& formats, bool offersH264) {
        spa_pod_builder_init(&builder_, memory_, sizeof memory_);
        for (const PipeWireVideoFormat& format : formats) {
            const bool isJPEG = format.encoding == AVVideoSourceFormat::jpeg;
            add(isJPEG ? SPA_MEDIA_SUBTYPE_mjpg : SPA_MEDIA_SUBTYPE_raw, rawFormatOf(format.encoding), format);
        }
        if (offersH264) {
            add(SPA_MEDIA_SUBTYPE_h264, SPA_VIDEO_FORMAT_UNKNOWN, {.size = {1920, 1080}, .rate = {30, 1}});
        }
    }

    const spa_pod** get() { return pods_.data(); }
    std::uint32_t count() const { return static_cast<std::uint32_t>(pods_.size()); }

  private:
    void add(std::uint32_t subtype, spa_video_format raw, const PipeWireVideoFormat& format) {
        spa_pod_frame object;
        spa_pod_builder_push_object(&builder_, &object, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat);
        spa_pod_builder_add(&builder_, SPA_FORMAT_mediaType, SPA_POD_Id(SPA_MEDIA_TYPE_video), SPA_FORMAT_mediaSubtype,
                            SPA_POD_Id(subtype), 0);
        if (raw != SPA_VIDEO_FORMAT_UNKNOWN) {
            spa_pod_builder_add(&builder_, SPA_FORMAT_VIDEO_format, SPA_POD_Id(raw), 0);
        }
        const spa_rectangle size{static_cast<std::uint32_t>(format.size.width),
                                 static_cast<std::uint32_t>(format.size.height)};
        const spa_fraction rate{format.rate.frames, format.rate.seconds};
        spa_pod_builder_add(&builder_, SPA_FORMAT_VIDEO_size, SPA_POD_Rectangle(&size), SPA_FORMAT_VIDEO_framerate,
                            SPA_POD_Fraction(&rate), 0);
        pods_.push_back(static_cast<const spa_pod*>(spa_pod_builder_pop(&builder_, &object)));
    }

    alignas(8) std::uint8_t memory_[16384]{};
    spa_pod_builder builder_{};
    std::vector<const spa_pod*> pods_;
};

}  // namespace

struct PipeWireTestCamera::State {
    explicit State(Settings chosen) : settings(std::move(chosen)) {}

    static State& of(void* data) { return *static_cast<State*>(data); }

    static void onStateChanged(void* data, pw_stream_state, pw_stream_state now, const char*) {
        State& self = of(data);
        self.isStreaming = now == PW_STREAM_STATE_STREAMING;
        self.setTimer();
        pw_thread_loop_signal(self.loop, false);
    }

    /// Ticks at multiples of the frame's duration on the host clock.
    void setTimer() {
        timespec first{};
        timespec interval{};
        if (isStreaming && format) {
            const auto period = nanoseconds(1'000'000'000LL * format->rate.seconds / format->rate.frames);
            interval = {period.count() / 1'000'000'000, period.count() % 1'000'000'000};
            first = {0, 1};
        }
        pw_loop_update_timer(pw_thread_loop_get_loop(loop), timer, &first, &interval, false);
    }

    static void onTimer(void* data, std::uint64_t) { pw_stream_trigger_process(of(data).stream); }

    static void onParameter(void* data, std::uint32_t id, const spa_pod* parameter) {
        State& self = of(data);
        if (id != SPA_PARAM_Format || !parameter) {
            return;
        }
        self.format = parseVideoFormat(parameter);
        self.picture = std::make_unique<TestPicture>(self.format->encoding, self.format->size);
        std::uint8_t memory[1024];
        spa_pod_builder builder = SPA_POD_BUILDER_INIT(memory, sizeof memory);
        const int types = self.settings.memory == Memory::device ? 1 << SPA_DATA_DmaBuf : 1 << SPA_DATA_MemFd;
        const spa_pod* needs[] = {
            static_cast<spa_pod*>(spa_pod_builder_add_object(
                &builder, SPA_TYPE_OBJECT_ParamBuffers, SPA_PARAM_Buffers, SPA_PARAM_BUFFERS_buffers,
                SPA_POD_CHOICE_RANGE_Int(6, 2, 16), SPA_PARAM_BUFFERS_blocks, SPA_POD_Int(1), SPA_PARAM_BUFFERS_size,
                SPA_POD_Int(static_cast<int>(self.picture->byteSize())), SPA_PARAM_BUFFERS_stride,
                SPA_POD_Int(static_cast<int>(self.picture->bytesPerRow())), SPA_PARAM_BUFFERS_dataType,
                SPA_POD_CHOICE_FLAGS_Int(types))),
            static_cast<spa_pod*>(spa_pod_builder_add_object(
                &builder, SPA_TYPE_OBJECT_ParamMeta, SPA_PARAM_Meta, SPA_PARAM_META_type, SPA_POD_Id(SPA_META_Header),
                SPA_PARAM_META_size, SPA_POD_Int(sizeof(spa_meta_header))))};
        pw_stream_update_params(self.stream, needs, self.settings.stamp == Stamp::none ? 1 : 2);
        self.setTimer();
    }

    /// A file of memory in place of a device's: readers can't tell until they ask its driver.
    static void onBufferAdded(void* data, pw_buffer* buffer) {
        State& self = of(data);
        if (self.settings.memory != Memory::device) {
            return;
        }
        spa_data& piece = buffer->buffer->datas[0];
        piece.type = SPA_DATA_DmaBuf;
        piece.flags = SPA_DATA_FLAG_READWRITE;
        piece.fd = memfd_create("test-camera", MFD_CLOEXEC);
        piece.mapoffset = 0;
        piece.maxsize = static_cast<std::uint32_t>(self.picture->byteSize());
        if (piece.fd < 0 || ftruncate(static_cast<int>(piece.fd), piece.maxsize) != 0) {
            throw std::runtime_error("there is no memory for a picture");
        }
        piece.data = mmap(nullptr, piece.maxsize, PROT_READ | PROT_WRITE, MAP_SHARED, static_cast<int>(piece.fd), 0);
    }

    static void onBufferRemoved(void* data, pw_buffer* buffer) {
        if (of(data).settings.memory == Memory::device) {
            spa_data& piece = buffer->buffer->datas[0];
            munmap(piece.data, piece.maxsize);
            ::close(static_cast<int>(piece.fd));
        }
    }

    static void onProcess(void* data) {
        State& self = of(data);
        pw_buffer* buffer = pw_stream_dequeue_buffer(self.stream);
        if (buffer && self.picture) {
            self.take(*buffer->buffer);
        }
        if (buffer) {
            pw_stream_queue_buffer(self.stream, buffer);
        }
    }

    bool isFlash(nanoseconds time) {
        const auto second = std::chrono::floor<std::chrono::seconds>(time);
        const bool isFirstOfSecond = std::exchange(lastSecond, second) != second;
        return settings.isFlash ? settings.isFlash(time) : isFirstOfSecond;
    }

    void take(spa_buffer& buffer) {
        const nanoseconds time = hostTime() - settings.latency;
        spa_data& piece = buffer.datas[0];
        auto* bytes = static_cast<std::byte*>(piece.data);
        const std::size_t size = picture->draw({bytes, piece.maxsize}, number, isFlash(time));
        *piece.chunk = {.offset = 0,
                        .size = static_cast<std::uint32_t>(size),
                        .stride = static_cast<std::int32_t>(picture->bytesPerRow()),
                        .flags = SPA_CHUNK_FLAG_NONE};
        spoil(piece);
        if (auto* header = static_cast<spa_meta_header*>(
                spa_buffer_find_meta_data(&buffer, SPA_META_Header, sizeof(spa_meta_header)))) {
            const bool isHostTime = settings.stamp == Stamp::hostClock;
            const std::uint32_t flags = fault == Fault::gap ? SPA_META_HEADER_FLAG_GAP : 0;
            *header = {.flags = flags, .pts = isHostTime ? time.count() : (time - start).count(), .seq = number};
        }
        taken.push_back({.number = number++, .time = time, .fault = fault});
    }

    void spoil(spa_data& piece) const {
        spa_chunk& chunk = *piece.chunk;
        switch (fault) {
            case Fault::none:
            case Fault::gap:
                break;
            case Fault::cutOff:
                chunk.size /= 2;
                break;
            case Fault::outsideMemory:
                chunk.offset = piece.maxsize - 16;
                chunk.size = std::numeric_limits<std::uint32_t>::max();
                break;
            case Fault::backwards:
                chunk.stride = -chunk.stride;
                break;
            case Fault::narrowRows:
                chunk.stride = 1;
                break;
            case Fault::markedBroken:
                chunk.flags = SPA_CHUNK_FLAG_CORRUPTED;
                break;
            case Fault::garbage:
                std::memset(piece.data, 0x5A, piece.maxsize);
                break;
        }
    }

    const Settings settings;
    const nanoseconds start = hostTime();
    pw_thread_loop* loop = nullptr;
    pw_context* context = nullptr;
    pw_core* core = nullptr;
    pw_stream* stream = nullptr;
    spa_hook streamHook{};
    spa_source* timer = nullptr;
    // What follows is used with the loop locked.
    bool isStreaming = false;
    std::optional<PipeWireVideoFormat> format;
    std::unique_ptr<TestPicture> picture;
    Fault fault = Fault::none;
    std::uint32_t number = 0;
    std::chrono::seconds lastSecond{0};
    std::vector<Taken> taken;
};

namespace {

/// The loop stands still as long as it lives.
class LoopLock {
  public:
    explicit LoopLock(pw_thread_loop* loop) : loop_(loop) { pw_thread_loop_lock(loop_); }
    LoopLock(const LoopLock&) = delete;
    LoopLock& operator=(const LoopLock&) = delete;
    ~LoopLock() { pw_thread_loop_unlock(loop_); }

  private:
    pw_thread_loop* const loop_;
};

}  // namespace

PipeWireTestCamera::PipeWireTestCamera(Settings settings) : state_(std::make_unique<State>(std::move(settings))) {
    pw_init(nullptr, nullptr);
    State& state = *state_;
    state.loop = pw_thread_loop_new("test-camera", nullptr);
    pw_loop* loop = pw_thread_loop_get_loop(state.loop);
    state.context = pw_context_new(loop, nullptr, 0);
    state.core = pw_context_connect(state.context, nullptr, 0);
    if (!state.core) {
        throw std::runtime_error("there is no PipeWire to connect to");
    }
    const std::string& name = state.settings.name;
    pw_properties* properties =
        pw_properties_new(PW_KEY_MEDIA_CLASS, "Video/Source", PW_KEY_NODE_NAME, name.c_str(), PW_KEY_NODE_DESCRIPTION,
                          name.c_str(), PW_KEY_NODE_AUTOCONNECT, "false", nullptr);
    for (const auto& [key, value] : state.settings.properties) {
        pw_properties_set(properties, key.c_str(), value.c_str());
    }
    state.timer = pw_loop_add_timer(loop, State::onTimer, &state);
    state.stream = pw_stream_new(state.core, name.c_str(), properties);
    static const pw_stream_events events{.version = PW_VERSION_STREAM_EVENTS,
                                         .state_changed = State::onStateChanged,
                                         .param_changed = State::onParameter,
                                         .add_buffer = State::onBufferAdded,
                                         .remove_buffer = State::onBufferRemoved,
                                         .process = State::onProcess};
    pw_stream_add_listener(state.stream, &state.streamHook, &events, &state);
    const int memoryFlag =
        state.settings.memory == Memory::device ? PW_STREAM_FLAG_ALLOC_BUFFERS : PW_STREAM_FLAG_MAP_BUFFERS;
    Offers offers(state.settings.formats, state.settings.offersH264);
    pw_stream_connect(state.stream, PW_DIRECTION_OUTPUT, PW_ID_ANY,
                      static_cast<pw_stream_flags>(PW_STREAM_FLAG_DRIVER | memoryFlag), offers.get(), offers.count());
    pw_thread_loop_start(state.loop);
    const LoopLock lock(state.loop);
    while (pw_stream_get_node_id(state.stream) == SPA_ID_INVALID) {
        pw_thread_loop_wait(state.loop);
    }
}

PipeWireTestCamera::~PipeWireTestCamera() {
    pw_thread_loop_stop(state_->loop);
    pw_stream_destroy(state_->stream);
    pw_loop_destroy_source(pw_thread_loop_get_loop(state_->loop), state_->timer);
    pw_core_disconnect(state_->core);
    pw_context_destroy(state_->context);
    pw_thread_loop_destroy(state_->loop);
}

void PipeWireTestCamera::setFormats(std::vector<PipeWireVideoFormat> formats) {
    const LoopLock lock(state_->loop);
    Offers offers(formats, state_->settings.offersH264);
    pw_stream_update_params(state_->stream, offers.get(), offers.count());
}

void PipeWireTestCamera::setFault(Fault fault) {
    const LoopLock lock(state_->loop);
    state_->fault = fault;
}

std::vector<PipeWireTestCamera::Taken> PipeWireTestCamera::taken() const {
    const LoopLock lock(state_->loop);
    return state_->taken;
}

bool PipeWireTestCamera::isStreaming() const {
    const LoopLock lock(state_->loop);
    return state_->isStreaming;
}

}  // namespace zorvane
