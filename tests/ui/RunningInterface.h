#pragma once

#include "InterfaceStage.h"
#include "platform/Appearance.h"
#include "support/Signal.h"
#include "ui/QtInterface.h"

#include <utility>

namespace lumo::test {

class ScriptedAppearance final : public Appearance {
  public:
    void prefer(std::optional<bool> dark) {
        dark_ = dark;
        changed_.emit();
    }

    std::optional<bool> prefersDark() const override { return dark_; }
    Handle onChange(std::function<void()> observer) override {
        return changed_.subscribe(std::move(observer));
    }

  private:
    std::optional<bool> dark_;
    Signal<> changed_;
};

// The toolkit without a display, as the program starts it. One for the whole test program: the
// toolkit can't be started twice.
class RunningInterface {
  public:
    RunningInterface() {
        instance_ = this;
        interface.showMessage("Title", "Text");
    }
    ~RunningInterface() { instance_ = nullptr; }
    RunningInterface(const RunningInterface &) = delete;
    RunningInterface &operator=(const RunningInterface &) = delete;

    static RunningInterface &instance() { return *instance_; }

    InterfaceStage stage;
    ScriptedAppearance appearance;
    int unusedNotes = 0;
    QtInterface interface {
        stage.desktop.platform(), {
            .windowSystem = "offscreen", .noteUnused = [this] { ++unusedNotes; },
            .appearance = &appearance
        }
    };

  private:
    inline static RunningInterface *instance_ = nullptr;
};

} // namespace lumo::test
