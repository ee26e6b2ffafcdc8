#include "platform/freedesktop/DesktopVocabulary.h"

#include "platform/ShortcutModifiers.h"

namespace lumo::freedesktop {

namespace {

FirstStartWords firstStart() {
    FirstStartWords words;
    words.lines = {
        {"Turn Lumo on and off", "All but the window you work in recedes.",
         FirstStartPicture::toggleKeys},
        {"The dot in your panel", "Right-click it for the menu and the settings.",
         FirstStartPicture::dot},
        {"Emergency stop", "Turns everything off, whatever is in front.",
         FirstStartPicture::emergencyKeys},
    };
    words.withoutDot = {"Open the settings", "Start Lumo again: no panel here shows its dot."};
    words.begin = "Turn Lumo On";
    words.permission = {"exclamationmark.triangle.fill", "No window manager answers",
                        "It tells Lumo which window you work in."};
    words.checkAgain = "Check Again";
    words.readyTitle = "Lumo is ready";
    words.readyText =
        "Right-click the dot in your panel, or press {toggle} to turn Lumo on. Without "
        "a panel, start Lumo again for its settings.";
    return words;
}

// By the identifiers of desktop entries.
std::vector<PresetRule> whitelist() {
    return {
        {"org.gnome.Epiphany", "Web"},
        {"google-chrome", "Chrome"},
        {"chromium", "Chromium"},
        {"brave-browser", "Brave"},
        {"firefox-esr", "Firefox"},
        {"microsoft-edge", "Edge"},
        {"im.dino.Dino", "Dino"},
        {"jami", "Jami"},
        {"Zoom", "Zoom"},
        {"teams-for-linux", "Teams"},
        {"signal-desktop", "Signal"},
        {"slack", "Slack"},
        {"discord", "Discord"},
        {"org.gnome.Builder", "Builder"},
        {"jetbrains-idea", "IntelliJ IDEA"},
        {"jetbrains-pycharm", "PyCharm"},
        {"jetbrains-webstorm", "WebStorm"},
        {"code", "VS Code"},
        {"github-desktop", "GitHub Desktop"},
        {"sublime_text", "Sublime Text"},
        {"gimp", "GIMP"},
        {"org.inkscape.Inkscape", "Inkscape"},
        {"scribus", "Scribus"},
        {"org.kde.krita", "Krita"},
        {"libreoffice-startcenter", "LibreOffice"},
        {"libreoffice-writer", "Writer"},
        {"org.gnome.Notes", "Notes"},
        {"org.kde.korganizer", "KOrganizer"},
        {"org.gnome.Rhythmbox3", "Rhythmbox"},
        {"spotify", "Spotify"},
    };
}

std::vector<PresetRule> blacklist() {
    return {
        {"org.gnome.Nautilus", "Files"},    {"org.kde.plasmashell", "Plasma Panel"},
        {"org.gnome.Settings", "Settings"}, {"systemsettings", "System Settings"},
        {"org.kde.kdenlive", "Kdenlive"},   {"org.shotcut.Shotcut", "Shotcut"},
    };
}

Vocabulary makeVocabulary() {
    Vocabulary words;
    words.tagLine = "Focus and privacy for your desktop";
    words.launchAtLogin = "Start at login";
    words.modifiers = {
        {shortcutModifier::command, "Command", "Super", "Super"},
        {shortcutModifier::control, "Control", "Ctrl", "Ctrl"},
        {shortcutModifier::option, "Option", "Alt", "Alt"},
        {shortcutModifier::shift, "Shift", "Shift", "Shift"},
    };
    words.keySeparator = "+";
    words.modifiersExplained = "Ctrl, Alt, Shift, and Super combinations are supported.";
    words.emergencyModifiers = {"Ctrl", "Alt", "Super"};
    words.recordingExplained =
        "Hold Ctrl, Alt, Shift, or Super and press a key. Lumo can't see those "
        "that your desktop takes for itself.";
    words.showsAllShortcutsInMenu = true;
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

} // namespace lumo::freedesktop
