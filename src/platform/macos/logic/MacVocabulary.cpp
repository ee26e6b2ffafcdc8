#include "platform/macos/logic/MacVocabulary.h"

#include "platform/ShortcutModifiers.h"

namespace lumo::macos {

namespace {

FirstStartWords firstStart() {
    FirstStartWords words;
    words.symbol = "hand.raised.fill";
    words.need = "Lumo needs the following permission to work:";
    words.permission = {"hand.point.up.left.fill", "Accessibility Permission",
                        "Used to detect the active window and apply the focus effect correctly."};
    words.showsGrantedPermission = true;
    words.openSettings = "Open System Settings";
    words.checkAgain = "I Granted Access, Continue";
    words.granted = "Access is granted. Close this window to start.";
    return words;
}

std::vector<PresetRule> whitelist() {
    return {
        {"com.apple.Safari", "Safari"},
        {"com.google.Chrome", "Chrome"},
        {"com.google.Chrome.canary", "Chrome Canary"},
        {"com.brave.Browser", "Brave"},
        {"org.mozilla.firefox", "Firefox"},
        {"com.microsoft.edgemac", "Edge"},
        {"com.apple.iChat", "Messages"},
        {"com.apple.FaceTime", "FaceTime"},
        {"us.zoom.xos", "Zoom"},
        {"com.microsoft.teams", "Teams"},
        {"com.google.hangouts", "Hangouts"},
        {"com.slack.slack", "Slack"},
        {"com.hnc.Discord", "Discord"},
        {"com.apple.dt.Xcode", "Xcode"},
        {"com.jetbrains.intellij", "IntelliJ IDEA"},
        {"com.jetbrains.pycharm", "PyCharm"},
        {"com.jetbrains.WebStorm", "WebStorm"},
        {"com.microsoft.VSCode", "VS Code"},
        {"com.github.GitHubClient", "GitHub Desktop"},
        {"com.sublimetext.4", "Sublime Text"},
        {"com.adobe.Photoshop", "Photoshop"},
        {"com.adobe.illustrator", "Illustrator"},
        {"com.figma.Desktop", "Figma"},
        {"com.bohemiancoding.sketch3", "Sketch"},
        {"com.apple.iWork.Pages", "Pages"},
        {"com.microsoft.Word", "Word"},
        {"com.culturedcode.ThingsMac", "Things 3"},
        {"com.omnigroup.OmniFocus3.MacAppStore", "OmniFocus"},
        {"com.apple.Music", "Music"},
        {"com.spotify.client", "Spotify"},
    };
}

std::vector<PresetRule> blacklist() {
    return {
        {"com.apple.finder", "Finder"},
        {"com.apple.dock", "Dock"},
        {"com.apple.systempreferences", "System Settings"},
        {"com.apple.controlcenter", "Control Center"},
        {"com.apple.iMovieApp", "iMovie"},
        {"com.apple.FinalCut", "Final Cut Pro"},
    };
}

Vocabulary makeVocabulary() {
    Vocabulary words;
    words.tagLine = "Focus and privacy for your Mac";
    words.launchAtLogin = "Launch at login";
    words.modifiers = {
        {shortcutModifier::command, "Command", "Command", "\u2318"},
        {shortcutModifier::option, "Option", "Option", "\u2325"},
        {shortcutModifier::control, "Control", "Control", "\u2303"},
        {shortcutModifier::shift, "Shift", "Shift", "\u21E7"},
    };
    words.modifiersExplained = "Command, Option, Control, and Shift combinations are supported.";
    words.appNaming = AppNaming::bundleIdentifier;
    words.firstStart = firstStart();
    words.whitelist = whitelist();
    words.blacklist = blacklist();
    return words;
}

} // namespace

const Vocabulary &vocabulary() {
    static const Vocabulary words = makeVocabulary();
    return words;
}

} // namespace lumo::macos
