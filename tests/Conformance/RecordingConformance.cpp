#include "tests/Conformance/RecordingConformance.hpp"

#include <gmock/gmock.h>

#include <filesystem>
#include <mutex>

#include "tests/Support/RecordedTracks.hpp"
#include "tests/Support/TemporaryDirectory.hpp"

namespace zorvane::test {

// A backend's own file instantiates the suite; a program without one is no mistake.
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(RecordingConformance);

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using FileType = ZVBundleInfo::FileAssetType;
using Item = ZVSchemaItem;
using testing::RecordedTrack;

/// The samples that a stream hands out.
class Handout {
  public:
    Item::SampleCallback callback() {
        return [shared = shared_](const CMSampleBuffer& sample) {
            const std::lock_guard lock(shared->mutex);
            shared->samples.push_back(sample);
            return true;
        };
    }
    std::vector<CMSampleBuffer> samples() const {
        const std::lock_guard lock(shared_->mutex);
        return shared_->samples;
    }

  private:
    struct Shared {
        std::mutex mutex;
        std::vector<CMSampleBuffer> samples;
    };
    const std::shared_ptr<Shared> shared_ = std::make_shared<Shared>();
};

/// One kind: its item, and what comes of it.
struct Kind {
    const char* name;
    Item (*item)(const RecordingSources& sources, const std::string& filename, Handout& handout);
    std::vector<FileType> files;
    std::size_t trackCount;  ///< of all files, and of what is handed out
    double delay = 0;        ///< how much later than it happens a thing is noticed, in seconds at most
};

/// The library asks for the list of windows ten times a second.
constexpr double windowListDelay = 0.1;

Item displayItem(const RecordingSources& sources, const std::string& filename, Handout&) {
    return Item::display(sources.displayID, {.showsCursor = false}, filename);
}
Item inputItem(const RecordingSources& sources, const std::string& filename, Handout&) {
    return Item::display(sources.displayID, {.showsCursor = false, .mouseEvents = true, .keyboardEvents = true},
                         filename);
}
Item topWindowItem(const RecordingSources& sources, const std::string& filename, Handout&) {
    return Item::_display(sources.displayID, {.showsCursor = false}, /*topWindowInfo=*/true,
                          ZVScreenRecordingOutputOptions::singleFile(filename));
}
Item cropItem(const RecordingSources& sources, const std::string& filename, Handout&) {
    return Item::windowBasedCrop(sources.windowID, {.showsCursor = false}, filename);
}
Item webcamItem(const RecordingSources& sources, const std::string& filename, Handout&) {
    return Item::webcam(sources.microphoneID, sources.cameraID, filename);
}
Item microphoneItem(const RecordingSources& sources, const std::string& filename, Handout&) {
    return Item::microphone(sources.microphoneID, filename);
}
Item streamItem(const RecordingSources& sources, const std::string&, Handout& handout) {
    return Item::_microphone(sources.microphoneID, handout.callback());
}
Item systemAudioItem(const RecordingSources&, const std::string& filename, Handout&) {
    return Item::systemAudio(std::set<ZVSystemAudioExcludeOptions>(), filename);
}
Item applicationAudioItem(const RecordingSources& sources, const std::string& filename, Handout&) {
    return Item::applicationAudio(sources.applicationID, filename);
}
Item phoneItem(const RecordingSources& sources, const std::string& filename, Handout&) {
    return Item::appleDeviceStaticOrientation(sources.phoneID, filename);
}

/// In the order of `Recorded`.
const std::vector<Kind>& kinds() {
    static const std::vector<Kind> all{
        {"Display", displayItem, {FileType::screen}, 1},
        {"InputEvents", inputItem, {FileType::screen, FileType::mouse}, 2},
        {"TopWindows", topWindowItem, {FileType::screen, FileType::topWindow}, 2, windowListDelay},
        {"WindowCrop", cropItem, {FileType::screen}, 1},
        {"Webcam", webcamItem, {FileType::webcam}, 2},
        {"Microphone", microphoneItem, {FileType::audio}, 1},
        {"MicrophoneStream", streamItem, {}, 1},
        {"SystemAudio", systemAudioItem, {FileType::systemAudio}, 1},
        {"ApplicationAudio", applicationAudioItem, {FileType::systemAudio}, 1},
        {"Phone", phoneItem, {FileType::appleDevice}, 2},
    };
    return all;
}

const Kind& kindOf(Recorded recorded) {
    return kinds().at(static_cast<std::size_t>(recorded));
}

/// A recording of one kind of source, as often as is wanted, and what comes of it.
class Recording {
  public:
    Recording(RecordingBackend& backend, const Kind& kind, std::size_t copies = 1)
        : backend_(backend), kind_(kind), handouts_(copies) {
        std::vector<Item> items;
        for (std::size_t copy = 0; copy < copies; ++copy) {
            items.push_back(kind.item(backend.sources(), std::to_string(copy) + ".mov", handouts_[copy]));
        }
        recorder_.emplace(std::move(items), directory_.path() / "bundle",
                          ZVRecorder::Settings{.updatesUserPreferred = false},
                          [](const ZVRecorder::AbortReason& reason) { ADD_FAILURE() << reason.logErrorDescription(); });
    }

    void prepare() { backend_.run(recorder_->prepare()); }
    void start() {
        prepare();
        backend_.run(recorder_->start());
    }
    void stop() { result_ = backend_.run(recorder_->stop()); }
    /// The host drops it in the middle.
    void abandon() {
        recordFrom_ = recorder_->statistics().recordFrom;
        recorder_.reset();
    }

    double recordFrom() const { return recorder_ ? recorder_->statistics().recordFrom : recordFrom_; }
    double recordUntil() const { return recorder_->statistics().recordUntil; }
    double length() const { return recordUntil() - recordFrom(); }
    const ZVRecorder::Result& result() const { return result_; }

    std::vector<std::filesystem::path> filesInBundle() const {
        std::vector<std::filesystem::path> files;
        for (const auto& entry : std::filesystem::directory_iterator(directory_.path() / "bundle")) {
            files.push_back(entry.path());
        }
        return files;
    }

    /// All that the manifest lists, and all that was handed out.
    std::vector<RecordedTrack> tracks() const {
        std::vector<RecordedTrack> all;
        for (const ZVBundleInfo::FileAsset& file : result_.bundleInfo.files) {
            std::ranges::move(testing::tracksOfFile(result_.bundleURL / file.filename), std::back_inserter(all));
        }
        for (const Handout& handout : handouts_) {
            if (kind_.files.empty()) {
                all.push_back(testing::trackOfSamples(handout.samples(), recordFrom(), recordUntil()));
            }
        }
        return all;
    }

    std::vector<std::vector<CMSampleBuffer>> handedOut() const {
        std::vector<std::vector<CMSampleBuffer>> all;
        std::ranges::transform(handouts_, std::back_inserter(all), &Handout::samples);
        return all;
    }

    /// Every file is there, and lasts from the start to the stop.
    void expectWhole() const {
        std::vector<FileType> types;
        for (const ZVBundleInfo::FileAsset& file : result_.bundleInfo.files) {
            types.push_back(file.type);
        }
        std::vector<FileType> expected;
        for (std::size_t copy = 0; copy < handouts_.size(); ++copy) {
            expected.insert(expected.end(), kind_.files.begin(), kind_.files.end());
        }
        EXPECT_EQ(types, expected);
        const std::vector<RecordedTrack> all = tracks();
        EXPECT_THAT(all, SizeIs(kind_.trackCount * handouts_.size()));
        for (const RecordedTrack& track : all) {
            EXPECT_NEAR(track.begin, 0, track.grain + 1e-6) << track;
            EXPECT_NEAR(track.end.value_or(length()), length(), track.grain + 1e-6) << track;
        }
    }

    void expectInPlace(const Clap& clap, const RecordedTrack& track) const {
        ASSERT_TRUE(track.event) << track;
        EXPECT_GT(*track.event, clap.earliest - recordFrom() - backend_.tolerance()) << track;
        EXPECT_LT(*track.event, clap.latest - recordFrom() + backend_.tolerance() + kind_.delay) << track;
    }
    void expectInPlace(const Clap& clap) const {
        for (const RecordedTrack& track : tracks()) {
            expectInPlace(clap, track);
        }
    }

  private:
    RecordingBackend& backend_;
    const Kind& kind_;
    TemporaryDirectory directory_;
    std::vector<Handout> handouts_;
    std::optional<ZVRecorder> recorder_;
    double recordFrom_ = 0;  // of a recorder that was abandoned
    ZVRecorder::Result result_;
};

}  // namespace

std::vector<RecordingCase> recordingCases(std::unique_ptr<RecordingBackend> (*makeBackend)(),
                                          const std::vector<Recorded>& recorded) {
    std::vector<RecordingCase> cases;
    std::ranges::transform(recorded, std::back_inserter(cases), [makeBackend](Recorded kind) {
        return RecordingCase{makeBackend, kind};
    });
    return cases;
}

std::string nameOfRecordingCase(const ::testing::TestParamInfo<RecordingCase>& info) {
    return kindOf(info.param.recorded).name;
}

TEST_P(RecordingConformance, EveryFileLastsFromTheStartToTheStopWithAllInItsPlace) {
    Recording recording(*backend_, kindOf(GetParam().recorded));
    recording.start();
    backend_->pass(0.2);
    const Clap clap = backend_->clap();
    backend_->pass(0.3);
    recording.stop();
    recording.expectWhole();
    recording.expectInPlace(clap);
}

TEST_P(RecordingConformance, AMomentIsRecordedWithItsLength) {
    Recording recording(*backend_, kindOf(GetParam().recorded));
    recording.start();
    backend_->pass(0.02);
    recording.stop();
    recording.expectWhole();
}

TEST_P(RecordingConformance, ARecordingThatIsStoppedBeforeItsStartLeavesNothing) {
    Recording recording(*backend_, kindOf(GetParam().recorded));
    recording.prepare();
    backend_->pass(0.1);
    recording.stop();
    EXPECT_EQ(recording.result().bundleInfo, ZVBundleInfo::empty);
    EXPECT_THAT(recording.filesInBundle(), IsEmpty());
    EXPECT_THAT(recording.handedOut(), ElementsAre(IsEmpty()));
}

TEST_P(RecordingConformance, ARecorderThatIsDestroyedInTheMiddleLeavesFilesThatCanBeRead) {
    constexpr double recorded = 2;
    Recording recording(*backend_, kindOf(GetParam().recorded));
    recording.start();
    backend_->pass(0.2);
    const Clap clap = backend_->clap();
    backend_->pass(recorded);
    recording.abandon();
    backend_->pass(0.2);
    const Kind& kind = kindOf(GetParam().recorded);
    EXPECT_THAT(recording.filesInBundle(), SizeIs(kind.files.size())) << "there is no manifest";
    std::size_t trackCount = 0;
    for (const auto& file : recording.filesInBundle()) {
        for (const RecordedTrack& track : testing::tracksOfFile(file)) {
            recording.expectInPlace(clap, track);
            EXPECT_GT(track.end.value_or(recorded), recorded - 1) << track;
            ++trackCount;
        }
    }
    EXPECT_EQ(trackCount, kind.files.empty() ? 0 : kind.trackCount);
    const auto handedOut = recording.handedOut();
    backend_->pass(0.2);
    EXPECT_EQ(recording.handedOut().at(0).size(), handedOut.at(0).size());
}

TEST_P(RecordingConformance, TwoRecordersAtOnceHaveTheirOwnStartAndStop) {
    Recording one(*backend_, kindOf(GetParam().recorded));
    Recording other(*backend_, kindOf(GetParam().recorded));
    one.start();
    backend_->pass(0.1);
    other.start();
    backend_->pass(0.1);
    const Clap clap = backend_->clap();
    backend_->pass(0.2);
    one.stop();
    backend_->pass(0.1);
    other.stop();
    EXPECT_GT(other.recordUntil(), one.recordUntil());
    for (const Recording* recording : {&one, &other}) {
        recording->expectWhole();
        recording->expectInPlace(clap);
    }
}

TEST_P(RecordingConformance, ASourceThatStandsTwiceInASchemaIsRecordedTwice) {
    Recording recording(*backend_, kindOf(GetParam().recorded), 2);
    recording.start();
    backend_->pass(0.1);
    const Clap clap = backend_->clap();
    backend_->pass(0.2);
    recording.stop();
    recording.expectWhole();
    recording.expectInPlace(clap);
}

}  // namespace zorvane::test
