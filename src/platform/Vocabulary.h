#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace lumo {

// A modifier key of shortcuts.
struct ModifierWords {
    std::int64_t bit = 0;         // of shortcutModifier
    std::string_view storedName;  // under which the settings keep it
    std::string_view name;        // by itself
    std::string_view inShortcuts; // in a shortcut
};

// An application for which there is a rule from the start.
struct PresetRule {
    std::string_view bundleID;
    std::string_view displayName;
};

// A symbol, by the name under which the interface has it, with two texts beside it.
struct ExplainedSymbol {
    std::string_view symbol;
    std::string_view title;
    std::string_view description;
};

// What a line of the first start's page shows beside its words.
enum class FirstStartPicture { toggleKeys, dot, emergencyKeys };

struct FirstStartLine {
    std::string_view title;
    std::string_view description;
    FirstStartPicture picture = {};
};

// What the page of the first start says.
struct FirstStartWords {
    // At the top of the page; empty for the program's own icon.
    std::string_view symbol;
    // What the program does and how it is used.
    std::vector<FirstStartLine> lines;
    // In place of the line with the dot where the desktop shows none; without its picture.
    FirstStartLine withoutDot;
    // The button that turns the effect on and closes the page; empty where closing is all there is.
    std::string_view begin;

    // What the program needs of the desktop.
    std::string_view need; // above it; empty for nothing
    ExplainedSymbol permission;
    bool showsGrantedPermission = false; // else only while it is missing
    std::string_view openSettings;       // empty where no page of the settings grants it
    std::string_view checkAgain;
    std::string_view granted; // once it is there; empty for nothing

    // A notification when the page was closed without beginning; empty for none. {toggle} stands
    // for the shortcut that turns the effect on and off.
    std::string_view readyTitle;
    std::string_view readyText;
};

// How an application is referred to beside its row.
enum class AppNaming { bundleIdentifier, displayName };

// The words in which this desktop's people are spoken to, where they differ between desktops. Plain
// values that never change while the program runs.
struct Vocabulary {
    std::string_view tagLine;
    std::string_view launchAtLogin;

    // In the order in which a shortcut is written, and what stands between its keys.
    std::vector<ModifierWords> modifiers;
    std::string_view keySeparator;
    // Those that the emergency stop takes, in the order in which it is written.
    std::vector<std::string_view> emergencyModifiers;
    std::string_view modifiersExplained;
    std::string_view recordingExplained;  // while a shortcut is recorded; empty for nothing
    bool showsAllShortcutsInMenu = false; // else that for the Cover App alone

    AppNaming appNaming = AppNaming::displayName;
    FirstStartWords firstStart;

    // The rules that apply while none are stored.
    std::vector<PresetRule> whitelist;
    std::vector<PresetRule> blacklist;
};

} // namespace lumo
