#include <sstream>

#include "FuzzTarget.hpp"
#include "Zorvane/Internal/JSONReader.hpp"
#include "Zorvane/Internal/StreamingJSONReader.hpp"

namespace {

/// How many elements the text has; nothing if it is refused.
std::optional<int> countElements(std::string_view text) {
    return zorvane::fuzz::attempt([text] {
        int count = 0;
        std::istringstream stream{std::string(text)};
        zorvane::forEachElement(stream, "text", [&count](const zorvane::JSONReader&) { ++count; });
        return count;
    });
}

/// The layout in which a text may lack its end.
bool isCutOff(std::string_view text) {
    return text.starts_with("[\n") || text == "[" || text.empty();
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto text = zorvane::fuzz::asText(data, size);
    const auto count = countElements(text);
    const auto wholeCount = zorvane::fuzz::attempt(
        [text] { return static_cast<int>(zorvane::JSONDocument(text).root().elements().size()); });
    if (wholeCount) {
        zorvane::fuzz::require(count == wholeCount, "a whole array has the elements that it has when read at once");
    } else if (count) {
        zorvane::fuzz::require(isCutOff(text), "only a file that is cut off is read in part");
    }
    return 0;
}
