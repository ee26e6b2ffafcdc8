#include "ui/ShortcutsSettingsView.h"

#include "input/ShortcutManager.h"
#include "platform/Vocabulary.h"
#include "presentation/SettingsTexts.h"
#include "presentation/Shortcuts.h"
#include "ui/Button.h"
#include "ui/Labels.h"
#include "ui/Picker.h"
#include "ui/SettingControls.h"
#include "ui/ShortcutRecorderView.h"
#include "ui/Text.h"
#include "ui/Theme.h"

namespace lumo {

// A switch and the recorder of the shortcut that it turns on.
struct ShortcutsSettingsView::ShortcutRow {
    ShortcutEvent event;
    std::string_view title;
    Setting<bool> &isEnabled;
    Setting<std::int64_t> &keyCode;
    Setting<std::int64_t> &modifiers;
    std::string_view note = {};
};

namespace {

SettingsRow *makeModifierRow(std::string_view title, Setting<std::string> &setting,
                             Bindings &bindings, const Vocabulary &vocabulary) {
    auto *picker = new Picker(title);
    std::vector<std::string> names;
    std::ranges::transform(
        shakeModifierNames, std::back_inserter(names),
        [&vocabulary](std::string_view stored) { return modifierName(vocabulary, stored); });
    bindings.follow<std::string>(setting, [picker, names](const std::string &stored) {
        // What is none of these matches always, as "None" does.
        const auto *found = std::ranges::find(shakeModifierNames, stored);
        picker->setChoices(names, found == shakeModifierNames.end()
                                      ? 0
                                      : static_cast<int>(found - shakeModifierNames.begin()));
    });
    picker->onChosen = [&setting](std::size_t index) {
        setting.set(std::string(shakeModifierNames.at(index)));
    };
    return new SettingsRow(title, {}, picker);
}

} // namespace

SettingsRow *ShortcutsSettingsView::makeShortcutRow(const ShortcutRow &row,
                                                    const Platform &platform) {
    auto *toggle = new Switch;
    toggle->setAccessibleName(toQString(row.title));
    bindings_.bind(*toggle, row.isEnabled);
    auto *controls = new QWidget;
    auto *layout = new QHBoxLayout(controls);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(spacing::large);
    auto *recorder = new ShortcutRecorderView(platform, row.title, row.keyCode, row.modifiers);
    recorders_.push_back(recorder);
    layout->addWidget(recorder);
    layout->addWidget(toggle);
    auto *settingsRow = new SettingsRow(row.title, row.note, controls);
    const auto showNote = [settingsRow, toggle, note = row.note,
                           explanation = platform.vocabulary.recordingExplained](bool isTaken,
                                                                                 bool isRecording) {
        const auto text = isRecording && !explanation.empty() ? std::string(explanation)
                                                              : shortcutNote(note, isTaken);
        settingsRow->setNote(text);
        toggle->setAccessibleDescription(toQString(text));
    };
    auto &isTaken = shortcuts_.isTaken(row.event);
    auto &isRecording = recorder->isRecording();
    subscriptions_.push_back(isTaken.subscribe(
        [showNote, &isRecording](const bool &taken) { showNote(taken, isRecording.value()); }));
    subscriptions_.push_back(
        isRecording.subscribeToChanges([this, showNote, recorder, &isTaken](const bool &isOn) {
            showNote(isTaken.value(), isOn);
            if (isOn) {
                endOtherRecordings(*recorder);
            }
        }));
    return settingsRow;
}

void ShortcutsSettingsView::endOtherRecordings(const ShortcutRecorderView &recorder) {
    for (auto *other : recorders_) {
        if (other != &recorder && other->isRecording().value()) {
            other->isRecording().set(false);
        }
    }
}

ShortcutsSettingsView::ShortcutsSettingsView(const SettingsModel &model)
    : SettingsPage(title(SettingsTab::shortcuts))
    , shortcuts_(model.shortcuts)
    , bindings_(model.settings, model.platform.mainLoop) {
    auto &settings = model.settings;
    const auto &words = model.platform.vocabulary;
    auto *keys = addCard();
    for (const auto &row :
         {ShortcutRow{ShortcutEvent::toggle, "Enable Toggle Shortcut",
                      settings.toggleShortcutEnabled, settings.toggleShortcutKey,
                      settings.toggleShortcutModifiers},
          ShortcutRow{ShortcutEvent::peek, "Enable Peek Shortcut", settings.peekShortcutEnabled,
                      settings.peekShortcutKey, settings.peekShortcutModifiers,
                      "Peek is temporary and does not turn Lumo off."},
          ShortcutRow{ShortcutEvent::setCoverFromFrontmost, "Enable Set Cover Shortcut",
                      settings.coverSetShortcutEnabled, settings.coverSetShortcutKey,
                      settings.coverSetShortcutModifiers}}) {
        keys->addRow(makeShortcutRow(row, model.platform));
    }
    auto *shake = addCard();
    shake->addRow(makeToggleRow("Toggle Lumo with 4 quick mouse swipes",
                                settings.mouseShakeToggleEnabled, bindings_,
                                shakeNote(model.platform.capabilities)));
    shake->addRow(
        makeToggleRow("Shake Action: Toggle", settings.shakeToggleActionEnabled, bindings_));
    shake->addRow(
        makeModifierRow("Shake Toggle Modifier", settings.shakeToggleModifier, bindings_, words));
    shake->addRow(makeToggleRow("Shake Action: Peek", settings.shakeToReveal, bindings_));
    shake->addRow(
        makeModifierRow("Shake Peek Modifier", settings.shakePeekModifier, bindings_, words));
    shake->addRow(makeSliderRow("Shake Sensitivity", settings.shakeSensitivity, bindings_,
                                shakeSensitivityRange, percentText));

    auto *help = new QWidget;
    auto *lines = new QVBoxLayout(help);
    lines->setContentsMargins(0, 0, 0, 0);
    lines->setSpacing(spacing::small);
    for (const std::string_view line :
         {std::string_view(
              "Click a shortcut field, then press the key combination you want to use."),
          words.modifiersExplained,
          std::string_view(
              "Set Cover shortcut uses current frontmost app and enables Privacy Cover."),
          std::string_view("Peek only reveals temporarily; use Toggle to turn Lumo on or off.")}) {
        lines->addWidget(makeNote(line));
    }
    add(help);
    auto *reset = new Button("Reset to Defaults");
    QObject::connect(reset, &QPushButton::clicked, this,
                     [&settings] { resetShortcutsToDefaults(settings); });
    add(makeRow({reset}));
}

void ShortcutsSettingsView::showEvent(QShowEvent *event) {
    SettingsPage::showEvent(event);
    shortcuts_.retryTaken();
}

} // namespace lumo
