#include "ui/Binding.h"

#include <QSignalBlocker>

namespace lumo {

void Bindings::bind(QCheckBox &control, SettingsProperty<bool> &setting) {
    follow<bool>(setting, [&control](const bool &isOn) {
        const QSignalBlocker quiet(control);
        control.setChecked(isOn);
    });
    QObject::connect(&control, &QCheckBox::toggled, &control,
                     [&setting](bool isOn) { setting.set(isOn); });
}

void Bindings::bind(ValueSlider &control, SettingsProperty<double> &setting) {
    follow<double>(setting, [&control](const double &value) { control.setValue(value); });
    control.onMoved = [&setting](double value) { setting.set(value); };
}

// Later, since the settings announce a change before they hold it.
void Bindings::announceChange() {
    if (!settled_.empty() && !std::exchange(isChangeAnnounced_, true)) {
        mainLoop_.post(lifetime_.guard([this] {
            isChangeAnnounced_ = false;
            for (const auto &function : settled_) {
                function();
            }
        }));
    }
}

} // namespace lumo
