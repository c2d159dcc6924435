// Makes JPEG files for tests.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace zorvane::testing {

/// Chroma of half the size, of half the width, and of all of it.
enum class JPEGChroma : std::uint8_t { half, halfWidth, full };

/// A picture of samples Y, Cb, Cr that use all levels, as good as JPEG can be, with the usual Huffman tables in it.
std::vector<std::byte> makeJPEG(int width, int height, JPEGChroma chroma,
                                const std::function<std::array<std::uint8_t, 3>(int x, int y)>& samplesAt);

/// The same file without its Huffman tables.
std::vector<std::byte> withoutHuffmanTables(const std::vector<std::byte>& file);

/// A picture of 8 x 8 pixels without chroma, all of level 228, without Huffman tables.
std::vector<std::byte> makeGreyJPEG();

}  // namespace zorvane::testing
