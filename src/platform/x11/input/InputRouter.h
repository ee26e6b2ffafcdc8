#pragma once

#include <xcb/xcb.h>

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>

namespace lumo::x11 {

// How the program came to know of a key press. One press may become known in several ways, in any
// order, with the same time.
enum class KeySource : std::uint8_t {
    raw,     // by a raw event: the user pressed the key, whichever client receives it; no repeats
    grab,    // by a passive grab of this program's
    toolkit, // by the toolkit, which read it: it goes to a window of this program's
};

// A press or a release of a key.
struct KeyStroke {
    KeySource source = KeySource::raw;
    xcb_keycode_t keycode = 0;
    xcb_timestamp_t time = XCB_CURRENT_TIME; // as in the event
    bool isHotKey = false;                   // of a press: a hot key with these modifiers
};

// Which input goes to the windows of this program's own interface.
struct InputFocus {
    bool hasKeyboard = false;
    bool hasPointer = false;
    bool isActive = false; // the active window is this program's, by the window manager
};

enum class InputRecipient : std::uint8_t { nobody, globalMonitors, hotKey, toolkit };

struct KeyRoute {
    // Before the recipient; a press that one of them swallows goes no further, which is to be told
    // to InputRouter::noteSwallowed().
    bool asksLocalMonitors = false;
    InputRecipient recipient = InputRecipient::nobody;

    bool operator==(const KeyRoute &) const = default;
};

// Decides who receives what the user types and points at.
//
// Monitors see each press of a key once: the global ones when it goes to another program, the local
// ones when it goes to this one, and never both. What is known of the focus may be older than a
// press, so the source that is known first decides. An auto-repeat is no press: it goes where the
// key's press went, but monitors and hot keys don't receive it.
//
// A value without any knowledge of the server.
class InputRouter {
  public:
    // Whether this program's own connection receives auto-repeats without releases between them.
    // The toolkit's receives releases.
    explicit InputRouter(bool isAutoRepeatDetectable)
        : isAutoRepeatDetectable_(isAutoRepeatDetectable) {}

    // Presses of one source are to be told in the order of their events, and so are its releases.
    KeyRoute press(const KeyStroke &press, const InputFocus &focus);

    // A local monitor swallowed the press that was routed last.
    void noteSwallowed(const KeyStroke &press);

    void release(const KeyStroke &release);

    // The toolkit's windows no longer receive key events, nor the releases of keys that are down.
    void toolkitLostKeyboard() { streamOf(KeySource::toolkit).down.reset(); }

    // The pointer moved.
    static InputRecipient motion(const InputFocus &focus) {
        return monitorsUnless(focus.hasPointer);
    }

    // A modifier key was pressed or released.
    static InputRecipient modifierChange(const InputFocus &focus) {
        return monitorsUnless(focus.hasKeyboard);
    }

  private:
    static constexpr std::size_t keycodes = 256;
    using Keys = std::bitset<keycodes>;

    // What one source said.
    struct Stream {
        Keys down;
        Keys withheld; // from the toolkit, when it was last pressed
        KeyStroke lastRelease;
    };

    // The last press of a key, as far as it is known; times that no event has until then.
    struct LastPress {
        xcb_timestamp_t rawTime = XCB_CURRENT_TIME;
        xcb_timestamp_t monitoredTime = XCB_CURRENT_TIME; // of that which monitors received
        bool wasGlobal = false;                           // the global ones
    };

    static InputRecipient monitorsUnless(bool isOwn) {
        return isOwn ? InputRecipient::nobody : InputRecipient::globalMonitors;
    }
    bool isRepeat(const Stream &stream, const KeyStroke &press) const;

    Stream &streamOf(KeySource source) { return streams_[source == KeySource::toolkit ? 1 : 0]; }
    bool claimForMonitors(const KeyStroke &press, bool global);

    bool isAutoRepeatDetectable_;
    std::array<Stream, 2> streams_; // what was grabbed, what the toolkit read
    std::array<LastPress, keycodes> lastPresses_;
};

} // namespace lumo::x11
