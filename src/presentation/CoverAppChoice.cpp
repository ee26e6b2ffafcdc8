#include "presentation/CoverAppChoice.h"

#include "platform/WindowServer.h"
#include "platform/Workspace.h"
#include "presentation/Text.h"
#include "settings/SettingsStore.h"

#include <algorithm>
#include <cstdint>
#include <set>
#include <string_view>

namespace lumo {

namespace {

constexpr double smallestWindow = 80; // points, of either side

// The process that shows the window, if it is an ordinary one that can be seen.
std::optional<std::int32_t> ownerOfOrdinaryWindow(const Dictionary &record) {
    const auto *owner = record.find(windowKey::ownerPID);
    const auto *layer = record.find(windowKey::layer);
    const auto *alpha = record.find(windowKey::alpha);
    const auto *bounds = record.find(windowKey::bounds);
    const auto *sides = bounds != nullptr ? bounds->dictionary() : nullptr;
    if (owner == nullptr || sides == nullptr || (layer != nullptr && layer->integer() != 0) ||
        (alpha != nullptr && alpha->number().value_or(0) <= 0)) {
        return std::nullopt;
    }
    const auto isLargeEnough = [sides](std::string_view side) {
        const auto *length = sides->find(side);
        return length != nullptr && length->number().value_or(0) >= smallestWindow;
    };
    return isLargeEnough(boundsKey::width) && isLargeEnough(boundsKey::height) ? owner->integer32()
                                                                               : std::nullopt;
}

std::set<std::int32_t> ownersOfOrdinaryWindows(const WindowServer &windowServer) {
    std::set<std::int32_t> owners;
    if (const auto records = windowServer.onScreenWindows()) {
        for (const auto &record : *records) {
            if (const auto owner = ownerOfOrdinaryWindow(record)) {
                owners.insert(*owner);
            }
        }
    }
    return owners;
}

} // namespace

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
        if (application.activationPolicy != ActivationPolicy::prohibited &&
            application.bundleIdentifier && owners.contains(application.processIdentifier)) {
            add(*application.bundleIdentifier, application.localizedName);
        }
    }
    if (const auto &cover = settings.privacyCoverBundleID.value()) {
        add(*cover, settings.privacyCoverDisplayName.value());
    }
    std::ranges::sort(choices, comesBefore, &CoverAppChoice::displayName);
    return choices;
}

} // namespace lumo
