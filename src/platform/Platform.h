#pragma once

namespace lumo {

class Accessibility;
class EventMonitors;
class HotKeyService;
class Log;
class MainLoop;
class OverlayWindows;
class PreferenceDomains;
class Screens;
class UserDefaults;
class UserNotifications;
class WindowServer;
class Workspace;

// What this desktop can do, as probed once at start.
struct Capabilities {
    // Layers of the kind "backdrop" are drawn: the desktop behind an overlay can be filtered live.
    bool liveBackdrop = false;

    // Global monitors of key presses hear of them.
    bool globalKeyMonitors = true;
};

// Everything the program may ask of the desktop. Built once by main and handed down by reference;
// what it refers to outlives all that uses it.
struct Platform {
    Accessibility &accessibility;
    EventMonitors &eventMonitors;
    HotKeyService &hotKeyService;
    Log &log;
    MainLoop &mainLoop;
    OverlayWindows &overlayWindows;
    PreferenceDomains &preferenceDomains;
    Screens &screens;
    UserDefaults &userDefaults;
    UserNotifications &userNotifications;
    WindowServer &windowServer;
    Workspace &workspace;
    Capabilities capabilities;
};

} // namespace lumo
