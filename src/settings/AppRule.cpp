#include "settings/AppRule.h"

#include <array>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <random>
#include <string_view>
#include <utility>

namespace lumo {

namespace {

using Json = nlohmann::ordered_json;

Json toJson(const AppRule &rule) {
    return {{"id", rule.id},
            {"bundleID", rule.bundleID},
            {"displayName", rule.displayName},
            {"isEnabled", rule.isEnabled}};
}

std::optional<AppRule> fromJson(const Json &json) {
    if (!json.is_object()) {
        return std::nullopt;
    }
    const auto read = [&json](const char *key, auto &target) {
        using Target = std::remove_reference_t<decltype(target)>;
        const auto found = json.find(key);
        if (found == json.end()) {
            return false;
        }
        const auto *value = found->template get_ptr<const Target *>();
        if (value != nullptr) {
            target = *value;
        }
        return value != nullptr;
    };
    AppRule rule;
    if (read("id", rule.id) && read("bundleID", rule.bundleID) &&
        read("displayName", rule.displayName) && read("isEnabled", rule.isEnabled)) {
        return rule;
    }
    return std::nullopt;
}

std::optional<Bytes> encode(const Json &json) {
    try {
        const auto text = json.dump();
        return Bytes(text.begin(), text.end());
    } catch (const Json::type_error &) { // a string that is not UTF-8
        return std::nullopt;
    }
}

Json decode(const Bytes &text) {
    // As characters: newer C++ libraries have no traits for other bytes.
    return Json::parse(std::string(text.begin(), text.end()), nullptr, false);
}

} // namespace

std::vector<AppRule> makeRules(const std::vector<PresetRule> &presets) {
    std::vector<AppRule> rules;
    rules.reserve(presets.size());
    for (const auto &preset : presets) {
        rules.push_back(
            {makeUUID(), std::string(preset.bundleID), std::string(preset.displayName), true});
    }
    return rules;
}

std::string makeUUID() {
    std::random_device random;
    std::array<std::uint32_t, 4> bits{random(), random(), random(), random()};
    bits[1] = (bits[1] & 0xFFFF0FFFU) | 0x00004000U; // version 4: random
    bits[2] = (bits[2] & 0x3FFFFFFFU) | 0x80000000U; // the variant of RFC 4122
    constexpr std::string_view form = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
    std::string text(form);
    unsigned digit = 0;
    for (auto &character : text) {
        if (character == 'x') {
            const auto nibble = (bits.at(digit / 8) >> (28 - 4 * (digit % 8))) & 0xFU;
            character = "0123456789ABCDEF"[nibble];
            ++digit;
        }
    }
    return text;
}

std::optional<Bytes> encodeRule(const AppRule &rule) {
    return encode(toJson(rule));
}

std::optional<AppRule> decodeRule(const Bytes &json) {
    return fromJson(decode(json));
}

std::optional<Bytes> encodeRules(const std::vector<AppRule> &rules) {
    auto array = Json::array();
    for (const auto &rule : rules) {
        array.push_back(toJson(rule));
    }
    return encode(array);
}

std::optional<std::vector<AppRule>> decodeRules(const Bytes &json) {
    const auto array = decode(json);
    if (!array.is_array()) {
        return std::nullopt;
    }
    std::vector<AppRule> rules;
    for (const auto &element : array) {
        auto rule = fromJson(element);
        if (!rule) {
            return std::nullopt;
        }
        rules.push_back(std::move(*rule));
    }
    return rules;
}

} // namespace lumo

std::size_t std::hash<lumo::AppRule>::operator()(const lumo::AppRule &rule) const noexcept {
    const std::hash<std::string> hashText;
    std::size_t result = std::hash<bool>{}(rule.isEnabled);
    for (const auto *text : {&rule.id, &rule.bundleID, &rule.displayName}) {
        result = result * 31 + hashText(*text);
    }
    return result;
}
