#include "platform/x11/input/KeySymbols.h"

#include <algorithm>

namespace lumo::x11 {

namespace {

constexpr xcb_keysym_t noSymbol = XCB_NO_SYMBOL;

// The parts of a key's group information.
constexpr std::uint8_t countMask = 0x0f;
constexpr std::uint8_t redirectShift = 4;
constexpr std::uint8_t redirectMask = 0x03;
constexpr std::uint8_t clampsGroups = 0x40;
constexpr std::uint8_t redirectsGroups = 0x80;

// The group of the key's own that stands for the one in force; the key has at least one.
std::uint8_t ownGroup(std::uint8_t group, std::uint8_t groupInfo) {
    const auto count = static_cast<std::uint8_t>(groupInfo & countMask);
    if (group < count) {
        return group;
    }
    if ((groupInfo & redirectsGroups) != 0) {
        const auto other = static_cast<std::uint8_t>((groupInfo >> redirectShift) & redirectMask);
        return other < count ? other : std::uint8_t{0};
    }
    const auto last = static_cast<std::uint8_t>(count - 1);
    return (groupInfo & clampsGroups) != 0 ? last : static_cast<std::uint8_t>(group % count);
}

} // namespace

KeySymbols::KeySymbols(const Keymap &keymap)
    : first_(keymap.firstKeycode) {
    for (std::size_t at = 0;
         keymap.symbolsPerKey > 0 && at + keymap.symbolsPerKey <= keymap.symbols.size();
         at += keymap.symbolsPerKey) {
        auto &key = keys_.emplace_back();
        key.groupInfo = 1;
        key.groups[0] = {keymap.symbols[at],
                         keymap.symbolsPerKey > 1 ? keymap.symbols[at + 1] : noSymbol};
    }
}

KeySymbols::KeySymbols(const xcb_xkb_get_map_reply_t &reply)
    : first_(reply.firstKeySym) {
    xcb_xkb_get_map_map_t map{};
    xcb_xkb_get_map_map_unpack(xcb_xkb_get_map_map(&reply), reply.nTypes, reply.nKeySyms,
                               reply.nKeyActions, reply.totalActions, reply.totalKeyBehaviors,
                               reply.virtualMods, reply.totalKeyExplicit, reply.totalModMapKeys,
                               reply.totalVModMapKeys, reply.present, &map);
    keys_.reserve(reply.nKeySyms);
    for (auto each = xcb_xkb_get_map_map_syms_rtrn_iterator(&reply, &map); each.rem > 0;
         xcb_xkb_key_sym_map_next(&each)) {
        const auto *symbols = xcb_xkb_key_sym_map_syms(each.data);
        const std::size_t width = each.data->width;
        const auto count = std::min<std::size_t>(each.data->groupInfo & countMask, 4);
        auto &key = keys_.emplace_back();
        key.groupInfo = each.data->groupInfo;
        for (std::size_t group = 0; group < count && (group + 1) * width <= each.data->nSyms;
             ++group) {
            const auto *levels = symbols + group * width;
            key.groups.at(group) = {width > 0 ? levels[0] : noSymbol,
                                    width > 1 ? levels[1] : noSymbol};
        }
    }
}

KeyLevels KeySymbols::of(xcb_keycode_t keycode, std::uint8_t group) const {
    const std::size_t index = static_cast<std::size_t>(keycode - first_);
    if (keycode < first_ || index >= keys_.size() || (keys_[index].groupInfo & countMask) == 0) {
        return {};
    }
    return keys_[index].groups.at(ownGroup(group, keys_[index].groupInfo) % 4);
}

} // namespace lumo::x11
