#include "settings/Setting.h"

#include "platform/UserDefaults.h"
#include "settings/SettingsStore.h"

#include <cmath>

namespace lumo {

namespace {

// read() gives nothing when nothing, or something of another type, is stored.

template <class T>
std::optional<T> read(const Value &stored);

template <>
std::optional<bool> read(const Value &stored) {
    return stored.boolean();
}

template <>
std::optional<std::int64_t> read(const Value &stored) {
    return stored.integer();
}

template <>
std::optional<double> read(const Value &stored) {
    const auto number = stored.number();
    // No setting means anything as an infinity or as no number.
    return number && std::isfinite(*number) ? number : std::nullopt;
}

template <>
std::optional<std::string> read(const Value &stored) {
    const auto *text = stored.string();
    return text != nullptr ? std::optional(*text) : std::nullopt;
}

template <>
std::optional<std::optional<std::string>> read(const Value &stored) {
    return read<std::string>(stored);
}

template <>
std::optional<EffectMode> read(const Value &stored) {
    const auto *text = stored.string();
    return text != nullptr ? effectModeFromRawValue(*text) : std::nullopt;
}

template <>
std::optional<MultiScreenMode> read(const Value &stored) {
    const auto *text = stored.string();
    return text != nullptr ? multiScreenModeFromRawValue(*text) : std::nullopt;
}

template <>
std::optional<std::vector<AppRule>> read(const Value &stored) {
    const auto *json = stored.data();
    return json != nullptr ? decodeRules(*json) : std::nullopt;
}

template <class T>
T load(const UserDefaults &userDefaults, std::string_view key, const T &defaultValue) {
    const auto stored = userDefaults.object(key);
    return stored ? read<T>(*stored).value_or(defaultValue) : defaultValue;
}

void write(UserDefaults &userDefaults, std::string_view key, bool value) {
    userDefaults.setBool(key, value);
}

void write(UserDefaults &userDefaults, std::string_view key, std::int64_t value) {
    userDefaults.setInteger(key, value);
}

void write(UserDefaults &userDefaults, std::string_view key, double value) {
    userDefaults.setDouble(key, value);
}

void write(UserDefaults &userDefaults, std::string_view key, const std::string &value) {
    userDefaults.setString(key, value);
}

void write(UserDefaults &userDefaults, std::string_view key,
           const std::optional<std::string> &value) {
    if (value) {
        userDefaults.setString(key, *value);
    } else {
        userDefaults.removeObject(key);
    }
}

void write(UserDefaults &userDefaults, std::string_view key, EffectMode value) {
    userDefaults.setString(key, std::string(rawValue(value)));
}

void write(UserDefaults &userDefaults, std::string_view key, MultiScreenMode value) {
    userDefaults.setString(key, std::string(rawValue(value)));
}

void write(UserDefaults &userDefaults, std::string_view key, const std::vector<AppRule> &value) {
    if (const auto json = encodeRules(value)) {
        userDefaults.setData(key, *json);
    }
}

} // namespace

template <class T>
SettingsProperty<T>::SettingsProperty(SettingsStore &store, T initial)
    : willChange_(store.willChange)
    , published_(std::move(initial)) {
}

template <class T>
void SettingsProperty<T>::set(T next) {
    willChange_.emit();
    published_.set(std::move(next));
}

template <class T>
Setting<T>::Setting(SettingsStore &store, std::string_view key, T defaultValue, WriteBack writeBack)
    : AnySetting(key)
    , SettingsProperty<T>(store, load(store.userDefaults_, key, defaultValue))
    , userDefaults_(store.userDefaults_)
    , defaultValue_(std::move(defaultValue))
    , writeBack_(writeBack) {
    store.settings_.push_back(this);
}

template <class T>
void Setting<T>::set(T next) {
    SettingsProperty<T>::set(std::move(next));
    if (writeBack_ == WriteBack::onEveryAssignment) {
        write(userDefaults_, this->key(), this->value());
    }
}

template <class T>
void Setting<T>::reload() {
    SettingsProperty<T>::set(load(userDefaults_, this->key(), defaultValue_));
}

template class SettingsProperty<bool>;
template class SettingsProperty<std::string>;
template class SettingsProperty<std::optional<std::string>>;

template class Setting<bool>;
template class Setting<std::int64_t>;
template class Setting<double>;
template class Setting<std::string>;
template class Setting<std::optional<std::string>>;
template class Setting<EffectMode>;
template class Setting<MultiScreenMode>;
template class Setting<std::vector<AppRule>>;

} // namespace lumo
