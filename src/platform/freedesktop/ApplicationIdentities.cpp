#include "platform/freedesktop/ApplicationIdentities.h"

#include "platform/freedesktop/ProgramIdentity.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace lumo::freedesktop {

namespace {

// The name of the program that a process runs; empty when it can't be told.
std::string executableOf(std::int32_t process) {
    std::error_code error;
    const auto path =
        std::filesystem::read_symlink("/proc/" + std::to_string(process) + "/exe", error);
    return error ? std::string() : path.filename().string();
}

} // namespace

ApplicationIdentities::ApplicationIdentities()
    : own_{getpid(), program::identifier, program::name, ActivationPolicy::accessory} {
}

RunningApplication ApplicationIdentities::identify(std::int32_t process, const Names &names,
                                                   bool isInTaskbars) {
    auto &identity = identities_[process];
    if (identity.revision != revision() || identity.names != names) {
        identity = {names, revision(), lookUp(process, names)};
    }
    auto application = identity.application;
    application.activationPolicy =
        isInTaskbars ? ActivationPolicy::regular : ActivationPolicy::accessory;
    return application;
}

RunningApplication ApplicationIdentities::lookUp(std::int32_t process, const Names &names) {
    if (process == own_.processIdentifier) {
        return own_;
    }
    RunningApplication application{process, std::nullopt, std::nullopt};
    const auto *entry = entries_.find(names.className, names.instanceName, executableOf(process));
    if (entry != nullptr) {
        application.bundleIdentifier = entry->identifier;
        application.localizedName = entry->name;
    } else if (!names.className.empty()) {
        application.bundleIdentifier = names.className;
        application.localizedName = names.className;
    }
    return application;
}

void ApplicationIdentities::keepOnly(const std::vector<RunningApplication> &running) {
    std::erase_if(identities_, [&](const auto &identity) {
        return applicationOf(identity.first, running) == nullptr;
    });
}

std::vector<InstalledApplication> ApplicationIdentities::installed() {
    std::vector<InstalledApplication> applications;
    for (const auto *entry : entries_.inMenu()) {
        applications.push_back({entry->identifier, entry->name});
    }
    return applications;
}

const RunningApplication *applicationOf(std::int32_t process,
                                        const std::vector<RunningApplication> &applications) {
    const auto found =
        std::ranges::lower_bound(applications, process, {}, &RunningApplication::processIdentifier);
    return found != applications.end() && found->processIdentifier == process ? &*found : nullptr;
}

} // namespace lumo::freedesktop
