#include "Zorvane/Platform/Linux/Phone/PropertyList.hpp"

#include <plist/plist.h>

#include <cstdlib>

namespace zorvane {
namespace {

/// The value under a key if it has that type, else null.
plist_t find(plist_t dictionary, const char* key, plist_type type) {
    plist_t value = plist_dict_get_item(dictionary, key);
    return value && plist_get_node_type(value) == type ? value : nullptr;
}

/// The text that `get(value, &text)` gives out.
template <class Get>
std::string takeText(plist_t value, Get get) {
    char* text = nullptr;
    get(value, &text);
    std::string taken = text ? text : "";
    std::free(text);
    return taken;
}

}  // namespace

PropertyList::PropertyList() : node_(plist_new_dict()) {}

PropertyList::~PropertyList() {
    plist_free(node_);
}

PropertyList PropertyList::parse(std::span<const std::byte> bytes) {
    plist_t node = nullptr;
    plist_from_memory(reinterpret_cast<const char*>(bytes.data()), static_cast<std::uint32_t>(bytes.size()), &node);
    if (node && plist_get_node_type(node) == PLIST_DICT) {
        return PropertyList(node);
    }
    plist_free(node);
    return {};
}

std::string PropertyList::xml() const {
    char* text = nullptr;
    std::uint32_t size = 0;
    plist_to_xml(node_, &text, &size);
    std::string xml(text ? text : "", size);
    std::free(text);
    return xml;
}

PropertyList& PropertyList::set(const char* key, std::string_view text) {
    plist_dict_set_item(node_, key, plist_new_string(std::string(text).c_str()));
    return *this;
}

PropertyList& PropertyList::set(const char* key, std::uint64_t number) {
    plist_dict_set_item(node_, key, plist_new_uint(number));
    return *this;
}

std::optional<std::string> PropertyList::text(const char* key) const {
    plist_t value = find(node_, key, PLIST_STRING);
    return value ? std::optional(takeText(value, plist_get_string_val)) : std::nullopt;
}

std::optional<std::uint64_t> PropertyList::number(const char* key) const {
    plist_t value = find(node_, key, PLIST_UINT);
    std::uint64_t number = 0;
    if (value) {
        plist_get_uint_val(value, &number);
    }
    return value ? std::optional(number) : std::nullopt;
}

std::optional<std::string> PropertyList::data(const char* key) const {
    plist_t value = find(node_, key, PLIST_DATA);
    if (!value) {
        return std::nullopt;
    }
    std::uint64_t size = 0;
    const char* bytes = plist_get_data_ptr(value, &size);
    return std::string(bytes ? bytes : "", bytes ? size : 0);
}

PropertyList PropertyList::dictionary(const char* key) const {
    plist_t value = find(node_, key, PLIST_DICT);
    return value ? PropertyList(plist_copy(value)) : PropertyList();
}

void PropertyList::forEach(const char* key, const std::function<void(const PropertyList&)>& visit) const {
    plist_t array = find(node_, key, PLIST_ARRAY);
    const std::uint32_t count = array ? plist_array_get_size(array) : 0;
    for (std::uint32_t index = 0; index < count; ++index) {
        plist_t element = plist_array_get_item(array, index);
        if (plist_get_node_type(element) == PLIST_DICT) {
            visit(PropertyList(plist_copy(element)));
        }
    }
}

}  // namespace zorvane
