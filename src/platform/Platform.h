#pragma once

namespace lumo {

class Accessibility;
class Application;
class ApplicationStrips;
class DesktopChanges;
class EventMonitors;
class HotKeyService;
class Keyboard;
class Log;
class LoginItem;
class MainLoop;
class OverlayWindows;
class RemoteControl;
class Screens;
class StatusItem;
class UpdateFramework;
class UserDefaults;
class UserNotifications;
class WindowServer;
class Workspace;
struct Vocabulary;

// What this desktop can do, as probed once at start.
struct Capabilities {
    // Layers of the kind "backdrop" are drawn: the desktop behind an overlay can be filtered live.
    bool liveBackdrop = false;

    // Global monitors receive key presses.
    bool globalKeyMonitors = true;

    // The permission may come by itself a while after the start, as a window manager that starts
    // after this program does.
    bool permissionComesByItself = false;

    // The names of their owners tell the windows of system components from those of applications.
    // Where they do not, layers alone do.
    bool systemComponentsHaveNames = true;

    // This program is among the applications that it offers as Cover App.
    bool offersItself = true;

    // The system can be asked whether there is a newer version of this program.
    bool updates = true;

    // Global monitors receive the pointer's motion.
    bool globalPointerMonitors = true;
};

// Everything the program may ask of the desktop. Built once by main and handed down by reference;
// what it refers to outlives all that uses it.
struct Platform {
    Accessibility &accessibility;
    Application &application;
    ApplicationStrips &applicationStrips;
    EventMonitors &eventMonitors;
    HotKeyService &hotKeyService;
    Keyboard &keyboard;
    Log &log;
    LoginItem &loginItem;
    Log &loginItemLog; // the system's log, for what is wrong with the login item
    MainLoop &mainLoop;
    OverlayWindows &overlayWindows;
    Screens &screens;
    StatusItem &statusItem;
    UpdateFramework &updateFramework;
    UserDefaults &userDefaults;
    UserNotifications &userNotifications;
    const Vocabulary &vocabulary;
    WindowServer &windowServer;
    Workspace &workspace;
    Capabilities capabilities;
    DesktopChanges *desktopChanges = nullptr; // null where not every change is announced
    RemoteControl *remoteControl = nullptr;   // null where other programs can't address this one
};

} // namespace lumo
