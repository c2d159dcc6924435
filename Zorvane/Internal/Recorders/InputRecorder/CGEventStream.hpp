// The events of mouse and keyboard, one by one.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "Zorvane/Internal/Concurrency/AsyncThrowingStream.hpp"
#include "Zorvane/Platform/AppKit/NSEvents.hpp"
#include "Zorvane/Platform/CoreGraphics/CGEvents.hpp"

namespace zorvane {

/// Keeps all events that its consumer has not taken yet, so that nothing holds up the window server. Owns what listens:
/// that goes with the stream.
class CGEventStream {
  public:
    /// Keyboard and mouse. The stream ends with an error if the tap can't be made or the system ends it: with what the
    /// platform throws, else with a `CGEventTapError`.
    static std::shared_ptr<CGEventStream> eventTapForEvents(CGEventMask matching);
    /// The mouse only, which needs no permission. If a monitor can't be had the stream ends with what the platform
    /// throws, else with a `ZVError`, which have a text for the user.
    static std::shared_ptr<CGEventStream> combinedMonitorForEvents(NSEventMask matching);

    /// As `AsyncThrowingStream::next`.
    Task<std::optional<CGEvent>> next() { return stream_.next(); }

    /// Stops to listen and ends the stream behind all events that happened before this call. Beside a call of `next`.
    /// Blocks for as long as the window server takes to answer, which is limited.
    void finish();

  private:
    using Stream = AsyncThrowingStream<CGEvent>;
    using Listeners = std::vector<std::unique_ptr<CGEventListener>>;

    template <class Listen>
    static std::shared_ptr<CGEventStream> make(const Listen& listen);

    CGEventStream(Stream stream, Stream::Source source) : stream_(std::move(stream)), source_(std::move(source)) {}

    Stream stream_;
    const Stream::Source source_;
    Listeners listeners_;
};

}  // namespace zorvane
