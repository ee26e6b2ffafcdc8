#include "platform/x11/input/InputRouter.h"

namespace lumo::x11 {

KeyRoute InputRouter::press(const KeyStroke &press, const InputFocus &focus) {
    if (press.source == KeySource::raw) {
        lastPresses_[press.keycode].rawTime = press.time;
        const bool isGlobal = !focus.hasKeyboard && claimForMonitors(press, true);
        return {false, isGlobal ? InputRecipient::globalMonitors : InputRecipient::nobody};
    }
    const bool isToolkits = press.source == KeySource::toolkit;
    auto &stream = streamOf(press.source);
    const bool repeats = isRepeat(stream, press);
    stream.down.set(press.keycode);
    if (repeats) {
        const bool goesOn = isToolkits && !stream.withheld[press.keycode];
        return {false, goesOn ? InputRecipient::toolkit : InputRecipient::nobody};
    }
    stream.withheld.set(press.keycode, press.isHotKey);
    const bool isOwn = isToolkits || focus.isActive;
    return {isOwn && claimForMonitors(press, false), press.isHotKey ? InputRecipient::hotKey
                                                     : isToolkits   ? InputRecipient::toolkit
                                                                    : InputRecipient::nobody};
}

bool InputRouter::isRepeat(const Stream &stream, const KeyStroke &press) const {
    if (lastPresses_[press.keycode].rawTime == press.time) {
        return false; // auto-repeat makes no raw events
    }
    if (stream.down[press.keycode]) {
        return true;
    }
    // Where it is not detectable, auto-repeat is a release and a press at the same time.
    const bool mayBeReleased = press.source == KeySource::toolkit || !isAutoRepeatDetectable_;
    return mayBeReleased && stream.lastRelease.keycode == press.keycode &&
           stream.lastRelease.time == press.time;
}

// False when the other monitors have received this very press.
bool InputRouter::claimForMonitors(const KeyStroke &press, bool global) {
    auto &last = lastPresses_[press.keycode];
    if (last.monitoredTime == press.time && last.wasGlobal != global) {
        return false;
    }
    last.monitoredTime = press.time;
    last.wasGlobal = global;
    return true;
}

void InputRouter::noteSwallowed(const KeyStroke &press) {
    streamOf(press.source).withheld.set(press.keycode);
}

void InputRouter::release(const KeyStroke &release) {
    auto &stream = streamOf(release.source);
    stream.down.reset(release.keycode);
    stream.lastRelease = release;
}

} // namespace lumo::x11
