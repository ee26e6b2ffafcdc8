#pragma once

#include "input/ShortcutRecorder.h"
#include "support/Handle.h"

#include <QWidget>

namespace lumo {

class Button;

// Shows one global shortcut, and records another after a click.
class ShortcutRecorderView final : public QWidget {
  public:
    // The settings outlive the view. The name says what the shortcut is for.
    ShortcutRecorderView(const Platform &platform, std::string_view name,
                         Setting<std::int64_t> &keyCode, Setting<std::int64_t> &modifiers);

    // Setting it begins and ends the recording.
    Published<bool> &isRecording() { return recorder_.isRecording; }

  protected:
    void hideEvent(QHideEvent *event) override;

  private:
    void showState(bool isRecording);
    void showShortcut();

    Platform platform_;
    QString name_;
    std::int64_t shownKeyCode_ = 0;
    std::int64_t shownModifiers_ = 0;
    bool isRecording_ = false;
    Button *button_;
    Button *cancel_;
    ShortcutRecorder recorder_;
    Subscription keyCodeChanges_;
    Subscription modifierChanges_;
    Subscription recording_;
    Handle keyNameChanges_;
};

} // namespace lumo
