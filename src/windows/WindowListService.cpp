#include "windows/WindowListService.h"

#include "platform/Workspace.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

namespace lumo {

namespace {

// The least size, in points, of a window that a user works in.
constexpr Size primaryContentSize{300, 200};

std::optional<std::int32_t> ownerOf(const Dictionary &record) {
    const Value *value = record.find(windowKey::ownerPID);
    return value ? value->integer32() : std::nullopt;
}

// Looks each process up once, for as long as it lives: one pass over the window list.
class BundleIdentifiers {
  public:
    explicit BundleIdentifiers(const Workspace &workspace)
        : workspace_(workspace) {}

    std::optional<std::string> of(std::int32_t process) {
        auto position = std::ranges::lower_bound(known_, process, {}, &Known::process);
        if (position == known_.end() || position->process != process) {
            const RunningApplication *application = workspace_.runningApplication(process);
            position = known_.insert(position, {process, application});
        }
        return position->application ? position->application->bundleIdentifier : std::nullopt;
    }

  private:
    struct Known {
        std::int32_t process;
        const RunningApplication *application; // null when the process is no application
    };

    const Workspace &workspace_;
    std::vector<Known> known_; // sorted by process
};

} // namespace

WindowListService::WindowListService(const WindowServer &windowServer, const Workspace &workspace)
    : windowServer_(windowServer)
    , workspace_(workspace) {
}

const std::vector<WindowListService::Reading> &WindowListService::readings() const {
    auto records = windowServer_.onScreenWindows();
    if (records == records_) {
        return readings_;
    }
    records_ = std::move(records);
    readings_.clear();
    if (records_) {
        for (const auto &record : *records_) {
            const Value *number = record.find(windowKey::number);
            const auto zOrder = static_cast<std::int64_t>(readings_.size());
            readings_.push_back({ownerOf(record), number ? number->unsigned32() : std::nullopt,
                                 WindowDescriptor::from(record, zOrder, std::nullopt)});
        }
    }
    return readings_;
}

std::vector<WindowDescriptor> WindowListService::allVisibleWindows() const {
    const auto &all = readings();
    std::vector<WindowDescriptor> windows;
    windows.reserve(all.size());
    BundleIdentifiers bundleIdentifiers(workspace_);
    for (const auto &reading : all) {
        if (reading.window) {
            windows.push_back(*reading.window);
            windows.back().bundleID = bundleIdentifiers.of(windows.back().ownerPID);
        }
    }
    return windows;
}

std::vector<std::uint32_t>
WindowListService::windowIDs(const RunningApplication &application) const {
    std::vector<std::uint32_t> numbers;
    for (const auto &reading : readings()) {
        if (reading.owner == application.processIdentifier && reading.number) {
            numbers.push_back(*reading.number);
        }
    }
    return numbers;
}

bool WindowListService::isSystemWindow(std::string_view ownerName) {
    return std::ranges::find(systemOwnerNames, ownerName) != systemOwnerNames.end() ||
           systemOwnerFragments.anyIn(ownerName);
}

bool WindowListService::isTransientWindow(std::string_view name) {
    return transientTitleFragments.anyIn(name);
}

bool WindowListService::isPrimaryContentWindow(const WindowDescriptor &window) {
    if (window.name && isTransientWindow(*window.name)) {
        return false;
    }
    return window.bounds.width >= primaryContentSize.width &&
           window.bounds.height >= primaryContentSize.height;
}

} // namespace lumo
