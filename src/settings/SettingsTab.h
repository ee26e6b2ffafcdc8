#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace lumo {

// The pages of the settings window. The numbers tag the entries of its sidebar.
enum class SettingsTab { general = 0, appearance = 1, rules = 2, shortcuts = 3 };

// In the order of the sidebar.
inline constexpr std::array allSettingsTabs{SettingsTab::general, SettingsTab::appearance,
                                            SettingsTab::rules, SettingsTab::shortcuts};

constexpr std::string_view title(SettingsTab tab) {
    constexpr std::array<std::string_view, 4> titles{"General", "Appearance", "Rules", "Shortcuts"};
    return titles.at(static_cast<std::size_t>(tab));
}

} // namespace lumo
