#pragma once

#include "presentation/UserInterface.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace lumo::test {

// A user interface that only keeps account of what is shown.
class ScriptedInterface final : public UserInterface {
  public:
    struct Window {
        int timesBroughtToFront = 0;
        std::function<void()> onWillClose;
        std::function<void()> begin = {}; // of the first start's page
    };

    // Null before it was made, and after the program let go of it.
    StatusMenu *menu = nullptr;
    bool isPopoverShown = false;
    std::shared_ptr<Window> settingsWindow;
    std::shared_ptr<Window> guidanceWindow;
    int settingsWindowsMade = 0;
    std::vector<std::string> messages;

    // The user closes it.
    static void close(std::shared_ptr<Window> &window) {
        const auto closed = std::exchange(window, nullptr);
        closed->onWillClose();
    }

    std::unique_ptr<Popover> makePopover(StatusMenu &statusMenu) override {
        menu = &statusMenu;
        return std::make_unique<ScriptedPopover>(*this);
    }

    std::unique_ptr<InterfaceWindow>
    makeSettingsWindow(const SettingsModel &, std::function<void()> onWillClose) override {
        ++settingsWindowsMade;
        settingsWindow = std::make_shared<Window>(Window{0, std::move(onWillClose)});
        return std::make_unique<ScriptedWindow>(settingsWindow);
    }

    std::unique_ptr<InterfaceWindow>
    makeGuidanceWindow(const GuidanceModel &model, std::function<void()> onWillClose) override {
        guidanceWindow = std::make_shared<Window>(Window{0, std::move(onWillClose), model.begin});
        return std::make_unique<ScriptedWindow>(guidanceWindow);
    }

    void showMessage(const std::string &, const std::string &text) override {
        messages.push_back(text);
    }

  private:
    class ScriptedPopover final : public Popover {
      public:
        explicit ScriptedPopover(ScriptedInterface &interface)
            : interface_(interface) {}
        ~ScriptedPopover() override { interface_.menu = nullptr; }

        bool isShown() const override { return interface_.isPopoverShown; }
        void show(const StatusItemPlace &) override { interface_.isPopoverShown = true; }
        void close() override { interface_.isPopoverShown = false; }

      private:
        ScriptedInterface &interface_;
    };

    class ScriptedWindow final : public InterfaceWindow {
      public:
        explicit ScriptedWindow(std::shared_ptr<Window> window)
            : window_(std::move(window)) {}

        void makeKeyAndOrderFront() override { ++window_->timesBroughtToFront; }

      private:
        std::shared_ptr<Window> window_;
    };
};

} // namespace lumo::test
