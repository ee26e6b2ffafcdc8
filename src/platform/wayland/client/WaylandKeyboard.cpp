#include "platform/wayland/client/WaylandKeyboard.h"

#include "platform/freedesktop/FileDescriptor.h"
#include "platform/freedesktop/KeyNames.h"
#include "platform/freedesktop/KeyPositions.h"
#include "platform/wayland/client/Connection.h"

#include <sys/mman.h>
#include <xkbcommon/xkbcommon.h>

#include <algorithm>
#include <utility>

namespace lumo::wayland {

namespace {

constexpr std::uint32_t seatVersion = 5;

std::uint32_t symbolAt(xkb_keymap *keymap, std::uint32_t keycode, xkb_level_index_t level,
                       xkb_layout_index_t layout = 0) {
    const xkb_keysym_t *symbols = nullptr;
    const int count = xkb_keymap_key_get_syms_by_level(keymap, keycode, layout, level, &symbols);
    return count == 1 ? *symbols : XKB_KEY_NoSymbol;
}

} // namespace

void WaylandKeyboard::KeymapDeleter::operator()(xkb_keymap *keymap) const noexcept {
    xkb_keymap_unref(keymap);
}

WaylandKeyboard::WaylandKeyboard(Connection &connection)
    : seat_(connection.bind<wl_seat>(wl_seat_interface, seatVersion)) {
    if (seat_) {
        followSeat();
        connection.roundTrip(); // tells of the keyboard
        connection.roundTrip(); // tells of its keymap
    }
    if (!keymap_) {
        useDefaultKeymap();
    }
}

WaylandKeyboard::~WaylandKeyboard() = default;

Handle WaylandKeyboard::onNamesDidChange(std::function<void()> observer) {
    return changed_.subscribe(std::move(observer));
}

void WaylandKeyboard::followSeat() {
    static const wl_seat_listener listener = {
        .capabilities =
            [](void *data, wl_seat *seat, std::uint32_t capabilities) {
                auto &self = *static_cast<WaylandKeyboard *>(data);
                const bool hasKeyboard = (capabilities & WL_SEAT_CAPABILITY_KEYBOARD) != 0;
                if (hasKeyboard && !self.keyboard_) {
                    self.keyboard_.reset(wl_seat_get_keyboard(seat));
                    self.followKeyboard();
                } else if (!hasKeyboard) {
                    self.keyboard_.reset();
                }
            },
        .name = [](void *, wl_seat *, const char *) {}};
    wl_seat_add_listener(seat_.get(), &listener, this);
}

void WaylandKeyboard::followKeyboard() {
    static const wl_keyboard_listener listener = {
        .keymap =
            [](void *data, wl_keyboard *, std::uint32_t format, int file, std::uint32_t size) {
                const freedesktop::FileDescriptor keymap(file);
                if (format == WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1) {
                    static_cast<WaylandKeyboard *>(data)->readKeymap(keymap.get(), size);
                }
            },
        .enter = [](void *, wl_keyboard *, std::uint32_t, wl_surface *, wl_array *) {},
        .leave = [](void *, wl_keyboard *, std::uint32_t, wl_surface *) {},
        .key = [](void *, wl_keyboard *, std::uint32_t, std::uint32_t, std::uint32_t,
                  std::uint32_t) {},
        .modifiers = [](void *, wl_keyboard *, std::uint32_t, std::uint32_t, std::uint32_t,
                        std::uint32_t, std::uint32_t) {},
        .repeat_info = [](void *, wl_keyboard *, std::int32_t, std::int32_t) {}};
    wl_keyboard_add_listener(keyboard_.get(), &listener, this);
}

// A keyboard that comes later most likely has the layout that the system has by default.
void WaylandKeyboard::useDefaultKeymap() {
    auto *context = xkb_context_new(XKB_CONTEXT_NO_FLAGS);
    keymap_.reset(xkb_keymap_new_from_names(context, nullptr, XKB_KEYMAP_COMPILE_NO_FLAGS));
    xkb_context_unref(context);
}

void WaylandKeyboard::readKeymap(int file, std::uint32_t size) {
    void *text = size == 0 ? MAP_FAILED : mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file, 0);
    if (text == MAP_FAILED) {
        return;
    }
    auto *context = xkb_context_new(XKB_CONTEXT_NO_FLAGS);
    keymap_.reset(xkb_keymap_new_from_buffer(context, static_cast<const char *>(text), size - 1,
                                             XKB_KEYMAP_FORMAT_TEXT_V1,
                                             XKB_KEYMAP_COMPILE_NO_FLAGS));
    xkb_context_unref(context);
    munmap(text, size);
    changed_.emit();
}

std::string WaylandKeyboard::keyName(std::int64_t keyCode) const {
    std::string name;
    if (keymap_ && std::in_range<std::uint32_t>(keyCode)) {
        if (const auto keycode =
                freedesktop::keycodeOfVirtualKey(static_cast<std::uint32_t>(keyCode))) {
            name = freedesktop::keyNameOf(symbolAt(keymap_.get(), *keycode, 0),
                                          symbolAt(keymap_.get(), *keycode, 1));
        }
    }
    return name.empty() ? "Key" + std::to_string(keyCode) : name;
}

std::vector<std::uint32_t> WaylandKeyboard::symbolsOf(std::uint32_t keycode) const {
    std::vector<std::uint32_t> all;
    const auto layouts = keymap_ ? xkb_keymap_num_layouts_for_key(keymap_.get(), keycode) : 0;
    for (xkb_layout_index_t layout = 0; layout < layouts; ++layout) {
        const auto levels = xkb_keymap_num_levels_for_key(keymap_.get(), keycode, layout);
        for (xkb_level_index_t level = 0; level < levels; ++level) {
            const xkb_keysym_t *symbols = nullptr;
            const int count =
                xkb_keymap_key_get_syms_by_level(keymap_.get(), keycode, layout, level, &symbols);
            all.insert(all.end(), symbols, symbols + count);
        }
    }
    return all;
}

std::vector<std::array<std::uint32_t, 2>>
WaylandKeyboard::symbolsByLayout(std::uint32_t keycode) const {
    std::vector<std::array<std::uint32_t, 2>> all;
    const auto layouts = keymap_ ? xkb_keymap_num_layouts_for_key(keymap_.get(), keycode) : 0;
    for (xkb_layout_index_t layout = 0; layout < layouts; ++layout) {
        all.push_back({symbolAt(keymap_.get(), keycode, 0, layout),
                       symbolAt(keymap_.get(), keycode, 1, layout)});
    }
    return all;
}

bool WaylandKeyboard::hasSymbol(std::uint32_t keycode, const std::string &name) const {
    const auto symbol = xkb_keysym_from_name(name.c_str(), XKB_KEYSYM_CASE_INSENSITIVE);
    const auto all = symbolsOf(keycode);
    return symbol != XKB_KEY_NoSymbol && std::ranges::find(all, symbol) != all.end();
}

} // namespace lumo::wayland
