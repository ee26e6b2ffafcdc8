#include "InterfaceStage.h"

namespace lumo::test {

InterfaceStage::InterfaceStage(const Vocabulary &words)
    : desktop(1000, words) {
    desktop.plugDisplay(1, {0, 0, 1920, 1080});
    for (const auto *name :
         {"Browser", "Calendar", "Editor", "Mail", "Music", "Notes", "Terminal"}) {
        const auto process = desktop.launch(name, "org.example." + std::string(name));
        desktop.openWindow(process, {100, 100, 800, 600}, name);
    }
    desktop.installed = {{"org.example.Maps", "Maps"}, {"org.example.Photos", "Photos"}};
    const auto noting = [this](const char *name) {
        return [this, name] { actions.emplace_back(name); };
    };
    StatusMenuActions rows;
    rows.onToggle = noting("toggle");
    rows.onPeek = noting("peek");
    rows.onSettings = noting("settings");
    rows.onCheckForUpdates = noting("updates");
    rows.onShortcuts = noting("shortcuts");
    rows.onPrivacyCover = noting("privacyCover");
    rows.onSetCoverFromFrontmost = noting("setCover");
    rows.onSelectCoverApp = [this](const auto &choice) { chosenCovers.push_back(choice); };
    rows.onQuit = noting("quit");
    menu = std::make_unique<StatusMenu>(desktop.platform(), settings, rows);
}

GuidanceModel InterfaceStage::guidanceModel() {
    return {desktop.platform(), settings, permission, [this] { actions.emplace_back("begin"); }};
}

SettingsModel InterfaceStage::settingsModel() {
    return {desktop.platform(),
            settings,
            shortcuts,
            selectedTab,
            loginItemRefusal,
            [this] { actions.emplace_back("useFrontmost"); },
            [this](const std::optional<CoverAppChoice> &choice) {
                chosenCovers.push_back(choice);
                settings.privacyCoverBundleID.set(choice ? std::optional(choice->bundleID)
                                                         : std::nullopt);
                settings.privacyCoverDisplayName.set(choice ? std::optional(choice->displayName)
                                                            : std::nullopt);
            }};
}

} // namespace lumo::test
