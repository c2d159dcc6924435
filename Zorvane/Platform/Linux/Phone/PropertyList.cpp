#include "Zorvane/Platform/Linux/Phone/PropertyList.hpp"

#include <plist/plist.h>

#include <cstdlib>

namespace zorvane {

void FreePropertyList::operator()(void* node) const {
    plist_free(node);
}

PropertyList parsePropertyList(const char* bytes, std::uint32_t size) {
    // The library's own choice between the two takes other arguments from one release to the next.
    plist_t node = nullptr;
    if (plist_is_binary(bytes, size)) {
        plist_from_bin(bytes, size, &node);
    } else {
        plist_from_xml(bytes, size, &node);
    }
    return PropertyList(node);
}

std::optional<std::string> textOf(const PropertyList& dictionary, const char* key) {
    const bool isDictionary = dictionary && plist_get_node_type(dictionary.get()) == PLIST_DICT;
    plist_t value = isDictionary ? plist_dict_get_item(dictionary.get(), key) : nullptr;
    if (!value || plist_get_node_type(value) != PLIST_STRING) {
        return std::nullopt;
    }
    char* text = nullptr;
    plist_get_string_val(value, &text);
    const std::unique_ptr<char, decltype(&std::free)> owner(text, &std::free);
    return text ? std::optional<std::string>(text) : std::nullopt;
}

}  // namespace zorvane
