#pragma once

#include "presentation/SettingsTexts.h"
#include "settings/Setting.h"

#include <QLabel>
#include <QSlider>
#include <QWidget>
#include <functional>
#include <string>
#include <string_view>

namespace lumo {

// A slider over a range in steps, with its value in words beside it.
class ValueSlider final : public QWidget {
  public:
    // The name is for screen readers; the text says a value in words.
    ValueSlider(std::string_view name, const SliderRange &range,
                std::function<std::string(double)> text);

    // Without a call of onMoved. A value between two steps, or beyond the range, is shown as it is,
    // with the knob at the nearest step.
    void setValue(double value);

    const SliderRange &range() const { return range_; }

    // That of the last setValue().
    double value() const { return value_; }

    // As if the user moved the knob to the step that is nearest.
    void moveTo(double value);

    // The user moved it to this step's value.
    std::function<void(double)> onMoved;

  private:
    class Slider;

    int stepOf(double value) const;

    SliderRange range_;
    std::function<std::string(double)> text_;
    double value_ = 0;
    Slider *slider_;
    QLabel *label_;
};

} // namespace lumo
