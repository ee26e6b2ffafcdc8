#include "ui/GeneralSettingsView.h"

#include "platform/Vocabulary.h"
#include "ui/Labels.h"
#include "ui/SettingControls.h"
#include "ui/Theme.h"

namespace lumo {

GeneralSettingsView::GeneralSettingsView(const SettingsModel &model)
    : SettingsPage(title(SettingsTab::general))
    , bindings_(model.settings, model.platform.mainLoop) {
    auto &settings = model.settings;
    const auto &words = model.platform.vocabulary;
    auto *start = addCard();
    auto *login = makeToggleRow(words.launchAtLogin, settings.launchAtLogin, bindings_);
    start->addRow(login);
    loginItemRefusal_ = model.loginItemRefusal.subscribe([login](const std::string &reason) {
        login->setNote(reason.empty() ? reason : "The system refuses this: " + reason);
    });
    start->addRow(makeToggleRow("Pause in fullscreen apps", settings.pauseInFullscreen, bindings_));
    addCard()->addRow(makeSliderRow("Peek Duration", settings.peekDuration, bindings_,
                                    peekDurationRange, secondsText));

    auto *footer = new QWidget;
    auto *lines = new QVBoxLayout(footer);
    lines->setSpacing(spacing::tight);
    for (const auto line : {std::string_view("Version " LUMO_VERSION), words.tagLine}) {
        auto *label = makeLabel(line, TextStyle::caption, role::secondaryText);
        label->setAlignment(Qt::AlignCenter);
        lines->addWidget(label);
    }
    addFooter(footer);
}

} // namespace lumo
