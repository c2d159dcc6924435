#include "Zorvane/Platform/CoreAudio/SoundAligner.hpp"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>
#include <vector>

#include "Zorvane/Platform/CoreAudio/DelayLockedLoop.hpp"
#include "Zorvane/Platform/CoreAudio/SoundBlocks.hpp"

namespace zorvane {
namespace {

/// A host time that is further off the place of its sound, in seconds, is no jitter.
constexpr double tolerance = 0.05;

/// How long host times must be off before they are believed, in seconds of sound, and how far to be believed at once: a
/// source that slept has not counted meanwhile, and what it gives now must not be heard before its sleep.
constexpr double strayTime = 0.2;
constexpr double sleep = 0.5;

/// In how many seconds the sound moves to its place, and by how much at most in each.
constexpr double approach = 1;
constexpr double fastestApproach = 0.002;

}  // namespace

/// Source frames are known by their position, output frames by their number since the host clock's beginning.
struct SoundAligner::State {
    State(const AVAudioFormat& source, const AVAudioFormat& output, AVAudioConverting& converting, Sink sink);

    void take(const AVAudioFormat& newSource);
    void process(const SourceSoundBlock& block);
    void follow(const SourceSoundBlock& block, std::int64_t frames);
    void begin(const SourceSoundBlock& block);
    void end();
    void leaveGap(std::int64_t position);
    std::int64_t drain();
    void place(std::int64_t position, std::int64_t frame);
    void steer();
    void convert(std::span<const std::byte> input, std::int64_t end);
    std::span<std::byte> room(std::int64_t end);
    double misplacement(const SourceSoundBlock& block) const;
    std::int64_t heldOutput() const;
    std::int64_t outputFrames(double sourceFrames) const;

    AVAudioConverting& converting;
    AVAudioFormat source;
    const AVAudioFormat output;
    std::unique_ptr<AVAudioConverter> converter;
    SoundBlocks blocks;
    DelayLockedLoop loop;
    std::vector<std::byte> dropped;  // where frames go that nobody wants
    std::vector<std::byte> silence;
    bool isLocked = false;
    std::int64_t nextPosition = 0;  // of the frame that the converter takes next
    std::int64_t nextFrame = 0;     // that the converter gives next; those before `blocks.nextFrame()` are dropped
    std::int64_t strayFrames = 0;   // since when host times have been off
};

SoundAligner::State::State(const AVAudioFormat& sourceFormat, const AVAudioFormat& outputFormat,
                           AVAudioConverting& convertingFormats, Sink sink)
    : converting(convertingFormats),
      source(sourceFormat),
      output(outputFormat),
      converter(converting.makeConverter(source, output, AVAudioConverting::Rate::adjustable)),
      blocks(output, std::move(sink)),
      loop(source.sampleRate),
      dropped(output.bytesPerFrame() * 512) {}

void SoundAligner::State::take(const AVAudioFormat& newSource) {
    auto next = converting.makeConverter(newSource, output, AVAudioConverting::Rate::adjustable);
    end();
    converter = std::move(next);
    source = newSource;
    loop = DelayLockedLoop(source.sampleRate);
}

void SoundAligner::State::process(const SourceSoundBlock& block) {
    const auto frames = static_cast<std::int64_t>(block.frames.size() / source.bytesPerFrame());
    if (frames == 0) {
        return;
    }
    if (isLocked) {
        follow(block, frames);
    } else {
        begin(block);
    }
    const std::int64_t overlap = nextPosition - block.position;
    if (overlap >= frames) {
        return;
    }
    steer();
    convert(block.frames.subspan(static_cast<std::size_t>(overlap) * source.bytesPerFrame()),
            std::numeric_limits<std::int64_t>::max());
    nextPosition = block.position + frames;
}

void SoundAligner::State::follow(const SourceSoundBlock& block, std::int64_t frames) {
    const double error = std::abs(misplacement(block));
    if (error <= tolerance) {
        strayFrames = 0;
        loop.observe(block.position, block.hostTime);
    } else {
        strayFrames += frames;
        const bool staysOff = static_cast<double>(strayFrames) >= strayTime * source.sampleRate;
        if (staysOff || error >= sleep || block.position != nextPosition) {
            begin(block);
            return;
        }
    }
    if (block.position > nextPosition) {
        leaveGap(block.position);
    }
}

void SoundAligner::State::begin(const SourceSoundBlock& block) {
    if (isLocked) {
        drain();
    }
    loop.lock(block.position, block.hostTime);
    place(block.position, std::llround(loop.hostSeconds(block.position) * output.sampleRate));
    strayFrames = 0;
    isLocked = true;
}

void SoundAligner::State::end() {
    if (isLocked) {
        drain();
        blocks.flush();
        isLocked = false;
    }
}

void SoundAligner::State::leaveGap(std::int64_t position) {
    const std::int64_t lost = position - nextPosition;
    const std::int64_t end = drain();
    place(position, end + outputFrames(static_cast<double>(lost)));
}

/// Brings out all sound that is held by pushing silence after it. Returns the frame after its last one.
std::int64_t SoundAligner::State::drain() {
    const std::int64_t end = nextFrame + heldOutput();
    const auto frames = static_cast<std::size_t>(std::ceil(converter->heldFrames())) + 1;
    silence.resize(std::max(silence.size(), frames * source.bytesPerFrame()));
    convert(std::span(silence).first(frames * source.bytesPerFrame()), end);
    return end;
}

/// Makes the source frame that is taken next this output frame, or if that has been handed over already, cuts off what
/// comes before the next one. The silence which `drain` left in the converter lies before it.
void SoundAligner::State::place(std::int64_t position, std::int64_t frame) {
    nextPosition = position;
    nextFrame = frame - heldOutput();
    blocks.skipTo(std::max(frame, blocks.nextFrame()));
}

/// Lets the converter run at the source's rate, and a little off it as long as the sound is not in its place.
void SoundAligner::State::steer() {
    const double due = loop.hostSeconds(nextPosition) - converter->heldFrames() * loop.framePeriod();
    const double early = due - static_cast<double>(nextFrame) / output.sampleRate;
    converter->setRateDeviation(loop.rateDeviation() - std::clamp(early / approach, -fastestApproach, fastestApproach));
}

/// Up to the output frame `end`. What is converted beyond it stays inside.
void SoundAligner::State::convert(std::span<const std::byte> input, std::int64_t end) {
    while (nextFrame < end) {
        const bool wanted = nextFrame >= blocks.nextFrame();
        const std::span<std::byte> target = room(end);
        const std::size_t frames = converter->convert(std::exchange(input, {}), target);
        nextFrame += static_cast<std::int64_t>(frames);
        if (wanted) {
            blocks.commit(frames);
        }
        if (frames * output.bytesPerFrame() < target.size()) {
            return;
        }
    }
}

std::span<std::byte> SoundAligner::State::room(std::int64_t end) {
    const std::int64_t unwanted = std::min(blocks.nextFrame(), end) - nextFrame;
    if (unwanted <= 0) {
        return blocks.room(end - nextFrame);
    }
    return std::span(dropped).first(
        std::min(dropped.size(), static_cast<std::size_t>(unwanted) * output.bytesPerFrame()));
}

/// How much later, in seconds, the block should be than where it will be.
double SoundAligner::State::misplacement(const SourceSoundBlock& block) const {
    const double untilBlock = converter->heldFrames() + static_cast<double>(block.position - nextPosition);
    const double place = static_cast<double>(nextFrame) / output.sampleRate + untilBlock * loop.framePeriod();
    return std::chrono::duration<double>(block.hostTime).count() - place;
}

std::int64_t SoundAligner::State::heldOutput() const {
    return outputFrames(converter->heldFrames());
}

std::int64_t SoundAligner::State::outputFrames(double sourceFrames) const {
    return std::llround(sourceFrames * loop.framePeriod() * output.sampleRate);
}

SoundAligner::SoundAligner(const AVAudioFormat& source, const AVAudioFormat& output, AVAudioConverting& converting,
                           Sink sink)
    : state_(std::make_unique<State>(source, output, converting, std::move(sink))) {}

SoundAligner::~SoundAligner() = default;

void SoundAligner::process(const SourceSoundBlock& block) {
    state_->process(block);
}

void SoundAligner::restart() {
    state_->end();
}

void SoundAligner::restart(const AVAudioFormat& source) {
    state_->take(source);
}

double SoundAligner::rateDeviation() const {
    return state_->loop.rateDeviation();
}

}  // namespace zorvane
