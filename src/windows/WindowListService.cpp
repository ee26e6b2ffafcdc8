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

// Looks each process up once, for as long as it lives: one pass over the window list.
class BundleIdentifiers {
  public:
    explicit BundleIdentifiers(const Workspace &workspace)
        : workspace_(workspace) {}

    // Valid until control returns to the main loop.
    const std::optional<std::string> &of(std::int32_t process) {
        static const std::optional<std::string> none;
        auto position = std::ranges::lower_bound(known_, process, {}, &Known::process);
        if (position == known_.end() || position->process != process) {
            const RunningApplication *application = workspace_.runningApplication(process);
            position = known_.insert(position, {process, application});
        }
        return position->application ? position->application->bundleIdentifier : none;
    }

  private:
    struct Known {
        std::int32_t process;
        const RunningApplication *application; // null when the process is no application
    };

    const Workspace &workspace_;
    std::vector<Known> known_; // sorted by process
};

std::vector<WindowDescriptor> described(const WindowRecords &records,
                                        BundleIdentifiers &bundleIdentifiers) {
    std::vector<WindowDescriptor> windows;
    windows.reserve(records.size());
    std::int64_t zOrder = 0;
    for (const auto &record : records) {
        if (auto window = WindowDescriptor::from(record, zOrder++, std::nullopt)) {
            window->bundleID = bundleIdentifiers.of(window->ownerPID);
            windows.push_back(*std::move(window));
        }
    }
    return windows;
}

} // namespace

WindowListService::WindowListService(const WindowServer &windowServer, const Workspace &workspace)
    : windowServer_(windowServer)
    , workspace_(workspace)
    , windows_(std::make_shared<const std::vector<WindowDescriptor>>()) {
}

std::shared_ptr<const std::vector<WindowDescriptor>> WindowListService::allVisibleWindows() const {
    auto records = windowServer_.onScreenWindows();
    BundleIdentifiers bundleIdentifiers(workspace_);
    const bool isCurrent =
        records == records_ && std::ranges::all_of(*windows_, [&](const auto &window) {
            return window.bundleID == bundleIdentifiers.of(window.ownerPID);
        });
    if (!isCurrent) {
        records_ = std::move(records);
        windows_ = std::make_shared<const std::vector<WindowDescriptor>>(
            described(records_ ? *records_ : WindowRecords(), bundleIdentifiers));
    }
    return windows_;
}

std::vector<std::uint32_t>
WindowListService::windowIDs(const RunningApplication &application) const {
    std::vector<std::uint32_t> numbers;
    const auto records = windowServer_.onScreenWindows();
    if (!records) {
        return numbers;
    }
    for (const auto &record : *records) {
        if (record.ownerProcess == application.processIdentifier && record.number) {
            numbers.push_back(*record.number);
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
