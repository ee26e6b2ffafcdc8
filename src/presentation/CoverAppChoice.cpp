#include "presentation/CoverAppChoice.h"

#include "platform/Vocabulary.h"
#include "platform/WindowServer.h"
#include "platform/Workspace.h"
#include "presentation/Text.h"
#include "settings/SettingsStore.h"
#include "windows/OrdinaryWindow.h"

#include <algorithm>
#include <cstdint>
#include <set>

namespace lumo {

namespace {

constexpr double smallestWindow = 80; // points, of either side

std::set<std::int32_t> ownersOfOrdinaryWindows(const WindowServer &windowServer) {
    std::set<std::int32_t> owners;
    if (const auto records = windowServer.onScreenWindows()) {
        for (const auto &record : *records) {
            if (const auto owner = ownerOfOrdinaryWindow(record, smallestWindow)) {
                owners.insert(*owner);
            }
        }
    }
    return owners;
}

} // namespace

std::optional<std::string> applicationName(const Workspace &workspace,
                                           const std::string &bundleID) {
    const auto &running = workspace.runningApplications();
    const auto found =
        std::ranges::find(running, std::optional(bundleID), &RunningApplication::bundleIdentifier);
    if (found != running.end() && found->localizedName) {
        return found->localizedName;
    }
    const auto installed = workspace.installedApplications();
    const auto offered =
        std::ranges::find(installed, bundleID, &InstalledApplication::bundleIdentifier);
    if (offered != installed.end()) {
        return offered->localizedName;
    }
    return found != running.end() ? std::optional(bundleID) : std::nullopt;
}

std::string coverAppName(const Platform &platform, const SettingsStore &settings) {
    const auto bundleID = settings.privacyCoverBundleID.value().value_or("");
    const auto stored = settings.privacyCoverDisplayName.value().value_or("");
    if (bundleID.empty() || !stored.empty()) {
        return stored;
    }
    return platform.vocabulary.appNaming == AppNaming::displayName
               ? applicationName(platform.workspace, bundleID).value_or(bundleID)
               : bundleID;
}

std::vector<CoverAppChoice> coverAppChoices(const Platform &platform,
                                            const SettingsStore &settings) {
    std::vector<CoverAppChoice> choices;
    const auto add = [&choices](const std::string &bundleID,
                                const std::optional<std::string> &name) {
        if (std::ranges::find(choices, bundleID, &CoverAppChoice::id) == choices.end()) {
            choices.push_back({bundleID, bundleID, name.value_or(bundleID)});
        }
    };
    const auto owners = ownersOfOrdinaryWindows(platform.windowServer);
    for (const auto &application : platform.workspace.runningApplications()) {
        const bool isOwn =
            application.processIdentifier == platform.workspace.ownApplication().processIdentifier;
        if (application.activationPolicy != ActivationPolicy::prohibited &&
            (!isOwn || platform.capabilities.offersItself) && application.bundleIdentifier &&
            owners.contains(application.processIdentifier)) {
            add(*application.bundleIdentifier, application.localizedName);
        }
    }
    if (const auto &cover = settings.privacyCoverBundleID.value(); cover && !cover->empty()) {
        add(*cover, coverAppName(platform, settings));
    }
    std::ranges::sort(choices, comesBefore, &CoverAppChoice::displayName);
    return choices;
}

} // namespace lumo
