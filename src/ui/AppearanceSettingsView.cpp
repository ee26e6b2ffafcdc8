#include "ui/AppearanceSettingsView.h"

#include "presentation/SettingsTexts.h"
#include "ui/Labels.h"
#include "ui/SettingControls.h"
#include "ui/Text.h"

namespace lumo {

AppearanceSettingsView::AppearanceSettingsView(const SettingsModel &model)
    : SettingsPage(title(SettingsTab::appearance))
    , bindings_(model.settings, model.platform.mainLoop) {
    auto &settings = model.settings;
    auto *effect = addCard();
    auto *type = new SettingsRow(
        "Effect Type", {},
        makeSegments("Effect Type", settings.effectMode, bindings_, allEffectModes, displayName));
    auto *explanation = makeNote({});
    bindings_.follow<EffectMode>(
        settings.effectMode,
        [explanation, capabilities = model.platform.capabilities](const EffectMode &mode) {
            explanation->setText(toQString(effectDescription(mode, capabilities)));
        });
    type->addLine(explanation);
    effect->addRow(type);
    effect->addRow(
        makeToggleRow("Blur-free Mode", settings.blurFreeMode, bindings_,
                      "Turn blur off while keeping overlay styling for a classic dimming look."));
    auto *strength = addCard();
    strength->addRow(makeSliderRow("Intensity", settings.effectIntensity, bindings_, intensityRange,
                                   percentText));
    strength->addRow(makeSliderRow("Transition Speed", settings.transitionSpeed, bindings_,
                                   transitionSpeedRange, secondsText));
}

} // namespace lumo
