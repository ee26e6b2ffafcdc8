#pragma once

#include "support/Published.h"
#include "support/Signal.h"

#include <functional>
#include <string_view>
#include <utility>

namespace lumo {

class SettingsStore;
class UserDefaults;

// One observable property of the settings store. Main thread only.
//
// An assignment, equal ones included, first gives the store's will-change signal, then calls the
// subscribers with the new value, and only then stores it: use the argument, value() still returns
// the old one.
template <class T>
class SettingsProperty {
  public:
    SettingsProperty(SettingsStore &store, T initial);
    virtual ~SettingsProperty() = default;
    SettingsProperty(const SettingsProperty &) = delete;
    SettingsProperty &operator=(const SettingsProperty &) = delete;

    const T &value() const { return published_.value(); }
    virtual void set(T next);

    // Calls the observer at once with the current value, and then as the class says.
    Subscription subscribe(std::function<void(const T &)> observer) {
        return published_.subscribe(std::move(observer));
    }

    // As subscribe(), without the first call.
    Subscription subscribeToChanges(std::function<void(const T &)> observer) {
        return published_.subscribeToChanges(std::move(observer));
    }

  private:
    const Signal<> &willChange_;
    Published<T> published_;
};

// What all settings have in common, whatever their type.
class AnySetting {
  public:
    explicit AnySetting(std::string_view key)
        : key_(key) {}
    virtual ~AnySetting() = default;
    AnySetting(const AnySetting &) = delete;
    AnySetting &operator=(const AnySetting &) = delete;

    // The property's name, under which it is kept in user defaults.
    std::string_view key() const { return key_; }

    virtual bool isDefault() const = 0;

    // Assigns the current value once more: it is announced and written.
    virtual void setAgain() = 0;

    // Assigns what user defaults hold now: it is announced, and not written.
    virtual void reload() = 0;

    // Calls the observer on every assignment, before the value is stored.
    virtual Subscription subscribeToAssignments(std::function<void()> observer) = 0;

  private:
    std::string_view key_;
};

enum class WriteBack { onEveryAssignment, never };

// A property that is read from user defaults when the store is made, and written back on every
// assignment unless said otherwise. What is stored with another type counts as missing, but a whole
// number may stand for a real one. T is one of bool, std::int64_t, double, std::string,
// std::optional<std::string>, EffectMode, MultiScreenMode and std::vector<AppRule>.
template <class T>
class Setting final : public AnySetting, public SettingsProperty<T> {
  public:
    Setting(SettingsStore &store, std::string_view key, T defaultValue,
            WriteBack writeBack = WriteBack::onEveryAssignment);

    // In force while user defaults hold no value of this type under the key.
    const T &defaultValue() const { return defaultValue_; }

    void set(T next) override;

    bool isDefault() const override { return this->value() == defaultValue_; }
    void setAgain() override { set(this->value()); }
    void reload() override;
    Subscription subscribeToAssignments(std::function<void()> observer) override {
        return this->subscribeToChanges(
            [observer = std::move(observer)](const T &) { observer(); });
    }

  private:
    UserDefaults &userDefaults_;
    T defaultValue_;
    WriteBack writeBack_;
};

} // namespace lumo
