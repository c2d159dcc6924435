// Property lists: the messages that phones and their service exchange.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace zorvane {

/// A dictionary, or nothing. Keys that are missing, or of another type than asked for, read as nothing.
class PropertyList {
  public:
    PropertyList();
    PropertyList(PropertyList&& other) noexcept : node_(std::exchange(other.node_, nullptr)) {}
    PropertyList& operator=(PropertyList&& other) noexcept {
        std::swap(node_, other.node_);
        return *this;
    }
    ~PropertyList();

    /// Reads the XML or the binary form. What can't be read becomes an empty dictionary.
    static PropertyList parse(std::span<const std::byte> bytes);
    std::string xml() const;

    PropertyList& set(const char* key, std::string_view text);
    PropertyList& set(const char* key, std::uint64_t number);

    std::optional<std::string> text(const char* key) const;
    std::optional<std::uint64_t> number(const char* key) const;
    std::optional<std::string> data(const char* key) const;
    /// A copy of a dictionary inside; an empty one if there is none.
    PropertyList dictionary(const char* key) const;
    /// Calls `visit(dictionary)` with a copy of each element of an array inside.
    void forEach(const char* key, const std::function<void(const PropertyList&)>& visit) const;

  private:
    explicit PropertyList(void* node) : node_(node) {}

    void* node_;  // a plist_t
};

}  // namespace zorvane
