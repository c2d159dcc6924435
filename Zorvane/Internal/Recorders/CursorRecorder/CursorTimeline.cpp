#include "Zorvane/Internal/Recorders/CursorRecorder/CursorTimeline.hpp"

#include <algorithm>
#include <cassert>

#include "Zorvane/Internal/Recorders/InputEventConversion.hpp"

namespace zorvane {

void CursorTimeline::preload(const std::vector<Cursor>& cursors) {
    assert(queue_.isCurrent());
    for (const Cursor& cursor : cursors) {
        auto& sameShape = cursorMap_[cursor.shape];
        if (const auto same = sameShape.find(cursor.tiffRepresentation); same != sameShape.end()) {
            sameShape.erase(same);
        }
        sameShape.insert(cursor);
    }
}

std::optional<std::string_view> CursorTimeline::capture(const NSCursor& cursor, CMTime time, const CGEvent& pointer) {
    assert(queue_.isCurrent());
    const Look look{Cursor::Shape::of(cursor), time, pointer.location};
    const auto id = note(cursor, look, pointer);
    lastCaptureCall_ = look;
    return id;
}

std::optional<std::string_view> CursorTimeline::note(const NSCursor& cursor, const Look& look, const CGEvent& pointer) {
    if (look.location == lastCaptureCall_.location && look.cursorShape == lastCaptureCall_.cursorShape) {
        if (cursorTimeline_.empty()) {
            return std::nullopt;
        }
        return cursorTimeline_.back().cursorId;
    }
    if (!cursor.tiffRepresentation || cursor.tiffRepresentation->empty()) {
        unsafeCursorsMissingTiffRepresentation_.insert(look.cursorShape);
        return std::nullopt;
    }
    const Cursor& shown = known(look.cursorShape, *cursor.tiffRepresentation);
    if (cursorTimeline_.empty() || cursorTimeline_.back().cursorId != shown.id) {
        cursorTimeline_.push_back(
            {look.timestamp, look.location, mouseButton(pointer), pointer.flags, shown.id, shown.type});
    }
    return shown.id;
}

const Cursor& CursorTimeline::known(const Cursor::Shape& shape, const std::string& tiffRepresentation) {
    auto& sameShape = cursorMap_[shape];
    const auto found = sameShape.find(tiffRepresentation);
    return found != sameShape.end() ? *found : *sameShape.emplace(shape, tiffRepresentation).first;
}

CursorTimeline::QueryResult CursorTimeline::cursor(CMTime time) const {
    return queue_.sync([&] { return find(time); });
}

CursorTimeline::QueryResult CursorTimeline::find(CMTime time) const {
    if (cursorTimeline_.empty()) {
        return NoCursorsCaptured{};
    }
    if (time > lastCaptureCall_.timestamp) {
        return AfterLastCapture{cursorTimeline_.back(), lastCaptureCall_.timestamp};
    }
    const auto next = firstAfter(time);
    if (next == cursorTimeline_.begin()) {
        return BeforeFirstCapture{cursorTimeline_.front()};
    }
    return Found{*std::prev(next)};
}

std::vector<CursorTimeline::Observation> CursorTimeline::observations(CMTime after, CMTime untilIncluding) const {
    return queue_.sync([&]() -> std::vector<Observation> {
        if (!(after < untilIncluding)) {
            return {};
        }
        return {firstAfter(after), firstAfter(untilIncluding)};
    });
}

std::vector<CursorTimeline::Observation>::const_iterator CursorTimeline::firstAfter(CMTime time) const {
    return std::upper_bound(cursorTimeline_.begin(), cursorTimeline_.end(), time,
                            [](CMTime sought, const Observation& each) { return sought < each.timestamp; });
}

}  // namespace zorvane
