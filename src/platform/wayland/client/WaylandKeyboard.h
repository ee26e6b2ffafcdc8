#pragma once

#include "platform/Keyboard.h"
#include "platform/wayland/client/ProtocolPointers.h"
#include "support/Handle.h"
#include "support/Signal.h"

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

struct xkb_keymap;

namespace lumo::wayland {

class Connection;

// The keyboard of the user's seat, by the keymap that the compositor hands out. Of several layouts
// keys are named by the first, since no program without the focus learns which is in force. Main
// thread only.
class WaylandKeyboard final : public Keyboard {
  public:
    // Waits for the compositor. The connection outlives the object.
    explicit WaylandKeyboard(Connection &connection);
    ~WaylandKeyboard() override;
    WaylandKeyboard(const WaylandKeyboard &) = delete;
    WaylandKeyboard &operator=(const WaylandKeyboard &) = delete;

    std::string keyName(std::int64_t keyCode) const override;
    Handle onNamesDidChange(std::function<void()> observer) override;

    // The symbols of the key with this XKB key code, in all of its layouts and levels, and whether
    // the one of that name is among them.
    std::vector<std::uint32_t> symbolsOf(std::uint32_t keycode) const;
    bool hasSymbol(std::uint32_t keycode, const std::string &name) const;

    // The same by layout, alone and with Shift; 0 where it has none.
    std::vector<std::array<std::uint32_t, 2>> symbolsByLayout(std::uint32_t keycode) const;

  private:
    struct KeymapDeleter {
        void operator()(xkb_keymap *keymap) const noexcept;
    };

    void followSeat();
    void followKeyboard();
    void useDefaultKeymap();
    void readKeymap(int file, std::uint32_t size);

    std::unique_ptr<xkb_keymap, KeymapDeleter> keymap_; // of the last keyboard
    ProtocolPointer<wl_seat> seat_;
    ProtocolPointer<wl_keyboard> keyboard_;
    Signal<> changed_;
};

} // namespace lumo::wayland
