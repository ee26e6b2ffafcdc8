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

struct Preset {
    std::string_view bundleID;
    std::string_view displayName;
};

constexpr std::array whitelistPresets = std::to_array<Preset>({
    {"com.apple.Safari", "Safari"},
    {"com.google.Chrome", "Chrome"},
    {"com.google.Chrome.canary", "Chrome Canary"},
    {"com.brave.Browser", "Brave"},
    {"org.mozilla.firefox", "Firefox"},
    {"com.microsoft.edgemac", "Edge"},
    {"com.apple.iChat", "Messages"},
    {"com.apple.FaceTime", "FaceTime"},
    {"us.zoom.xos", "Zoom"},
    {"com.microsoft.teams", "Teams"},
    {"com.google.hangouts", "Hangouts"},
    {"com.slack.slack", "Slack"},
    {"com.hnc.Discord", "Discord"},
    {"com.apple.dt.Xcode", "Xcode"},
    {"com.jetbrains.intellij", "IntelliJ IDEA"},
    {"com.jetbrains.pycharm", "PyCharm"},
    {"com.jetbrains.WebStorm", "WebStorm"},
    {"com.microsoft.VSCode", "VS Code"},
    {"com.github.GitHubClient", "GitHub Desktop"},
    {"com.sublimetext.4", "Sublime Text"},
    {"com.adobe.Photoshop", "Photoshop"},
    {"com.adobe.illustrator", "Illustrator"},
    {"com.figma.Desktop", "Figma"},
    {"com.bohemiancoding.sketch3", "Sketch"},
    {"com.apple.iWork.Pages", "Pages"},
    {"com.microsoft.Word", "Word"},
    {"com.culturedcode.ThingsMac", "Things 3"},
    {"com.omnigroup.OmniFocus3.MacAppStore", "OmniFocus"},
    {"com.apple.Music", "Music"},
    {"com.spotify.client", "Spotify"},
});

constexpr std::array blacklistPresets = std::to_array<Preset>({
    {"com.apple.finder", "Finder"},
    {"com.apple.dock", "Dock"},
    {"com.apple.systempreferences", "System Settings"},
    {"com.apple.controlcenter", "Control Center"},
    {"com.apple.iMovieApp", "iMovie"},
    {"com.apple.FinalCut", "Final Cut Pro"},
});

template <std::size_t count>
std::vector<AppRule> makeRules(const std::array<Preset, count> &presets) {
    std::vector<AppRule> rules;
    rules.reserve(count);
    for (const auto &preset : presets) {
        rules.push_back(
            {makeUUID(), std::string(preset.bundleID), std::string(preset.displayName), true});
    }
    return rules;
}

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

const std::vector<AppRule> &AppRule::presetWhitelist() {
    static const auto rules = makeRules(whitelistPresets);
    return rules;
}

const std::vector<AppRule> &AppRule::presetBlacklist() {
    static const auto rules = makeRules(blacklistPresets);
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
