// A writer on a file in memory and on simulated time.
#pragma once

#include <exception>
#include <memory>
#include <optional>
#include <string>

#include "MemoryFile.hpp"
#include "Zorvane/Internal/Concurrency/Activity.hpp"
#include "Zorvane/Platform/FFmpeg/FFmpegMediaWriting.hpp"
#include "Zorvane/Platform/Virtual/ManualClock.hpp"
#include "Zorvane/ZVError.hpp"
#include "tests/Support/MovieReader.hpp"
#include "tests/Support/PictureSource.hpp"
#include "tests/Support/SoundSource.hpp"

namespace zorvane::testing {

inline AVVideoSettings smallVideo(std::int32_t width = 64, std::int32_t height = 48) {
    AVVideoSettings settings;
    settings.width = width;
    settings.height = height;
    settings.compressionProperties.constantQuality = 10;
    return settings;
}

inline AVAudioSettings stereoSound(double sampleRate = 48000) {
    AVAudioSettings settings;
    settings.sampleRate = sampleRate;
    settings.numberOfChannels = 2;
    return settings;
}

inline std::string textOf(const std::exception_ptr& error) {
    return error ? localizedDescription(error) : "no error";
}

struct WriterBench {
    explicit WriterBench(const AVVideoSettings& settings = smallVideo(), FileRecord::Faults faults = {},
                         AVFileType fileType = AVFileType::quickTimeMovie)
        : WriterBench(std::make_shared<AVAssetWriterInput>(settings), faults, fileType) {}

    explicit WriterBench(const AVAudioSettings& settings, FileRecord::Faults faults = {},
                         AVFileType fileType = AVFileType::quickTimeMovie)
        : WriterBench(std::make_shared<AVAssetWriterInput>(settings), faults, fileType) {}

    WriterBench(std::shared_ptr<AVAssetWriterInput> onlyInput, FileRecord::Faults faults, AVFileType fileType)
        : file(std::make_shared<FileRecord>(faults)), input(std::move(onlyInput)) {
        FFmpegWriterParts parts;
        parts.clock = clock;
        parts.makeFile = [record = file](const std::filesystem::path&) { return std::make_unique<MemoryFile>(record); };
        writer = FFmpegMediaWriting(parts).makeAssetWriter("/memory", fileType);
        writer->add(input);
    }

    ~WriterBench() {
        writer.reset();
        Activity::waitUntilIdle();
    }

    /// Adds a track of sound to one of pictures.
    void addSound(const AVAudioSettings& settings = stereoSound()) {
        soundInput = std::make_shared<AVAssetWriterInput>(settings);
        writer->add(soundInput);
    }

    bool start(CMTime sessionStart = kCMTimeZero) {
        if (!writer->startWriting()) {
            return false;
        }
        writer->startSession(sessionStart);
        return true;
    }

    /// Returns when the sample has been encoded.
    bool append(double seconds, const CVPixelBufferRef& picture) { return append(sampleAt(seconds, picture)); }
    bool append(const CMSampleBuffer& sample) {
        const bool taken = input->append(sample);
        Activity::waitUntilIdle();
        return taken;
    }

    bool appendSound(const CMSampleBuffer& sample) {
        const bool taken = soundInput->append(sample);
        Activity::waitUntilIdle();
        return taken;
    }

    AVAssetWriter::Status finish() {
        writer->finishWriting([] {});
        Activity::waitUntilIdle();
        return writer->status();
    }

    Movie movie(MovieDetail detail = MovieDetail::packets) const { return readMovie(file->bytes(), detail); }

    MovieSound sound() const { return readSound(file->bytes()); }

    const std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
    const std::shared_ptr<FileRecord> file;
    const std::shared_ptr<AVAssetWriterInput> input;
    std::shared_ptr<AVAssetWriterInput> soundInput;
    std::shared_ptr<AVAssetWriter> writer;
    const CVPixelBufferRef black = makeGreyPicture(64, 48, 0);
    const CVPixelBufferRef white = makeGreyPicture(64, 48, 255);
};

}  // namespace zorvane::testing
