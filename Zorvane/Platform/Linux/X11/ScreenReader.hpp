// Reads pixels of the screen into pictures.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "Zorvane/Platform/CoreMedia/CVPixelBuffer.hpp"
#include "Zorvane/Platform/Linux/X11/ScreenArea.hpp"
#include "Zorvane/Platform/Linux/X11/ScreenSource.hpp"

namespace zorvane {

class ShmSegment;
class XConnection;

/// A pool of pictures and the way to fill them from a source. The server writes rows straight into a picture's memory;
/// where memory can't be shared, or the area reaches beyond the display, they come through the connection and are
/// copied.
///
/// A picture still holds what it held when it was last filled, so only the rows that changed since are read. One
/// thread uses a reader; the pictures go anywhere.
class ScreenReader {
  public:
    /// Throws `NSError` if the screen's pixels have a form that pictures can't have.
    ScreenReader(XConnection& connection, const ScreenArea& area, ScreenSource::Place place, std::size_t pictures);
    ~ScreenReader();

    /// A picture to fill, or an empty reference when all are in use.
    CVPixelBufferRef take() { return pool_->take(); }

    /// Rows of the screen's area have changed: no picture shows them any more.
    void noteChanged(const RowSpan& rows);
    /// Rows of one picture were drawn over.
    void noteDrawnOver(const CVPixelBuffer& picture, const RowSpan& rows);

    /// Asks the server for what `picture` lacks. Doesn't wait.
    void request(const CVPixelBuffer& picture);
    /// Waits for what was last asked for. False if the server could not give it; the picture is then of no use.
    bool receive(CVPixelBuffer& picture);

  private:
    RowSpan rowsToRead(const CVPixelBuffer& picture) const;
    void requestIntoMemory(const CVPixelBuffer& picture, const RowSpan& rows);
    void requestThroughConnection(const RowSpan& rows);
    bool receiveIntoMemory() const;
    bool receiveThroughConnection(CVPixelBuffer& picture, const RowSpan& rows) const;

    XConnection& connection_;
    const ScreenArea area_;
    const ScreenSource::Place place_;
    const CVPixelLayout layout_;
    std::shared_ptr<ShmSegment> shared_;  // null: through the connection
    std::shared_ptr<CVPixelBufferPool> pool_;
    std::vector<RowSpan> stale_;  // for each picture of the pool, the rows that don't show the screen
    std::uint32_t request_ = 0;   // the sequence number of the request under way
};

}  // namespace zorvane
