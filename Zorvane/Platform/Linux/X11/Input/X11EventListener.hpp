// Hears mouse and keyboard of an X session.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <optional>
#include <thread>

#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"
#include "Zorvane/Platform/CoreGraphics/CGEvents.hpp"
#include "Zorvane/Platform/Linux/X11/Input/DeliveryPacer.hpp"
#include "Zorvane/Platform/Linux/X11/Input/DeviceEventTranslator.hpp"
#include "Zorvane/Platform/Linux/X11/Input/InputWatch.hpp"
#include "Zorvane/Platform/Linux/X11/Input/KeyboardWatch.hpp"
#include "Zorvane/Platform/Linux/X11/Input/RecordStream.hpp"

namespace zorvane {

/// `CGEventListener` on the RECORD extension, with two connections and a thread, "zv.input", of its own. Without input
/// the thread sleeps; while there is some it hears of it within 20 ms.
///
/// A server that goes away, or doesn't answer a `flush` within `longestXAnswer`, ends it: the handler hears
/// `tapDisabledByUserInput` as its last event.
class X11EventListener final : public CGEventListener {
  public:
    /// Listens when it returns. Asks the server, so somebody has to limit that. Nobody else may use the connections.
    /// Throws `NSError`, with a text that tells the user what to do.
    X11EventListener(std::shared_ptr<XConnection> control, std::shared_ptr<XConnection> data,
                     CGEventMask eventsOfInterest, CGEventHandler handler);
    ~X11EventListener() override;

    void flush() override;

  private:
    void run();
    void takeControlEvents();
    void followKeyboard();
    void deliver(const RecordedInput& input);
    void waitForInput() const;
    void pace(bool isHeard);
    void confirm(std::uint32_t marks);
    void end();

    const CGEventMask eventsOfInterest_;
    const CGEventHandler handler_;
    const std::shared_ptr<XConnection> control_;
    const std::shared_ptr<XConnection> data_;

    // The thread's
    RecordStream stream_;
    InputWatch watch_;
    KeyboardWatch keyboardWatch_;
    DeviceEventTranslator translator_;
    DeliveryPacer pacer_;
    bool isInputNoticed_ = false;

    Mutex mutex_;
    std::condition_variable_any confirmed_;
    std::uint32_t marksMade_ ZV_GUARDED_BY(mutex_) = 0;
    std::uint32_t marksSeen_ ZV_GUARDED_BY(mutex_) = 0;
    bool isEnding_ ZV_GUARDED_BY(mutex_) = false;  ///< by this object's end
    bool isOver_ ZV_GUARDED_BY(mutex_) = false;    ///< the handler hears nothing any more

    std::thread thread_;
};

}  // namespace zorvane
