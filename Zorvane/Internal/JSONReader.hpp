// Reads JSON into records; what is wrong is told with its path.
#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json_fwd.hpp>

namespace zorvane {

/// One value of a `JSONDocument`, and where it stands. Valid while the document lives.
///
/// Every read that finds something else than what it asks for throws an `NSError` of `NSCocoaErrorDomain` whose text
/// is the path, ": " and what is wrong, such as `files[1].type: unknown value "x"`. The path of the whole document is
/// "document". The error's user info has the path too.
class JSONReader {
  public:
    /// The value of a required key of this object.
    JSONReader member(std::string_view key) const;
    /// The value of a key that may be absent; a null counts as absent.
    std::optional<JSONReader> optionalMember(std::string_view key) const;
    /// The elements of this array.
    std::vector<JSONReader> elements() const;

    std::string string() const;
    bool boolean() const;
    double number() const;
    /// A whole number that fits `Integer`.
    template <typename Integer>
    Integer integer() const {
        static_assert(sizeof(Integer) < sizeof(std::int64_t) || std::numeric_limits<Integer>::is_signed);
        return static_cast<Integer>(
            integerWithin(std::numeric_limits<Integer>::min(), std::numeric_limits<Integer>::max()));
    }

    /// Throws the error for a string value that isn't one of those expected.
    [[noreturn]] void failUnknownValue() const;
    /// Throws an error about this value.
    [[noreturn]] void fail(std::string_view problem) const;

  private:
    friend class JSONDocument;
    JSONReader(const nlohmann::json& value, std::string path) : value_(&value), path_(std::move(path)) {}

    std::int64_t integerWithin(std::int64_t lowest, std::int64_t highest) const;
    const nlohmann::json& object() const;
    JSONReader child(std::string_view key, const nlohmann::json& value) const;

    const nlohmann::json* value_;
    std::string path_;  ///< as `NSError` has it
};

/// A parsed JSON text.
class JSONDocument {
  public:
    /// What is nested deeper is refused, for the sake of code that follows a value down.
    static constexpr int maxDepth = 512;

    /// Throws an `NSError` of `NSCocoaErrorDomain` if the text isn't JSON. `path` is that of the text itself, if it is
    /// a part of a larger one.
    explicit JSONDocument(std::string_view text, std::string path = "");
    ~JSONDocument();
    JSONDocument(const JSONDocument&) = delete;
    JSONDocument& operator=(const JSONDocument&) = delete;

    JSONReader root() const;

  private:
    const std::string path_;
    std::unique_ptr<const nlohmann::json> value_;
};

}  // namespace zorvane
