#include "platform/freedesktop/KeyNames.h"

#include <xkbcommon/xkbcommon.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace lumo::freedesktop {

namespace {

// For symbols whose own names are not what people call the keys.
constexpr auto renamed = std::to_array<std::pair<std::string_view, std::string_view>>({
    {"BackSpace", "Backspace"},
    {"Prior", "Page Up"},
    {"Next", "Page Down"},
    {"XF86AudioRaiseVolume", "Volume Up"},
    {"XF86AudioLowerVolume", "Volume Down"},
    {"XF86AudioMicMute", "Microphone Mute"},
    {"XF86AudioNext", "Next Track"},
    {"XF86AudioPrev", "Previous Track"},
    {"XF86MonBrightnessUp", "Brightness Up"},
    {"XF86MonBrightnessDown", "Brightness Down"},
    {"XF86KbdBrightnessUp", "Keyboard Brightness Up"},
    {"XF86KbdBrightnessDown", "Keyboard Brightness Down"},
});

// Of the dead keys from dead_grave to dead_ogonek.
constexpr std::array<std::string_view, 13> accents{"`", "´", "^", "~", "¯", "˘", "˙",
                                                   "¨", "˚", "˝", "ˇ", "¸", "˛"};

constexpr std::string_view vendorPrefix = "XF86";
constexpr std::string_view keypadPrefix = "KP_";

bool isOnKeypad(xkb_keysym_t keysym) {
    return keysym >= XKB_KEY_KP_Space && keysym <= XKB_KEY_KP_Equal;
}

bool isKeypadFigure(xkb_keysym_t keysym) {
    return (keysym >= XKB_KEY_KP_0 && keysym <= XKB_KEY_KP_9) || keysym == XKB_KEY_KP_Decimal ||
           keysym == XKB_KEY_KP_Separator;
}

std::string_view without(std::string_view prefix, std::string_view name) {
    return name.starts_with(prefix) ? name.substr(prefix.size()) : name;
}

// A name of several words that are written together.
std::string spacedOut(std::string_view name) {
    const auto isSmall = [](char letter) { return letter >= 'a' && letter <= 'z'; };
    const auto isLarge = [](char letter) { return letter >= 'A' && letter <= 'Z'; };
    const auto isDigit = [](char letter) { return letter >= '0' && letter <= '9'; };
    std::string words;
    for (std::size_t at = 0; at < name.size(); ++at) {
        if (at > 0 && isSmall(name[at - 1]) && (isLarge(name[at]) || isDigit(name[at]))) {
            words += ' ';
        }
        words += name[at] == '_' ? ' ' : name[at];
    }
    return words;
}

std::string printedName(std::string_view name) {
    const auto *found =
        std::ranges::find(renamed, name, &std::pair<std::string_view, std::string_view>::first);
    if (found != renamed.end()) {
        return std::string(found->second);
    }
    const auto bare = without(vendorPrefix, name);
    return spacedOut(bare.size() < name.size() ? without("Audio", bare) : bare);
}

// Empty for a symbol that types none that can be seen.
std::string characterOf(xkb_keysym_t keysym) {
    constexpr std::uint32_t lastControl = 0x20;
    constexpr std::uint32_t firstHighControl = 0x7f;
    constexpr std::uint32_t lastHighControl = 0xa0;
    const auto upper = xkb_keysym_to_upper(keysym);
    const auto code = xkb_keysym_to_utf32(upper);
    std::array<char, 8> text{};
    if (code <= lastControl || (code >= firstHighControl && code <= lastHighControl) ||
        xkb_keysym_to_utf8(upper, text.data(), text.size()) <= 0) {
        return {};
    }
    return text.data();
}

} // namespace

std::string keyNameOf(std::uint32_t keysym, std::uint32_t shiftedKeysym) {
    if (isOnKeypad(keysym) && isKeypadFigure(shiftedKeysym)) {
        return keyNameOf(shiftedKeysym, XKB_KEY_NoSymbol);
    }
    if (keysym == XKB_KEY_NoSymbol) {
        return {};
    }
    if (keysym >= XKB_KEY_dead_grave && keysym <= XKB_KEY_dead_ogonek) {
        return std::string(accents.at(keysym - XKB_KEY_dead_grave));
    }
    const std::string prefix = isOnKeypad(keysym) ? "Keypad " : "";
    if (auto character = characterOf(keysym); !character.empty()) {
        return prefix + character;
    }
    std::array<char, 64> name{};
    if (keysym == XKB_KEY_space || xkb_keysym_get_name(keysym, name.data(), name.size()) <= 0) {
        return keysym == XKB_KEY_space ? "Space" : "";
    }
    return prefix + printedName(without(keypadPrefix, name.data()));
}

} // namespace lumo::freedesktop
