#pragma once

#include "support/Geometry.h"
#include "windows/FragmentSet.h"
#include "windows/WindowDescriptor.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace lumo {

// Which window stays clear. Everything here is decided from its arguments alone.

// The windows that can stay clear, front to back. The descriptors belong to the caller.
using CandidateWindows = std::vector<const WindowDescriptor *>;

// Titles with one of these mark a window beside the one that the user works in. A plain substring
// counts, so "Command Palette Preview" is one.
inline constexpr FragmentSet auxiliaryTitleKeywords{"menu",    "popover",  "tooltip", "sheet",
                                                    "dialog",  "utility",  "panel",   "finder",
                                                    "preview", "assistant"};

// A window as far as it is visible on one screen.
struct ScreenCandidate {
    const WindowDescriptor *window = nullptr;
    // The visible part, rounded outwards to whole points; origin at the screen's bottom left, y up.
    Rect local;
    // The visible part's share of the screen's area.
    double coverage = 0;
};

// The window that counts as focused. The frontmost application's first window when it is one to
// work in; else the front process's first such window; else that process's largest window, whatever
// it is. Absent without a front process, and when that has no candidate.
std::optional<std::uint32_t> effectiveFrontWindow(bool frontIsLumo,
                                                  std::optional<std::uint32_t> frontWindowID,
                                                  const CandidateWindows &windows,
                                                  std::optional<std::int32_t> effectiveFrontPID);

// The frontmost window that takes enough of the screen to work in; if there is none, the frontmost
// that is visible on it at all. Absent when none is.
std::optional<ScreenCandidate> frontmostWindowOnScreen(const CandidateWindows &windows,
                                                       const Rect &screenFrame, double highestEdge);

// As frontmostWindowOnScreen(), among the windows of one application, with a lesser visible part
// and regardless of the screen's size.
std::optional<ScreenCandidate> frontmostCoverWindowOnScreen(const CandidateWindows &windows,
                                                            std::string_view bundleID,
                                                            const Rect &screenFrame,
                                                            double highestEdge);

} // namespace lumo
