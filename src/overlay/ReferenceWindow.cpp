#include "overlay/ReferenceWindow.h"

#include "overlay/ScreenGeometry.h"
#include "windows/WindowListService.h"

#include <algorithm>

namespace lumo {

namespace {

// The least size, in points, of a window that a user works in.
constexpr Size contentSize{300, 200};

// The least visible area, in square points, with which a window belongs to a screen.
constexpr double minVisibleArea = 16000;
constexpr double minVisibleCoverArea = 12000;

bool isAuxiliary(const WindowDescriptor &window) {
    return window.name && auxiliaryTitleKeywords.anyIn(*window.name);
}

bool reaches(const Rect &rect, const Size &size) {
    return rect.width >= size.width && rect.height >= size.height;
}

bool isContentWindow(const WindowDescriptor &window) {
    return reaches(window.bounds, contentSize) && !isAuxiliary(window);
}

std::optional<ScreenCandidate> candidateOn(const WindowDescriptor &window, const Rect &screenFrame,
                                           double highestEdge, double minArea) {
    const Rect local = displayLocalRect(window.bounds, screenFrame, highestEdge);
    if (local.isEmpty() || local.area() < minArea) {
        return std::nullopt;
    }
    return ScreenCandidate{&window, local.integral(),
                           local.area() / std::max(1.0, screenFrame.area())};
}

// Finds the frontmost strong candidate, or the frontmost of all while there is no strong one, in
// one pass; on equal order the earlier one wins. A window behind the one found so far is not looked
// at.
class FrontmostChoice {
  public:
    bool couldTake(const WindowDescriptor &window) const {
        return !strong_ || window.zOrder < strong_->window->zOrder;
    }

    void take(const ScreenCandidate &candidate, bool isStrong) {
        auto &best = isStrong ? strong_ : any_;
        if (!best || candidate.window->zOrder < best->window->zOrder) {
            best = candidate;
        }
    }

    std::optional<ScreenCandidate> result() const { return strong_ ? strong_ : any_; }

  private:
    std::optional<ScreenCandidate> strong_;
    std::optional<ScreenCandidate> any_;
};

} // namespace

std::optional<std::uint32_t> effectiveFrontWindow(bool frontIsLumo,
                                                  std::optional<std::uint32_t> frontWindowID,
                                                  const CandidateWindows &windows,
                                                  std::optional<std::int32_t> effectiveFrontPID) {
    if (!frontIsLumo && frontWindowID) {
        const auto front = std::ranges::find(windows, *frontWindowID, &WindowDescriptor::windowID);
        if (front != windows.end() && WindowListService::isPrimaryContentWindow(**front)) {
            return frontWindowID;
        }
    }
    if (!effectiveFrontPID) {
        return std::nullopt;
    }
    const WindowDescriptor *largest = nullptr;
    for (const WindowDescriptor *window : windows) {
        if (window->ownerPID != *effectiveFrontPID) {
            continue;
        }
        if (isContentWindow(*window)) {
            return window->windowID;
        }
        if (!largest || window->area > largest->area) {
            largest = window;
        }
    }
    return largest ? std::optional(largest->windowID) : std::nullopt;
}

std::optional<ScreenCandidate> frontmostWindowOnScreen(const CandidateWindows &windows,
                                                       const Rect &screenFrame,
                                                       double highestEdge) {
    const Size minVisibleSize{std::max(0.16 * screenFrame.width, 280.0),
                              std::max(0.16 * screenFrame.height, 180.0)};
    FrontmostChoice choice;
    for (const WindowDescriptor *window : windows) {
        if (!choice.couldTake(*window)) {
            continue;
        }
        if (const auto candidate = candidateOn(*window, screenFrame, highestEdge, minVisibleArea)) {
            choice.take(*candidate,
                        reaches(candidate->local, minVisibleSize) && isContentWindow(*window));
        }
    }
    return choice.result();
}

std::optional<ScreenCandidate> frontmostCoverWindowOnScreen(const CandidateWindows &windows,
                                                            std::string_view bundleID,
                                                            const Rect &screenFrame,
                                                            double highestEdge) {
    FrontmostChoice choice;
    for (const WindowDescriptor *window : windows) {
        if (window->bundleID != bundleID || !choice.couldTake(*window)) {
            continue;
        }
        if (const auto candidate =
                candidateOn(*window, screenFrame, highestEdge, minVisibleCoverArea)) {
            choice.take(*candidate, isContentWindow(*window));
        }
    }
    return choice.result();
}

} // namespace lumo
