#include "ui/RulesSettingsView.h"

#include "presentation/RuleList.h"
#include "presentation/SettingsTexts.h"
#include "settings/CoverLockPreset.h"
#include "ui/Button.h"
#include "ui/Labels.h"
#include "ui/Picker.h"
#include "ui/RuleListView.h"
#include "ui/SettingControls.h"
#include "ui/Symbols.h"
#include "ui/Text.h"
#include "ui/Theme.h"

namespace lumo {

namespace {

std::string_view titleOf(MultiScreenMode mode) {
    return mode == MultiScreenMode::perScreen ? "Per Screen" : "Global";
}

} // namespace

RulesSettingsView::RulesSettingsView(const SettingsModel &model)
    : SettingsPage(title(SettingsTab::rules))
    , model_(model)
    , bindings_(model.settings, model.platform.mainLoop) {
    addPrivacyCover();
    addRuleLists();
    refreshAvailableApps();
    bindings_.whenSettled([this] { showCoverApp(); });
}

void RulesSettingsView::addPrivacyCover() {
    auto &settings = model_.settings;
    auto *cover = addCard();
    cover->addRow(makeToggleRow("Use Privacy Cover", settings.privacyCoverEnabled, bindings_,
                                "Choose one app to stay clear while other windows are blurred."));
    coverApp_ = new Picker("Cover App");
    coverApp_->onChosen = [this](std::size_t index) {
        model_.selectCoverApp(index == 0 ? std::nullopt
                                         : std::optional(availableApps_.at(index - 1)));
    };
    auto *coverRow = new SettingsRow("Cover App", {}, coverApp_);
    coverRow->addLine(makeCoverAppStates());
    coverRow->addLine(makeCoverAppButtons());
    cover->addRow(coverRow);

    auto *options = addCard();
    options->addRow(makeToggleRow("Bring Cover App forward when turning Lumo on",
                                  settings.privacyCoverBringForwardOnStart, bindings_));
    options->addRow(makeToggleRow("Keep trying to keep Cover App on top",
                                  settings.privacyCoverKeepAbove, bindings_));
    options->addRow(
        makeToggleRow("Auto-assign frontmost app if Cover App is empty when turning Lumo on",
                      settings.privacyCoverAutoAssignOnEnable, bindings_));

    auto *modes = addCard();
    std::vector<std::string_view> presets;
    std::ranges::transform(allCoverLockPresets, std::back_inserter(presets),
                           [](CoverLockPreset preset) { return lumo::title(preset); });
    auto *stability = new SegmentedPicker("Lock Stability", presets);
    stability->onChosen = [&settings](std::size_t index) {
        settings.coverWindowLockDuration.set(duration(allCoverLockPresets.at(index)));
    };
    auto *detail = makeNote({});
    bindings_.follow<double>(
        settings.coverWindowLockDuration, [stability, detail](const double &seconds) {
            stability->setChosen(static_cast<std::size_t>(nearestCoverLockPreset(seconds)));
            detail->setText(toQString(coverLockDetail(seconds)));
        });
    auto *stabilityRow = new SettingsRow("Lock Stability", {}, stability);
    stabilityRow->addLine(detail);
    modes->addRow(stabilityRow);
    auto *screens = new SettingsRow("Multi-screen Mode", {},
                                    makeSegments("Multi-screen Mode", settings.multiScreenMode,
                                                 bindings_, allMultiScreenModes, titleOf));
    screens->addLine(makeNote("Per Screen locks focus per display. Global uses one focus target "
                              "across all displays."));
    modes->addRow(screens);
    modes->addRow(makeConflictHint());
}

QWidget *RulesSettingsView::makeCoverAppStates() {
    auto *states = new QWidget;
    auto *lines = new QVBoxLayout(states);
    lines->setContentsMargins(0, 0, 0, 0);
    lines->setSpacing(3);
    currentCoverApp_ = new ElidedLabel(TextStyle::note, role::secondaryText);
    auto *runtime = new ElidedLabel(TextStyle::note, role::secondaryText);
    bindings_.whenSettled([this, runtime] {
        runtime->setFullText(QStringLiteral("Runtime: ") +
                             toQString(privacyCoverStatus(model_.settings)));
    });
    lines->addWidget(currentCoverApp_);
    lines->addWidget(runtime);
    return states;
}

QWidget *RulesSettingsView::makeCoverAppButtons() {
    auto *useFrontmost = new Button("Use Frontmost App");
    QObject::connect(useFrontmost, &QPushButton::clicked, this,
                     [this] { model_.useFrontmostApp(); });
    auto *refresh = new Button("Refresh App List");
    QObject::connect(refresh, &QPushButton::clicked, this, [this] {
        refreshAvailableApps();
        showCoverApp();
    });
    auto *buttons = makeRow({useFrontmost, refresh});
    buttons->layout()->setContentsMargins(0, 6, 0, 2);
    return buttons;
}

QWidget *RulesSettingsView::makeConflictHint() {
    auto *hint = new QWidget;
    auto *row = new QHBoxLayout(hint);
    row->setContentsMargins(mirrored(16, spacing::medium, 10, spacing::medium));
    row->setSpacing(spacing::medium);
    row->addWidget(new SymbolView(symbol::warning, 17, role::warningText));
    auto *text = makeLabel("Cover App is set. Per Screen may still appear globally locked.",
                           TextStyle::note, role::warningText);
    text->setWordWrap(true);
    row->addWidget(text, 1);
    auto *clear = new Button("Clear Cover App", Button::Kind::borderless);
    QObject::connect(clear, &QPushButton::clicked, this,
                     [this] { model_.selectCoverApp(std::nullopt); });
    row->addWidget(clear);
    bindings_.whenSettled(
        [this, hint] { hint->setVisible(shouldShowCoverConflictHint(model_.settings)); });
    return hint;
}

void RulesSettingsView::refreshAvailableApps() {
    availableApps_ = coverAppChoices(model_.platform, model_.settings);
}

// "None", the applications, and which of them is chosen. A Cover App that was chosen elsewhere
// joins the list.
void RulesSettingsView::showCoverApp() {
    const auto cover = model_.settings.privacyCoverBundleID.value().value_or("");
    const auto position = [&] {
        return std::ranges::find_if(
                   availableApps_,
                   [&cover](const CoverAppChoice &choice) { return choice.bundleID == cover; }) -
               availableApps_.begin();
    };
    const auto missing = [&] { return position() == std::ssize(availableApps_); };
    if (!cover.empty() && missing()) {
        refreshAvailableApps();
    }
    std::vector<std::string> names{"None"};
    for (const auto &choice : availableApps_) {
        names.push_back(choice.displayName);
    }
    coverApp_->setChoices(names, !missing() ? static_cast<int>(position()) + 1 : 0);
    currentCoverApp_->setFullText(
        toQString("Current Cover App: " +
                  selectedCoverAppName(model_.platform, model_.settings, availableApps_)));
}

void RulesSettingsView::addRuleLists() {
    auto &settings = model_.settings;
    addHeading("App Rules");
    auto *lists = addCard();
    auto *mode = new SegmentedPicker("Rule list", {"Whitelist", "Blacklist"});
    mode->onChosen = [&settings](std::size_t index) {
        settings.useWhitelistMode.set(static_cast<RuleListMode>(index) == RuleListMode::whitelist);
    };
    auto *explanation = makeNote({});
    bindings_.follow<bool>(settings.useWhitelistMode, [mode, explanation](const bool &isWhitelist) {
        const auto shown = isWhitelist ? RuleListMode::whitelist : RuleListMode::blacklist;
        mode->setChosen(static_cast<std::size_t>(shown));
        explanation->setText(toQString(ruleModeExplanation(isWhitelist)));
    });
    lists->addRow(makeStack({makeRow({mode}), explanation}));
    lists->addRow(new RuleListView(model_.platform, settings));
}

} // namespace lumo
