#include "Zorvane/Internal/JSONReader.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

#include "Zorvane/Internal/JSONNesting.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"

namespace zorvane {
namespace {

/// A coding path as a reader would say it.
std::string spoken(std::string_view path) {
    return path.starts_with('.') ? std::string(path.substr(1)) : fmt::format("document{}", path);
}

[[noreturn]] void failAt(const std::string& path, std::string_view problem, std::int64_t code) {
    throw NSError(NSCocoaErrorDomain, code, {fmt::format("{}: {}", spoken(path), problem), nullptr, {}, path});
}

/// True if brackets are open inside each other deeper than `maxDepth` at any place up to the first fault.
bool nestsTooDeep(std::string_view text) {
    JSONNesting nesting;
    return std::ranges::any_of(text, [&nesting](char character) {
        nesting.advance(character);
        return nesting.depth() > JSONDocument::maxDepth;
    });
}

/// What the parser lets pass: a mark at the beginning, also of a part of a larger text; whatever stands behind a zero
/// byte; any depth.
std::optional<std::string> faultThatParserPasses(std::string_view text) {
    if (text.starts_with("\xEF\xBB\xBF")) {
        return "begins with a byte order mark";
    }
    if (const std::size_t zero = text.find('\0'); zero != text.npos) {
        return fmt::format("not JSON at byte {}", zero + 1);
    }
    if (nestsTooDeep(text)) {
        return fmt::format("nests deeper than {} levels", JSONDocument::maxDepth);
    }
    return std::nullopt;
}

}  // namespace

JSONReader JSONReader::member(std::string_view key) const {
    const nlohmann::json& members = object();
    const auto found = members.find(key);
    if (found == members.end()) {
        failAt(path_, fmt::format("missing key \"{}\"", key), NSCoderValueNotFoundError);
    }
    return child(key, *found);
}

std::optional<JSONReader> JSONReader::optionalMember(std::string_view key) const {
    const nlohmann::json& members = object();
    const auto found = members.find(key);
    if (found == members.end() || found->is_null()) {
        return std::nullopt;
    }
    return child(key, *found);
}

std::vector<JSONReader> JSONReader::elements() const {
    if (!value_->is_array()) {
        fail("not an array");
    }
    std::vector<JSONReader> readers;
    readers.reserve(value_->size());
    for (const nlohmann::json& element : *value_) {
        readers.push_back(JSONReader(element, fmt::format("{}[{}]", path_, readers.size())));
    }
    return readers;
}

std::string JSONReader::string() const {
    if (!value_->is_string()) {
        fail("not a string");
    }
    return value_->get<std::string>();
}

bool JSONReader::boolean() const {
    if (!value_->is_boolean()) {
        fail("not a boolean");
    }
    return value_->get<bool>();
}

double JSONReader::number() const {
    if (!value_->is_number()) {
        fail("not a number");
    }
    return value_->get<double>();
}

std::int64_t JSONReader::integerWithin(std::int64_t lowest, std::int64_t highest) const {
    if (!value_->is_number_integer()) {
        fail("not a whole number");
    }
    constexpr std::uint64_t largest = std::numeric_limits<std::int64_t>::max();
    const bool exceeds64 = value_->is_number_unsigned() && value_->get<std::uint64_t>() > largest;
    const auto value = exceeds64 ? 0 : value_->get<std::int64_t>();
    if (exceeds64 || value < lowest || value > highest) {
        fail(fmt::format("{} isn't between {} and {}", value_->dump(), lowest, highest));
    }
    return value;
}

void JSONReader::failUnknownValue() const {
    constexpr auto replaceInvalid = nlohmann::json::error_handler_t::replace;
    fail("unknown value " + value_->dump(-1, ' ', false, replaceInvalid));
}

void JSONReader::fail(std::string_view problem) const {
    failAt(path_, problem, NSCoderReadCorruptError);
}

const nlohmann::json& JSONReader::object() const {
    if (!value_->is_object()) {
        fail("not an object");
    }
    return *value_;
}

JSONReader JSONReader::child(std::string_view key, const nlohmann::json& value) const {
    return {value, fmt::format("{}.{}", path_, key)};
}

JSONDocument::JSONDocument(std::string_view text, std::string path) : path_(std::move(path)) {
    if (const auto fault = faultThatParserPasses(text)) {
        failAt(path_, *fault, NSCoderReadCorruptError);
    }
    try {
        value_ = std::make_unique<const nlohmann::json>(nlohmann::json::parse(text));
    } catch (const nlohmann::json::parse_error& error) {
        failAt(path_, fmt::format("not JSON at byte {}", error.byte), NSCoderReadCorruptError);
    } catch (const nlohmann::json::out_of_range&) {
        failAt(path_, "holds a number that no double can hold", NSCoderReadCorruptError);
    }
}

JSONDocument::~JSONDocument() = default;

JSONReader JSONDocument::root() const {
    return {*value_, path_};
}

}  // namespace zorvane
