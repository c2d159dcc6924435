// Where the sound of a recording goes: to a file, or to the host.
#pragma once

#include <cstddef>
#include <memory>

#include "Zorvane/Internal/AVAssetWriterInputBufferAdaptor.hpp"
#include "Zorvane/Internal/Recorders/WriterSession.hpp"
#include "Zorvane/Internal/UnboundedBackpressureBuffer.hpp"
#include "Zorvane/Platform/CoreMedia/CMSampleBuffer.hpp"
#include "Zorvane/ZVSchemaItem.hpp"

namespace zorvane {

/// Takes samples in order, without blocking, and loses none: what its receiver can't take yet waits, without a bound.
/// `begin` and `append` come on one thread at a time, `partialFlush` on any.
class AudioSampleSink {
  public:
    virtual ~AudioSampleSink() = default;

    /// The recording begins at `recordFrom`; samples follow.
    virtual void begin(CMTime recordFrom) = 0;
    virtual void append(const CMSampleBuffer& sampleBuffer) = 0;

    /// Hands on what waits as far as it is taken, and returns how many samples still wait. Throws if they always will.
    virtual std::size_t partialFlush() = 0;
};

/// A track of a file. `begin` opens the writers' session, unless another track has done so.
class WriterAudioSampleSink final : public AudioSampleSink {
  public:
    WriterAudioSampleSink(std::shared_ptr<AVAssetWriterInput> input, std::shared_ptr<WriterSession> session,
                          std::shared_ptr<OutputAssetWriters> writers, const Logger& logger);

    void begin(CMTime recordFrom) override { session_->startIfNeeded(recordFrom); }
    void append(const CMSampleBuffer& sampleBuffer) override { inputAdaptor_.append(sampleBuffer); }
    std::size_t partialFlush() override;

  private:
    const std::shared_ptr<WriterSession> session_;
    const std::shared_ptr<OutputAssetWriters> writers_;
    AVAssetWriterInputBufferAdaptor inputAdaptor_;
};

/// The host's callback. A sample on which it throws counts as taken; the log hears of the first one. When more and more
/// samples wait for a host that takes none, the log says so each time that their number has doubled.
class HostAudioSampleSink final : public AudioSampleSink {
  public:
    HostAudioSampleSink(ZVSchemaItem::SampleCallback callback, const Logger& logger);

    void begin(CMTime) override {}
    void append(const CMSampleBuffer& sampleBuffer) override;
    std::size_t partialFlush() override { return backpressureBuffer_.partialFlush(); }

  private:
    using Buffer = UnboundedBackpressureBuffer<CMSampleBuffer>;

    Buffer::HandlerResult offer(const CMSampleBuffer& sampleBuffer);

    const ZVSchemaItem::SampleCallback callback_;
    const Logger logger_;
    bool didLogThrow_ = false;  // of the buffer's handler
    Buffer backpressureBuffer_;
};

}  // namespace zorvane
