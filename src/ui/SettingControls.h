#pragma once

#include "settings/Setting.h"
#include "ui/Binding.h"
#include "ui/Card.h"
#include "ui/SegmentedPicker.h"
#include "ui/Text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace lumo {

// Rows of the settings window that follow one setting and write to it.

inline SettingsRow *makeToggleRow(std::string_view title, Setting<bool> &setting,
                                  Bindings &bindings, std::string_view note = {}) {
    auto *toggle = new Switch;
    toggle->setAccessibleName(toQString(title));
    toggle->setAccessibleDescription(toQString(note));
    bindings.bind(*toggle, setting);
    return new SettingsRow(title, note, toggle);
}

inline SettingsRow *makeSliderRow(std::string_view title, Setting<double> &setting,
                                  Bindings &bindings, const SliderRange &range,
                                  std::function<std::string(double)> text) {
    auto *slider = new ValueSlider(title, range, std::move(text));
    bindings.bind(*slider, setting);
    return new SettingsRow(title, {}, slider);
}

// A segment for each case of an enumeration, with its title.
template <class T, std::size_t count>
SegmentedPicker *makeSegments(std::string_view name, Setting<T> &setting, Bindings &bindings,
                              const std::array<T, count> &cases, std::string_view (*titleOf)(T)) {
    std::vector<std::string_view> titles;
    std::ranges::transform(cases, std::back_inserter(titles), titleOf);
    auto *picker = new SegmentedPicker(name, titles);
    bindings.follow<T>(setting, [picker, cases](const T &value) {
        picker->setChosen(
            static_cast<std::size_t>(std::ranges::find(cases, value) - cases.begin()));
    });
    picker->onChosen = [&setting, cases](std::size_t index) { setting.set(cases.at(index)); };
    return picker;
}

} // namespace lumo
