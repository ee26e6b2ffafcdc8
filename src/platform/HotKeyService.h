#pragma once

#include "support/Handle.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace lumo {

// The modifier bits of a hot key.
namespace hotKeyModifier {
inline constexpr std::uint32_t command = 0x100;
inline constexpr std::uint32_t shift = 0x200;
inline constexpr std::uint32_t option = 0x800;
inline constexpr std::uint32_t control = 0x1000;
} // namespace hotKeyModifier

enum class HotKeyEventKind { pressed, released };

// The outcome of a registration, by the number under which it is logged. A system may have further
// ones, which stand for other failures.
enum class HotKeyStatus : std::int32_t {
    success = 0,
    invalidParameter = -50, // a key or modifier that this keyboard lacks
    alreadyTaken = -9878,   // by another program
};

// As "status=" and the number, for log lines.
inline std::string describe(HotKeyStatus status) {
    return "status=" + std::to_string(static_cast<std::int32_t>(status));
}

// What identifies a hot key in its events: four characters, the first in the top byte, and a
// number.
struct HotKeyID {
    std::uint32_t signature = 0;
    std::uint32_t number = 0;

    bool operator==(const HotKeyID &) const = default;
};

struct HotKeyEvent {
    std::optional<HotKeyID> id; // absent when it can't be read
    HotKeyEventKind kind = HotKeyEventKind::pressed;
};

// Key combinations that reach this program whichever application is frontmost.
class HotKeyService {
  public:
    virtual ~HotKeyService() = default;

    // Calls the handler for every press and release of a registered hot key. A key that is held may
    // be reported as pressed several times before it is released. May be called on any thread.
    virtual Handle installEventHandler(std::function<void(const HotKeyEvent &)> handler) = 0;

    // Registers the key at the position that the virtual key code has on the ANSI layout, with
    // exactly these modifiers (hotKeyModifier), whatever the lock keys say. Calls the function with
    // the outcome, during this call or later; nothing is registered unless that is a success. A
    // system may notice that another program has let go of the keys, or has taken them, and calls
    // it with each outcome that differs from the one before. Releasing the handle unregisters the
    // hot key, and no outcome comes any more. Main thread only.
    virtual Handle registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers, HotKeyID id,
                                  std::function<void(HotKeyStatus)> outcome) = 0;
};

} // namespace lumo
