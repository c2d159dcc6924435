// Runs a fuzz target where there is no fuzzer: on the files of a corpus, and on what comes of changing them at random.
// The same seed gives the same inputs in the same order.
//
//     zorvane_fuzz_InputEvent CORPUS SEED SECONDS [LAST_INPUT]
//
// LAST_INPUT gets each input before it runs, so that it holds the one that ended the program.
#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "FuzzTarget.hpp"

namespace {

using Random = std::mt19937_64;

// What a change at random hardly hits upon.
constexpr auto tokens = std::to_array<std::string_view>({
    "null",
    "true",
    "-",
    "0",
    "-0",
    "1e999",
    "1e308",
    "9223372036854775808",
    "-9223372036854775809",
    "4294967296",
    "0.5",
    "\"\"",
    "\"NaN\"",
    "\"+infinity\"",
    "\"type\"",
    "\\u0000",
    "\\ud800",
    "\\",
    "\"",
    "{",
    "}",
    "[",
    "]",
    "[[[[[[[[",
    "{}",
    "[]",
    ":",
    ",",
    ",\n",
    "\n",
    "\n]",
    "[\n",
    "\xFF",
    "\xC3",
    "\xEF\xBB\xBF",
    "//",
});

std::size_t below(Random& random, std::size_t end) {
    return random() % end;
}

std::string_view anyPart(Random& random, std::string_view text) {
    const std::size_t begin = below(random, text.size() + 1);
    return text.substr(begin, below(random, text.size() - begin + 1));
}

void change(Random& random, std::string& input, const std::vector<std::string>& corpus) {
    const std::size_t place = below(random, input.size() + 1);
    const std::string other(anyPart(random, corpus[below(random, corpus.size())]));
    switch (below(random, 7)) {
        case 0:
            input.insert(place, 1, static_cast<char>(random()));
            break;
        case 1:
            input.replace(place, 1, 1, static_cast<char>(random()));
            break;
        case 2:
            input.erase(place, below(random, 8));
            break;
        case 3:
            input.resize(place);
            break;
        case 4:
            input.replace(place, below(random, 8), tokens[below(random, tokens.size())]);
            break;
        case 5:
            input.insert(place, other);
            break;
        default:
            input.replace(place, below(random, 32), other);
    }
}

std::vector<std::string> readCorpus(const std::filesystem::path& directory) {
    std::vector<std::filesystem::path> paths;
    std::ranges::copy(std::filesystem::directory_iterator(directory), std::back_inserter(paths));
    std::ranges::sort(paths);
    std::vector<std::string> corpus;
    for (const std::filesystem::path& path : paths) {
        std::ifstream file(path, std::ios::binary);
        corpus.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    return corpus;
}

void run(const std::string& input, const char* lastInput) {
    if (lastInput != nullptr) {
        std::ofstream(lastInput, std::ios::binary) << input;
    }
    // Its own allocation, so that a read beyond the end is seen.
    const std::vector<std::uint8_t> bytes(input.begin(), input.end());
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 4) {
        std::cerr << "usage: " << argv[0] << " CORPUS SEED SECONDS [LAST_INPUT]\n";
        return 2;
    }
    const std::vector<std::string> corpus = readCorpus(argv[1]);
    if (corpus.empty()) {
        std::cerr << argv[1] << ": no corpus\n";
        return 2;
    }
    const char* const lastInput = argc > 4 ? argv[4] : nullptr;
    for (const std::string& input : corpus) {
        run(input, lastInput);
    }
    Random random(std::stoull(argv[2]));
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(std::stod(argv[3]));
    std::size_t count = corpus.size();
    for (; std::chrono::steady_clock::now() < end; ++count) {
        std::string input = corpus[below(random, corpus.size())];
        for (std::size_t changes = 1 + below(random, 4); changes > 0; --changes) {
            change(random, input, corpus);
        }
        run(input, lastInput);
    }
    std::cout << count << " inputs\n";
    return 0;
}
