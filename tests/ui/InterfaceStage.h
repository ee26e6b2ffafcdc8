#pragma once

#include "ScriptedDesktop.h"
#include "input/ShortcutManager.h"
#include "platform/macos/logic/MacVocabulary.h"
#include "presentation/UserInterface.h"
#include "settings/SettingsStore.h"
#include "support/NotificationCenter.h"
#include "windows/PermissionManager.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace lumo::test {

// What the views are given, on a scripted desktop with a few applications, and what they asked for.
struct InterfaceStage {
    explicit InterfaceStage(const Vocabulary &words = macos::vocabulary());

    SettingsModel settingsModel();
    GuidanceModel guidanceModel();

    ScriptedDesktop desktop;
    SettingsStore settings{desktop.platform()};
    ShortcutManager shortcuts{desktop.platform(), settings};
    NotificationCenter notifications;
    PermissionManager permission{desktop.platform(), notifications};
    Published<SettingsTab> selectedTab{SettingsTab::general};
    Published<std::string> loginItemRefusal{{}};
    std::vector<std::string> actions; // of the popover's rows and the Rules page, by their names
    std::vector<std::optional<CoverAppChoice>> chosenCovers;
    std::unique_ptr<StatusMenu> menu;
};

} // namespace lumo::test
