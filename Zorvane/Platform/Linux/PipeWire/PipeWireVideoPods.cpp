#include "Zorvane/Platform/Linux/PipeWire/PipeWireVideoPods.hpp"

#include <spa/buffer/buffer.h>
#include <spa/buffer/meta.h>
#include <spa/param/buffers.h>
#include <spa/param/format.h>
#include <spa/param/param.h>
#include <spa/param/video/raw.h>
#include <spa/pod/builder.h>
#include <spa/pod/iter.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>

namespace zorvane {
namespace {

using enum AVVideoSourceFormat;

constexpr std::pair<spa_video_format, AVVideoSourceFormat> rawFormats[] = {
    {SPA_VIDEO_FORMAT_YUY2, yuyv}, {SPA_VIDEO_FORMAT_UYVY, uyvy},   {SPA_VIDEO_FORMAT_YVYU, yvyu},
    {SPA_VIDEO_FORMAT_NV12, nv12}, {SPA_VIDEO_FORMAT_NV21, nv21},   {SPA_VIDEO_FORMAT_I420, i420},
    {SPA_VIDEO_FORMAT_YV12, yv12}, {SPA_VIDEO_FORMAT_GRAY8, gray8}, {SPA_VIDEO_FORMAT_RGB, rgb},
    {SPA_VIDEO_FORMAT_BGR, bgr},   {SPA_VIDEO_FORMAT_RGBx, rgbx},   {SPA_VIDEO_FORMAT_RGBA, rgbx},
    {SPA_VIDEO_FORMAT_BGRx, bgrx}, {SPA_VIDEO_FORMAT_BGRA, bgrx},   {SPA_VIDEO_FORMAT_xRGB, xrgb},
    {SPA_VIDEO_FORMAT_ARGB, xrgb}, {SPA_VIDEO_FORMAT_xBGR, xbgr},   {SPA_VIDEO_FORMAT_ABGR, xbgr}};

constexpr std::size_t mostOffers = 1024;

std::optional<AVVideoSourceFormat> rawFormat(std::uint32_t id) {
    const auto* known = std::ranges::find(rawFormats, id, [](const auto& entry) { return entry.first; });
    return known == std::end(rawFormats) ? std::nullopt : std::optional(known->second);
}

/// A property's values: one, a list with the preferred one in front, or the preferred one and the ends of a range.
template <class Value>
struct Choice {
    std::uint32_t kind = SPA_CHOICE_None;
    std::vector<Value> values;

    bool isRange() const { return (kind == SPA_CHOICE_Range || kind == SPA_CHOICE_Step) && values.size() >= 3; }
    /// What may be chosen, where it is no range.
    std::vector<Value> list() const {
        const bool isList = kind == SPA_CHOICE_Enum;
        const auto count =
            static_cast<std::ptrdiff_t>(isList ? values.size() : std::min<std::size_t>(values.size(), 1));
        return {values.begin(), values.begin() + count};
    }
};

template <class Value>
Choice<Value> choiceOf(const spa_pod* object, std::uint32_t key, std::uint32_t type) {
    Choice<Value> choice;
    const spa_pod_prop* property = spa_pod_find_prop(object, nullptr, key);
    // Nobody has checked that a list is as long as its own head, which its values are counted from.
    if (!property || (property->value.type == SPA_TYPE_Choice && !spa_pod_is_choice(&property->value))) {
        return choice;
    }
    std::uint32_t count = 0;
    const spa_pod* first = spa_pod_get_values(&property->value, &count, &choice.kind);
    if (first->type != type || first->size != sizeof(Value)) {
        return choice;
    }
    const auto* bytes = static_cast<const std::uint8_t*>(SPA_POD_BODY_CONST(first));
    for (std::uint32_t index = 0; index < count; ++index) {
        Value value;
        std::memcpy(&value, bytes + index * sizeof(Value), sizeof(Value));
        choice.values.push_back(value);
    }
    return choice;
}

bool isSize(const spa_rectangle& size) {
    return size.width > 0 && size.height > 0 && size.width <= largestVideoSide && size.height <= largestVideoSide;
}

CMVideoDimensions sizeOf(const spa_rectangle& size) {
    return {static_cast<std::int32_t>(size.width), static_cast<std::int32_t>(size.height)};
}

PipeWireFrameRate rateOf(const spa_fraction& rate) {
    return {.frames = rate.num, .seconds = rate.denom};
}

std::vector<PipeWireVideoOffer> sizesOf(const spa_pod* parameter) {
    const auto sizes = choiceOf<spa_rectangle>(parameter, SPA_FORMAT_VIDEO_size, SPA_TYPE_Rectangle);
    std::vector<PipeWireVideoOffer> offers;
    if (sizes.isRange() && isSize(sizes.values[1]) && isSize(sizes.values[2])) {
        PipeWireVideoOffer offer{.smallest = sizeOf(sizes.values[1]), .largest = sizeOf(sizes.values[2])};
        if (sizes.kind == SPA_CHOICE_Step && sizes.values.size() > 3 && isSize(sizes.values[3])) {
            offer.step = sizeOf(sizes.values[3]);
        }
        return {offer};
    }
    if (sizes.values.empty()) {
        return {{.smallest = {1, 1}, .largest = {largestVideoSide, largestVideoSide}}};
    }
    for (const spa_rectangle& size : sizes.isRange() ? std::vector{sizes.values.front()} : sizes.list()) {
        if (isSize(size)) {
            offers.push_back({.smallest = sizeOf(size), .largest = sizeOf(size)});
        }
    }
    return offers;
}

/// Pairs of a slowest and a fastest one.
std::vector<std::pair<PipeWireFrameRate, PipeWireFrameRate>> ratesOf(const spa_pod* parameter) {
    const auto rates = choiceOf<spa_fraction>(parameter, SPA_FORMAT_VIDEO_framerate, SPA_TYPE_Fraction);
    constexpr double anyRate = 10'000;
    if (rates.isRange() && rateOf(rates.values[2]).perSecond() < anyRate) {
        return {{rateOf(rates.values[1]), rateOf(rates.values[2])}};
    }
    std::vector<std::pair<PipeWireFrameRate, PipeWireFrameRate>> pairs;
    for (const spa_fraction& rate : rates.isRange() ? std::vector{rates.values.front()} : rates.list()) {
        pairs.emplace_back(rateOf(rate), rateOf(rate));
    }
    if (pairs.empty()) {
        pairs.emplace_back();
    }
    return pairs;
}

/// No device has so many that some would be left out; one who says so talks nonsense.
void addIfNew(const PipeWireVideoOffer& offer, std::vector<PipeWireVideoOffer>& offers) {
    if (offers.size() < mostOffers && std::ranges::find(offers, offer) == offers.end()) {
        offers.push_back(offer);
    }
}

std::vector<PipeWireVideoOffer> sizesAndRatesOf(const spa_pod* parameter) {
    std::vector<PipeWireVideoOffer> offers;
    const auto rates = ratesOf(parameter);
    for (PipeWireVideoOffer offer : sizesOf(parameter)) {
        for (const auto& [slowest, fastest] : rates) {
            offer.slowest = slowest;
            offer.fastest = fastest;
            addIfNew(offer, offers);
        }
    }
    return offers;
}

std::uint32_t idOf(const spa_pod* parameter, std::uint32_t key) {
    const auto ids = choiceOf<std::uint32_t>(parameter, key, SPA_TYPE_Id);
    return ids.values.empty() ? SPA_ID_INVALID : ids.values.front();
}

bool isVideo(const spa_pod* parameter) {
    return parameter && spa_pod_is_object_type(parameter, SPA_TYPE_OBJECT_Format) &&
           idOf(parameter, SPA_FORMAT_mediaType) == SPA_MEDIA_TYPE_video;
}

std::vector<std::optional<AVVideoSourceFormat>> encodingsOf(const spa_pod* parameter) {
    const std::uint32_t subtype = idOf(parameter, SPA_FORMAT_mediaSubtype);
    if (subtype == SPA_MEDIA_SUBTYPE_mjpg) {
        return {jpeg};
    }
    if (subtype != SPA_MEDIA_SUBTYPE_raw) {
        return {std::nullopt};
    }
    std::vector<std::optional<AVVideoSourceFormat>> encodings;
    for (const std::uint32_t id : choiceOf<std::uint32_t>(parameter, SPA_FORMAT_VIDEO_format, SPA_TYPE_Id).list()) {
        encodings.push_back(rawFormat(id));
    }
    return encodings;
}

}  // namespace

std::vector<PipeWireVideoOffer> parseVideoOffers(const spa_pod* parameter) {
    std::vector<PipeWireVideoOffer> offers;
    if (isVideo(parameter)) {
        const auto sizesAndRates = sizesAndRatesOf(parameter);
        for (const auto& encoding : encodingsOf(parameter)) {
            for (PipeWireVideoOffer offer : sizesAndRates) {
                offer.encoding = encoding;
                addIfNew(offer, offers);
            }
        }
    }
    return offers;
}

std::optional<PipeWireVideoFormat> parseVideoFormat(const spa_pod* parameter) {
    const auto offers = parseVideoOffers(parameter);
    if (offers.size() != 1 || !offers.front().encoding || offers.front().smallest != offers.front().largest) {
        return std::nullopt;
    }
    const PipeWireVideoOffer& offer = offers.front();
    return PipeWireVideoFormat{.encoding = *offer.encoding, .size = offer.smallest, .rate = offer.fastest};
}

class PipeWireVideoPods::Builder {
  public:
    explicit Builder(PipeWireVideoPods& pods) : pods_(pods) {
        spa_pod_builder_init(&builder_, pods.memory_.data(), static_cast<std::uint32_t>(pods.memory_.size()));
    }

    void addFormat(const PipeWireVideoFormat& format) {
        const bool isJPEG = format.encoding == jpeg;
        begin(SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat);
        addMediaType(isJPEG ? SPA_MEDIA_SUBTYPE_mjpg : SPA_MEDIA_SUBTYPE_raw);
        if (!isJPEG) {
            addEncodings([&](AVVideoSourceFormat encoding) { return encoding == format.encoding; });
        }
        const spa_rectangle size{static_cast<std::uint32_t>(format.size.width),
                                 static_cast<std::uint32_t>(format.size.height)};
        spa_pod_builder_prop(&builder_, SPA_FORMAT_VIDEO_size, 0);
        spa_pod_builder_rectangle(&builder_, size.width, size.height);
        if (format.rate.isKnown()) {
            spa_pod_builder_prop(&builder_, SPA_FORMAT_VIDEO_framerate, 0);
            spa_pod_builder_fraction(&builder_, format.rate.frames, format.rate.seconds);
        }
        end();
    }

    void addAnyRawFormat() {
        begin(SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat);
        addMediaType(SPA_MEDIA_SUBTYPE_raw);
        addEncodings([](AVVideoSourceFormat) { return true; });
        end();
    }

    void addAnyJPEG() {
        begin(SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat);
        addMediaType(SPA_MEDIA_SUBTYPE_mjpg);
        end();
    }

    void addBuffers() {
        begin(SPA_TYPE_OBJECT_ParamBuffers, SPA_PARAM_Buffers);
        constexpr int memory = (1 << SPA_DATA_MemPtr) | (1 << SPA_DATA_MemFd) | (1 << SPA_DATA_DmaBuf);
        spa_pod_builder_add(&builder_, SPA_PARAM_BUFFERS_buffers, SPA_POD_CHOICE_RANGE_Int(8, 2, 16),
                            SPA_PARAM_BUFFERS_dataType, SPA_POD_CHOICE_FLAGS_Int(memory), 0);
        end();
    }

    void addHeader() {
        begin(SPA_TYPE_OBJECT_ParamMeta, SPA_PARAM_Meta);
        spa_pod_builder_add(&builder_, SPA_PARAM_META_type, SPA_POD_Id(SPA_META_Header), SPA_PARAM_META_size,
                            SPA_POD_Int(sizeof(spa_meta_header)), 0);
        end();
    }

  private:
    void begin(std::uint32_t type, std::uint32_t id) { spa_pod_builder_push_object(&builder_, &object_, type, id); }
    void end() { pods_.pods_.push_back(static_cast<const spa_pod*>(spa_pod_builder_pop(&builder_, &object_))); }

    void addMediaType(std::uint32_t subtype) {
        spa_pod_builder_add(&builder_, SPA_FORMAT_mediaType, SPA_POD_Id(SPA_MEDIA_TYPE_video), SPA_FORMAT_mediaSubtype,
                            SPA_POD_Id(subtype), 0);
    }

    template <class Predicate>
    void addEncodings(const Predicate& isWanted) {
        spa_pod_frame choice;
        spa_pod_builder_prop(&builder_, SPA_FORMAT_VIDEO_format, 0);
        spa_pod_builder_push_choice(&builder_, &choice, SPA_CHOICE_Enum, 0);
        bool isFirst = true;
        for (const auto& [id, encoding] : rawFormats) {
            if (isWanted(encoding)) {
                spa_pod_builder_id(&builder_, id);
                if (std::exchange(isFirst, false)) {
                    spa_pod_builder_id(&builder_, id);  // the preferred one stands in front of the list
                }
            }
        }
        spa_pod_builder_pop(&builder_, &choice);
    }

    PipeWireVideoPods& pods_;
    spa_pod_builder builder_{};
    spa_pod_frame object_{};
};

PipeWireVideoPods::PipeWireVideoPods(const std::optional<PipeWireVideoFormat>& wanted) {
    Builder builder(*this);
    if (wanted) {
        builder.addFormat(*wanted);
    }
    builder.addAnyRawFormat();
    builder.addAnyJPEG();
}

PipeWireVideoPods::PipeWireVideoPods(ForBuffers) {
    Builder builder(*this);
    builder.addBuffers();
    builder.addHeader();
}

}  // namespace zorvane
