#include <gtest/gtest.h>

#include "Zorvane/Internal/Recorders/MasterPlaylist.hpp"

namespace zorvane {
namespace {

MediaPlaylist::Segment segment(std::string filename, CMTime duration, std::int64_t byteCount = 0) {
    return {.filename = std::move(filename), .decodeDuration = duration, .byteCount = byteCount};
}

MediaPlaylist videoPlaylist() {
    MediaPlaylist playlist;
    playlist.initializationSegmentFilename = "screen-video-0000.mp4";
    playlist.targetDuration = 6;
    playlist.segments = {segment("screen-video-0001.m4s", CMTime::make(6, 1), 750'000),
                         segment("screen-video-0002.m4s", CMTime::make(288'256, 48'000), 600'000),
                         segment("screen-video-0003.m4s", CMTime::make(1, 2), 100'000)};
    return playlist;
}

TEST(MediaPlaylistTest, GrowsAtItsEndUntilItIsClosed) {
    MediaPlaylist playlist = videoPlaylist();
    const std::string whole =
        "#EXTM3U\n"
        "#EXT-X-VERSION:7\n"
        "#EXT-X-TARGETDURATION:6\n"
        "#EXT-X-MEDIA-SEQUENCE:0\n"
        "#EXT-X-PLAYLIST-TYPE:EVENT\n"
        "#EXT-X-INDEPENDENT-SEGMENTS\n"
        "#EXT-X-MAP:URI=\"screen-video-0000.mp4\"\n"
        "#EXTINF:6.000000,\nscreen-video-0001.m4s\n"
        "#EXTINF:6.005333,\nscreen-video-0002.m4s\n"
        "#EXTINF:0.500000,\nscreen-video-0003.m4s\n"
        "#EXT-X-ENDLIST\n";
    EXPECT_EQ(playlist.text(MediaPlaylist::Ending::closed), whole);

    const std::string open = playlist.text(MediaPlaylist::Ending::open);
    EXPECT_TRUE(whole.starts_with(open));
    playlist.segments.pop_back();
    EXPECT_TRUE(open.starts_with(playlist.text(MediaPlaylist::Ending::open)));
}

TEST(MediaPlaylistTest, NamesAreURLsAndTitlesAreOneLine) {
    MediaPlaylist playlist;
    playlist.initializationSegmentFilename = "my \"talk\"-0000.mp4";
    playlist.segments = {segment("#1: café, 50%?-0001.m4s", CMTime::make(6, 1))};
    playlist.segments[0].title = "one,\ntwo";
    const std::string text = playlist.text(MediaPlaylist::Ending::open);
    EXPECT_NE(text.find("#EXT-X-MAP:URI=\"my%20%22talk%22-0000.mp4\"\n"), std::string::npos) << text;
    EXPECT_NE(text.find("#EXTINF:6.000000,one, two\n%231%3A%20caf%C3%A9%2C%2050%25%3F-0001.m4s\n"), std::string::npos)
        << text;
}

TEST(MediaPlaylistTest, ALostSegmentKeepsItsTime) {
    MediaPlaylist playlist = videoPlaylist();
    playlist.segments[1].isMissing = true;
    const std::string text = playlist.text(MediaPlaylist::Ending::open);
    EXPECT_NE(text.find("0001.m4s\n#EXT-X-GAP\n#EXTINF:6.005333,\nscreen-video-0002.m4s\n#EXTINF"), std::string::npos)
        << text;
}

TEST(MediaPlaylistTest, BitRatesAreThoseOfTheStandard) {
    MediaPlaylist playlist = videoPlaylist();
    EXPECT_EQ(playlist.peakBitRate(), 1'000'000) << "the last segment is too short to count alone";
    EXPECT_EQ(playlist.averageBitRate(), 927'605);
    playlist.segments = {segment("a", CMTime::make(1, 1), 1000)};
    EXPECT_EQ(playlist.peakBitRate(), 8000) << "all there is";
    playlist.segments.clear();
    EXPECT_EQ(playlist.peakBitRate(), 0);
}

class MasterPlaylistTest : public ::testing::Test {
  protected:
    MasterPlaylist master{.audioChannelsCount = 2,
                          .audioTrackName = "System Audio",
                          .audioCodecName = "mp4a.40.2",
                          .videoTrackName = "Screen Recording",
                          .videoCodecName = "avc1.42e00a",
                          .videoResolution = CMVideoDimensions{1920, 1080}};
    MediaPlaylistFile audio{"/bundle/screen-audio.m3u8", videoPlaylist()};
    MediaPlaylistFile video{"/bundle/my screen-video.m3u8", videoPlaylist()};
};

TEST_F(MasterPlaylistTest, VideoHasTheSoundAsItsRendition) {
    video.playlist.codecName = "avc1.640028";
    EXPECT_EQ(master.text(&audio, &video),
              "#EXTM3U\n"
              "#EXT-X-VERSION:7\n"
              "#EXT-X-INDEPENDENT-SEGMENTS\n"
              "#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID=\"audio\",NAME=\"System Audio\",DEFAULT=YES,AUTOSELECT=YES,"
              "CHANNELS=\"2\",URI=\"screen-audio.m3u8\"\n"
              "#EXT-X-MEDIA:TYPE=VIDEO,GROUP-ID=\"video\",NAME=\"Screen Recording\",DEFAULT=YES,AUTOSELECT=YES\n"
              "#EXT-X-STREAM-INF:BANDWIDTH=2000000,AVERAGE-BANDWIDTH=1855210,CODECS=\"avc1.640028,mp4a.40.2\","
              "AUDIO=\"audio\",VIDEO=\"video\",RESOLUTION=1920x1080\n"
              "my%20screen-video.m3u8\n")
        << "the codec that the media have counts, and where they don't tell, the one that was expected";
}

TEST_F(MasterPlaylistTest, OneStreamStandsAlone) {
    EXPECT_EQ(master.text(nullptr, &video),
              "#EXTM3U\n"
              "#EXT-X-VERSION:7\n"
              "#EXT-X-INDEPENDENT-SEGMENTS\n"
              "#EXT-X-MEDIA:TYPE=VIDEO,GROUP-ID=\"video\",NAME=\"Screen Recording\",DEFAULT=YES,AUTOSELECT=YES\n"
              "#EXT-X-STREAM-INF:BANDWIDTH=1000000,AVERAGE-BANDWIDTH=927605,CODECS=\"avc1.42e00a\","
              "VIDEO=\"video\",RESOLUTION=1920x1080\n"
              "my%20screen-video.m3u8\n");
    const MasterPlaylist microphone{
        .audioChannelsCount = 1, .audioTrackName = "My \"Mic\"", .audioCodecName = "mp4a.40.2"};
    EXPECT_EQ(microphone.text(&audio, nullptr),
              "#EXTM3U\n"
              "#EXT-X-VERSION:7\n"
              "#EXT-X-INDEPENDENT-SEGMENTS\n"
              "#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID=\"audio\",NAME=\"My 'Mic'\",DEFAULT=YES,AUTOSELECT=YES,"
              "CHANNELS=\"1\"\n"
              "#EXT-X-STREAM-INF:BANDWIDTH=1000000,AVERAGE-BANDWIDTH=927605,CODECS=\"mp4a.40.2\",AUDIO=\"audio\"\n"
              "screen-audio.m3u8\n");
}

}  // namespace
}  // namespace zorvane
