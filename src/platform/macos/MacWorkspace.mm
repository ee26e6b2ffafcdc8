#import "platform/macos/MacWorkspace.h"

#import "platform/macos/NativeValues.h"
#import "platform/macos/NotificationObserver.h"

#import <AppKit/AppKit.h>

#include <utility>

namespace lumo::macos {

static_assert(NSApplicationActivateAllWindows == 1);

namespace {

constexpr std::string_view accessibilitySettings =
    "x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility";

ActivationPolicy policyOf(NSRunningApplication *application) {
    switch (application.activationPolicy) {
    case NSApplicationActivationPolicyRegular:
        return ActivationPolicy::regular;
    case NSApplicationActivationPolicyAccessory:
        return ActivationPolicy::accessory;
    case NSApplicationActivationPolicyProhibited:
        break;
    }
    return ActivationPolicy::prohibited;
}

RunningApplication describe(NSRunningApplication *application) {
    return {.processIdentifier = application.processIdentifier,
            .bundleIdentifier = optionalText(application.bundleIdentifier),
            .localizedName = optionalText(application.localizedName),
            .activationPolicy = policyOf(application)};
}

Handle observeWorkspace(NSNotificationName name, std::function<void()> observer) {
    return observeNotification([[NSWorkspace sharedWorkspace] notificationCenter], name, nil,
                               std::move(observer));
}

// The bundles in the folder and in the folders right below it.
void addApplications(NSURL *folder, int depth, std::vector<InstalledApplication> &found) {
    NSFileManager *files = [NSFileManager defaultManager];
    NSArray<NSURL *> *entries =
        [files contentsOfDirectoryAtURL:folder
             includingPropertiesForKeys:nil
                                options:NSDirectoryEnumerationSkipsHiddenFiles
                                  error:nil];
    for (NSURL *entry in entries) {
        if (![entry.pathExtension isEqualToString:@"app"]) {
            if (depth > 0 && entry.hasDirectoryPath) {
                addApplications(entry, depth - 1, found);
            }
            continue;
        }
        NSString *identifier = [[NSBundle bundleWithURL:entry] bundleIdentifier];
        NSString *path = entry.path;
        if (identifier != nil && path != nil) {
            // The extension is part of it for users who have extensions shown.
            NSString *name = [files displayNameAtPath:path];
            if ([name hasSuffix:@".app"]) {
                name = [name stringByDeletingPathExtension];
            }
            found.push_back({text(identifier), text(name)});
        }
    }
}

} // namespace

MacWorkspace::MacWorkspace()
    : own_(describe([NSRunningApplication currentApplication])) {
    // Known from the beginning, while the system registers a program only once it has been started.
    own_.processIdentifier = [[NSProcessInfo processInfo] processIdentifier];
    own_.bundleIdentifier = optionalText([[NSBundle mainBundle] bundleIdentifier]);
    // Process identifiers come back one day with another application.
    terminations_ = onDidTerminateApplication([this] { byProcess_.clear(); });
}

const RunningApplication *MacWorkspace::frontmostApplication() const {
    NSRunningApplication *application = [[NSWorkspace sharedWorkspace] frontmostApplication];
    if (application == nil) {
        return nullptr;
    }
    auto &known = byProcess_[application.processIdentifier];
    known = describe(application);
    return &known;
}

const std::vector<RunningApplication> &MacWorkspace::runningApplications() const {
    std::vector<RunningApplication> running;
    for (NSRunningApplication *application in [[NSWorkspace sharedWorkspace] runningApplications]) {
        running.push_back(describe(application));
    }
    // The system changes the list between turns only, so what was handed out in this one stays.
    if (running != running_) {
        running_ = std::move(running);
    }
    return running_;
}

const RunningApplication *MacWorkspace::runningApplication(std::int32_t processIdentifier) const {
    NSRunningApplication *application =
        [NSRunningApplication runningApplicationWithProcessIdentifier:processIdentifier];
    if (application == nil) {
        return nullptr;
    }
    auto &known = byProcess_[processIdentifier];
    known = describe(application);
    return &known;
}

std::vector<InstalledApplication> MacWorkspace::installedApplications() const {
    std::vector<InstalledApplication> found;
    NSArray<NSURL *> *folders =
        [[NSFileManager defaultManager] URLsForDirectory:NSApplicationDirectory
                                               inDomains:NSAllDomainsMask];
    for (NSURL *folder in folders) {
        addApplications(folder, 1, found);
    }
    return found;
}

bool MacWorkspace::activate(std::int32_t processIdentifier, HiddenApplication /*hidden*/) {
    NSRunningApplication *application =
        [NSRunningApplication runningApplicationWithProcessIdentifier:processIdentifier];
    return [application activateWithOptions:NSApplicationActivateAllWindows];
}

bool MacWorkspace::openSystemSettings() {
    NSURL *address = [NSURL URLWithString:nativeString(accessibilitySettings)];
    return address != nil && [[NSWorkspace sharedWorkspace] openURL:address];
}

Handle MacWorkspace::onDidActivateApplication(std::function<void()> observer) {
    return observeWorkspace(NSWorkspaceDidActivateApplicationNotification, std::move(observer));
}

Handle MacWorkspace::onDidTerminateApplication(std::function<void()> observer) {
    return observeWorkspace(NSWorkspaceDidTerminateApplicationNotification, std::move(observer));
}

Handle MacWorkspace::onActiveSpaceDidChange(std::function<void()> observer) {
    return observeWorkspace(NSWorkspaceActiveSpaceDidChangeNotification, std::move(observer));
}

} // namespace lumo::macos
