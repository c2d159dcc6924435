// A camera's pictures in PipeWire's memory: where they stand, when they were taken, and whose turn it is.
#include <gtest/gtest.h>

#include <thread>

#include "Zorvane/Platform/Linux/PipeWire/PipeWireCaptureCards.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWirePictureExchange.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWirePictureTime.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWirePlanes.hpp"

namespace zorvane {
namespace {

using enum AVVideoSourceFormat;
using namespace std::chrono_literals;

TEST(PipeWirePicturesTest, APictureIsReadOnlyWhereItIsThereWhole) {
    constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
    constexpr std::uint32_t highest = std::numeric_limits<std::uint32_t>::max();
    struct Row {
        const char* what;
        AVVideoSourceFormat format;
        CMVideoDimensions size;
        std::uint32_t offset, filled;
        std::int32_t bytesPerRow;
        bool isWhole;
        std::size_t planes = 1;
    };
    const Row rows[] = {
        {"rows close together", yuyv, {16, 8}, 0, 256, 0, true},
        {"rows apart, the last one short", yuyv, {16, 8}, 8, 40 * 7 + 32, 40, true},
        {"a byte is missing", yuyv, {16, 8}, 8, 40 * 7 + 31, 40, false},
        {"odd width", yuyv, {15, 8}, 0, 256, 32, true},
        {"rows too short", yuyv, {16, 8}, 0, 1024, 31, false},
        {"backwards", yuyv, {16, 8}, 0, 1024, -32, false},
        {"far backwards", yuyv, {16, 8}, 0, 1024, lowest, false},
        {"endless rows", yuyv, {16, 8}, 0, 1024, 0x7FFFFFFF, false},
        {"filled beyond the memory", yuyv, {16, 8}, 900, 256, 32, false},
        {"filled without end", yuyv, {16, 8}, 16, highest, 32, false},
        {"an offset goes round", yuyv, {16, 8}, 1024 + 64, 256, 32, true},
        {"empty", yuyv, {16, 8}, 0, 0, 32, false},
        {"planes behind each other", nv12, {16, 8}, 0, 192, 16, true, 2},
        {"its colours are missing", nv12, {16, 8}, 0, 191, 16, false, 2},
        {"three planes, odd", i420, {15, 7}, 0, 16 * 7 + 8 * 4 * 2, 16, true, 3},
        {"a last plane cut off", i420, {16, 8}, 0, 191, 16, false, 3},
        {"a file", jpeg, {16, 8}, 4, 10, 0, true},
        {"an empty file", jpeg, {16, 8}, 4, 0, 0, false},
        {"no size", yuyv, {0, 8}, 0, 256, 0, false},
        {"larger than the memory", rgbx, {16384, 16384}, 0, 1024, 0, false},
    };
    const std::vector<std::byte> memory(1024);
    for (const Row& row : rows) {
        PipeWirePieces pieces;
        pieces[0] = {.memory = memory, .offset = row.offset, .size = row.filled, .bytesPerRow = row.bytesPerRow};
        const auto picture = pictureIn(pieces, 1, row.format, row.size);
        ASSERT_EQ(picture.has_value(), row.isWhole) << row.what;
        for (std::size_t plane = 0; picture && plane < row.planes; ++plane) {
            const auto bytes = picture->planes[plane];
            EXPECT_FALSE(bytes.empty()) << row.what;
            EXPECT_TRUE(bytes.data() >= memory.data() && bytes.data() + bytes.size() <= memory.data() + memory.size());
        }
    }
    EXPECT_FALSE(pictureIn({}, 0, yuyv, {16, 8}));
    EXPECT_FALSE(pictureIn({}, 1, yuyv, {16, 8})) << "memory that couldn't be mapped";
}

TEST(PipeWirePicturesTest, PlanesMayStandInPiecesOfTheirOwn) {
    const std::vector<std::byte> luma(16 * 8);
    const std::vector<std::byte> chroma(20 * 4);
    PipeWirePieces pieces;
    pieces[0] = {.memory = luma, .size = 16 * 8, .bytesPerRow = 16};
    pieces[1] = {.memory = chroma, .size = 20 * 4, .bytesPerRow = 20};
    const auto picture = pictureIn(pieces, 2, nv12, {16, 8});
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->planes[1].data(), chroma.data());
    EXPECT_EQ(picture->bytesPerRow[1], 20u);
    pieces[1].size = 70;
    EXPECT_FALSE(pictureIn(pieces, 2, nv12, {16, 8}));
}

TEST(PipeWirePicturesTest, ATimeIsTheProducersIfItCanBe) {
    constexpr auto now = std::chrono::nanoseconds(1000s);
    EXPECT_EQ(timeOfPicture({.stamp = now - 30ms, .cycle = now - 1ms, .arrival = now}), now - 30ms);
    EXPECT_EQ(timeOfPicture({.stamp = 5s, .cycle = now - 1ms, .arrival = now}), now - 1ms) << "a clock of its own";
    EXPECT_EQ(timeOfPicture({.stamp = -1ns, .cycle = now - 1ms, .arrival = now}), now - 1ms);
    EXPECT_EQ(timeOfPicture({.stamp = now + 1h, .cycle = 0ns, .arrival = now}), now);
    EXPECT_EQ(timeOfPicture({.stamp = std::nullopt, .cycle = now - 1ms, .arrival = now}), now - 1ms);
}

pw_buffer* buffer(std::uintptr_t number) {
    return reinterpret_cast<pw_buffer*>(number * 64);
}

TEST(PipeWirePicturesTest, WhereThereIsNoRoomTheOldestPictureGoesBack) {
    PipeWirePictureExchange exchange;
    PipeWirePictureExchange::Buffers buffers;
    exchange.setCapacity(2);
    for (const std::uintptr_t number : {1, 2, 3, 4}) {
        exchange.put({.buffer = buffer(number)});
    }
    const auto dropped = exchange.takeBack(buffers);
    EXPECT_EQ(std::vector(dropped.begin(), dropped.end()), (std::vector{buffer(1), buffer(2)}));
    EXPECT_EQ(exchange.takeDropCount(), 2u);
    EXPECT_EQ(exchange.take()->buffer, buffer(3));
    EXPECT_TRUE(exchange.takeBack(buffers).empty()) << "it is being converted";
    exchange.finish();
    EXPECT_EQ(exchange.takeBack(buffers).front(), buffer(3));
    EXPECT_EQ(exchange.take()->buffer, buffer(4));

    // The server takes its buffers away in the middle of that.
    std::thread server([&] { exchange.withdraw(); });
    exchange.finish();
    server.join();
    EXPECT_TRUE(exchange.takeBack(buffers).empty());
    exchange.end();
    EXPECT_FALSE(exchange.take());
}

TEST(PipeWirePicturesTest, ACaptureCardIsAPairAndAWebcamIsNot) {
    struct Row {
        const char* what;
        PipeWireProperties camera, microphone;
        bool isCard;
    };
    const std::string usb = "pci-0000:00:14.0-usb-0:2:1.";
    const Row rows[] = {
        {"one device", {{"device.id", "40"}}, {{"device.id", "40"}}, true},
        {"two devices", {{"device.id", "40"}}, {{"device.id", "41"}}, false},
        {"a card on USB",
         {{"device.bus-path", usb + "0"}, {"node.description", "USB3.0 HDMI Capture (V4L2)"}},
         {{"device.bus-path", usb + "3"}},
         true},
        {"a webcam on USB",
         {{"device.bus-path", usb + "0"}, {"node.description", "HD Webcam"}},
         {{"device.bus-path", usb + "3"}},
         false},
        {"a card, and a microphone in another socket",
         {{"device.bus-path", usb + "0"}, {"node.description", "HDMI Capture"}},
         {{"device.bus-path", "pci-0000:00:14.0-usb-0:21:1.0"}},
         false},
        {"cards that are no USB devices",
         {{"device.bus-path", "pci-0000:00:1f.3"}, {"node.description", "HDMI Capture"}},
         {{"device.bus-path", "pci-0000:00:1f.3"}},
         false},
        {"nothing is known", {}, {}, false},
    };
    for (const Row& row : rows) {
        const std::vector<PipeWireSource> sources{{.mediaType = AVMediaType::audio, .node = row.microphone},
                                                  {.mediaType = AVMediaType::video, .node = row.camera},
                                                  {.mediaType = AVMediaType::video, .node = row.camera}};
        const auto cards = captureCardsIn(sources);
        ASSERT_EQ(cards.size(), row.isCard ? 1u : 0u) << row.what;
        EXPECT_TRUE(cards.empty() || (cards[0].camera == 1 && cards[0].microphone == 0));
    }
}

}  // namespace
}  // namespace zorvane
