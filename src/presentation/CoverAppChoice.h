#pragma once

#include "platform/Platform.h"

#include <optional>
#include <string>
#include <vector>

namespace lumo {

class SettingsStore;

// An application that can be made the Cover App.
struct CoverAppChoice {
    std::string id; // equal to bundleID
    std::string bundleID;
    std::string displayName;

    bool operator==(const CoverAppChoice &) const = default;
};

// The running applications with a window on screen that is worth covering for, once each, and the
// Cover App in any case; by name.
std::vector<CoverAppChoice> coverAppChoices(const Platform &platform,
                                            const SettingsStore &settings);

// The name of an application that runs or could be started, its bundle identifier when it tells
// none; absent when there is no such application.
std::optional<std::string> applicationName(const Workspace &workspace, const std::string &bundleID);

// The name of the Cover App: the stored one, else, on desktops that refer to applications by name,
// that of the running or installed application, else its bundle identifier. Empty without a Cover
// App.
std::string coverAppName(const Platform &platform, const SettingsStore &settings);

} // namespace lumo
