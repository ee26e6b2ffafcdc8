#include "wayland/WaylandHands.h"

#include <input-client-protocol.h>
#include <sys/mman.h>
#include <unistd.h>
#include <wayland-client.h>
#include <xkbcommon/xkbcommon.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <stdexcept>

namespace lumo::desktop {

namespace {

std::uint32_t milliseconds() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint32_t>(
        std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

// The bit of a modifier key in an ordinary keymap.
std::uint32_t modifierBit(EvdevKey key) {
    switch (key) {
    case EvdevKey::control:
        return 1U << 2U;
    case EvdevKey::option:
        return 1U << 3U;
    case EvdevKey::command:
        return 1U << 6U;
    default:
        return 0;
    }
}

} // namespace

struct WaylandHands::Devices {
    explicit Devices(const std::string &socket)
        : display(wl_display_connect(socket.c_str())) {
        if (display == nullptr) {
            throw std::runtime_error("no compositor answers at " + socket);
        }
        static const wl_registry_listener listener = {
            [](void *data, wl_registry *registry, std::uint32_t name, const char *interface,
               std::uint32_t) {
                auto &self = *static_cast<Devices *>(data);
                const auto take = [&](const wl_interface &wanted, auto *&object) {
                    if (std::string(interface) == wanted.name) {
                        object = static_cast<std::remove_reference_t<decltype(object)>>(
                            wl_registry_bind(registry, name, &wanted, 1));
                    }
                };
                take(wl_seat_interface, self.seat);
                take(zwlr_virtual_pointer_manager_v1_interface, self.pointers);
                take(zwp_virtual_keyboard_manager_v1_interface, self.keyboards);
            },
            [](void *, wl_registry *, std::uint32_t) {}};
        wl_registry_add_listener(wl_display_get_registry(display), &listener, this);
        wl_display_roundtrip(display);
        if (seat == nullptr || pointers == nullptr || keyboards == nullptr) {
            throw std::runtime_error("the compositor has no virtual devices");
        }
        pointer = zwlr_virtual_pointer_manager_v1_create_virtual_pointer(pointers, seat);
        keyboard = zwp_virtual_keyboard_manager_v1_create_virtual_keyboard(keyboards, seat);
        giveKeymap();
    }

    ~Devices() { wl_display_disconnect(display); }
    Devices(const Devices &) = delete;
    Devices &operator=(const Devices &) = delete;

    void giveKeymap() const {
        auto *context = xkb_context_new(XKB_CONTEXT_NO_FLAGS);
        const xkb_rule_names names = {"evdev", "pc105", "us", "", ""};
        auto *keymap = xkb_keymap_new_from_names(context, &names, XKB_KEYMAP_COMPILE_NO_FLAGS);
        char *text = xkb_keymap_get_as_string(keymap, XKB_KEYMAP_FORMAT_TEXT_V1);
        const std::string all(text);
        const int file = memfd_create("keymap", MFD_CLOEXEC);
        if (write(file, all.c_str(), all.size() + 1) < 0) {
            throw std::runtime_error("the keymap can't be written");
        }
        zwp_virtual_keyboard_v1_keymap(keyboard, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, file,
                                       static_cast<std::uint32_t>(all.size() + 1));
        wl_display_roundtrip(display);
        close(file);
        std::free(text); // NOLINT(cppcoreguidelines-no-malloc): as the library allocates it
        xkb_keymap_unref(keymap);
        xkb_context_unref(context);
    }

    wl_display *display;
    wl_seat *seat = nullptr;
    zwlr_virtual_pointer_manager_v1 *pointers = nullptr;
    zwp_virtual_keyboard_manager_v1 *keyboards = nullptr;
    zwlr_virtual_pointer_v1 *pointer = nullptr;
    zwp_virtual_keyboard_v1 *keyboard = nullptr;
};

WaylandHands::WaylandHands(const std::string &socket)
    : devices_(std::make_unique<Devices>(socket)) {
}

WaylandHands::~WaylandHands() = default;

void WaylandHands::moveTo(Spot spot, Area desktop) {
    zwlr_virtual_pointer_v1_motion_absolute(
        devices_->pointer, milliseconds(), static_cast<std::uint32_t>(spot.x - desktop.x),
        static_cast<std::uint32_t>(spot.y - desktop.y), static_cast<std::uint32_t>(desktop.width),
        static_cast<std::uint32_t>(desktop.height));
    zwlr_virtual_pointer_v1_frame(devices_->pointer);
    wl_display_roundtrip(devices_->display);
}

void WaylandHands::setButton(bool isDown, EvdevButton button) {
    zwlr_virtual_pointer_v1_button(devices_->pointer, milliseconds(),
                                   static_cast<std::uint32_t>(button), isDown ? 1 : 0);
    zwlr_virtual_pointer_v1_frame(devices_->pointer);
    wl_display_roundtrip(devices_->display);
}

void WaylandHands::setKey(EvdevKey key, bool isDown) {
    zwp_virtual_keyboard_v1_key(devices_->keyboard, milliseconds(), static_cast<std::uint32_t>(key),
                                isDown ? 1 : 0);
    if (const auto bit = modifierBit(key)) {
        modifiers_ = isDown ? modifiers_ | bit : modifiers_ & ~bit;
        zwp_virtual_keyboard_v1_modifiers(devices_->keyboard, modifiers_, 0, 0, 0);
    }
    wl_display_roundtrip(devices_->display);
}

void WaylandHands::click(Spot spot, Area desktop) {
    moveTo(spot, desktop);
    setButton(true);
    setButton(false);
}

void WaylandHands::press(const std::vector<EvdevKey> &chord) {
    for (const auto key : chord) {
        setKey(key, true);
    }
    std::for_each(chord.rbegin(), chord.rend(), [this](EvdevKey key) { setKey(key, false); });
}

} // namespace lumo::desktop
