#pragma once

#include "platform/Platform.h"
#include "settings/Setting.h"
#include "support/Handle.h"
#include "support/Published.h"

#include <cstdint>

namespace lumo {

struct InputEvent;

// What a control does that records one global shortcut: while it records, the next key that is
// pressed together with a modifier key becomes the shortcut. Main thread only.
class ShortcutRecorder {
  public:
    // The settings that hold the shortcut, a virtual key code and a shortcut modifier mask, must
    // outlive the recorder.
    ShortcutRecorder(const Platform &platform, Setting<std::int64_t> &keyCode,
                     Setting<std::int64_t> &modifiers);
    ShortcutRecorder(const ShortcutRecorder &) = delete;
    ShortcutRecorder &operator=(const ShortcutRecorder &) = delete;

    // Setting it begins and ends the recording; false again once a shortcut was recorded. Nothing
    // that is pressed meanwhile reaches the program's windows.
    Published<bool> isRecording{false};

  private:
    void startMonitoring();
    void stopMonitoring();
    void recordKeyEvent(const InputEvent &event);

    EventMonitors &eventMonitors_;
    Setting<std::int64_t> &keyCode_;
    Setting<std::int64_t> &modifiers_;
    Subscription recording_;
    Handle globalMonitor_;
    Handle localMonitor_;
};

} // namespace lumo
