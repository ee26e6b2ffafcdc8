#pragma once

#include "platform/MainLoop.h"
#include "settings/SettingsStore.h"
#include "support/Handle.h"
#include "support/Lifetime.h"
#include "ui/Switch.h"
#include "ui/ValueSlider.h"

#include <functional>
#include <utility>
#include <vector>

namespace lumo {

// Ties controls to settings, both ways, for as long as it lives: a member of the view that owns the
// controls. The settings outlive it.
class Bindings {
  public:
    Bindings(SettingsStore &settings, MainLoop &mainLoop)
        : mainLoop_(mainLoop)
        , settingsChanges_(settings.willChange.subscribe([this] { announceChange(); })) {}
    Bindings(const Bindings &) = delete;
    Bindings &operator=(const Bindings &) = delete;

    void bind(QCheckBox &control, SettingsProperty<bool> &setting);
    void bind(ValueSlider &control, SettingsProperty<double> &setting);

    // Calls the observer now and with each new value.
    template <class T>
    void follow(SettingsProperty<T> &setting, std::function<void(const T &)> observer) {
        subscriptions_.push_back(setting.subscribe(std::move(observer)));
    }

    // Calls the function now, and once in a later turn after each turn in which settings were
    // assigned: for what is worked out from several of them.
    void whenSettled(std::function<void()> function) {
        function();
        settled_.push_back(std::move(function));
    }

  private:
    void announceChange();

    MainLoop &mainLoop_;
    std::vector<std::function<void()>> settled_;
    bool isChangeAnnounced_ = false;
    std::vector<Subscription> subscriptions_;
    Handle settingsChanges_;
    Lifetime lifetime_;
};

} // namespace lumo
