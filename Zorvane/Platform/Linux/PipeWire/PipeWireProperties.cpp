#include "Zorvane/Platform/Linux/PipeWire/PipeWireProperties.hpp"

#include <spa/utils/dict.h>
#include <spa/utils/json.h>

#include <algorithm>
#include <cstring>

#include "Zorvane/Platform/Foundation/UTF8.hpp"

namespace zorvane {
namespace {

bool isControl(char letter) {
    return static_cast<unsigned char>(letter) < 0x20 || letter == 0x7F;
}

}  // namespace

PipeWireProperties pipeWireProperties(const spa_dict* dictionary) {
    PipeWireProperties properties;
    for (std::uint32_t index = 0; dictionary && index < dictionary->n_items; ++index) {
        const spa_dict_item& item = dictionary->items[index];
        if (item.key && item.value) {
            properties.insert_or_assign(item.key, item.value);
        }
    }
    return properties;
}

const std::string& rawValue(const PipeWireProperties& properties, std::string_view key) {
    static const auto& none = *new std::string;  // never destroyed: threads may ask while the process exits
    const auto found = properties.find(key);
    return found == properties.end() ? none : found->second;
}

std::string_view rawValue(const spa_dict* dictionary, const char* key) {
    const char* value = dictionary ? spa_dict_lookup(dictionary, key) : nullptr;
    return value ? value : std::string_view();
}

std::string textValue(const PipeWireProperties& properties, std::string_view key) {
    std::string text = repairedUTF8(rawValue(properties, key));
    std::ranges::replace_if(text, isControl, ' ');
    text.erase(text.find_last_not_of(' ') + 1);
    text.erase(0, text.find_first_not_of(' '));
    return text;
}

std::string nameInMetadata(const std::string& value) {
    spa_json text;
    spa_json object;
    spa_json_init(&text, value.data(), value.size());
    if (spa_json_enter_object(&text, &object) <= 0) {
        return {};
    }
    std::string word(value.size() + 1, '\0');  // no word is longer than the whole
    const auto next = [&] { return spa_json_get_string(&object, word.data(), static_cast<int>(word.size())) > 0; };
    while (next()) {
        const bool isName = std::strcmp(word.c_str(), "name") == 0;
        if (!next()) {
            break;
        }
        if (isName) {
            return word.c_str();
        }
    }
    return {};
}

}  // namespace zorvane
