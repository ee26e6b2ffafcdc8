#include "platform/x11/painting/SceneEntry.h"

#include <algorithm>
#include <cstddef>
#include <map>

namespace lumo::x11 {

namespace {

constexpr std::size_t nowhere = static_cast<std::size_t>(-1);

// For each entry its index among the others, which have each window once, if it is the same there.
std::vector<std::size_t> positionsIn(const std::vector<SceneEntry> &others,
                                     const std::vector<SceneEntry> &entries) {
    std::map<xcb_window_t, std::size_t> indices;
    for (std::size_t i = 0; i < others.size(); ++i) {
        indices.emplace(others[i].window, i);
    }
    std::vector<std::size_t> positions;
    positions.reserve(entries.size());
    for (const auto &entry : entries) {
        const auto found = indices.find(entry.window);
        const bool isSame = found != indices.end() && others[found->second] == entry;
        positions.push_back(isSame ? found->second : nowhere);
    }
    return positions;
}

// Which of the positions are part of a longest increasing subsequence, by patience sorting.
std::vector<bool> longestIncreasing(const std::vector<std::size_t> &positions) {
    std::vector<std::size_t> ends; // the index of the lowest end for each length
    std::vector<std::size_t> previous(positions.size(), nowhere);
    for (std::size_t i = 0; i < positions.size(); ++i) {
        if (positions[i] == nowhere) {
            continue;
        }
        const auto end = std::ranges::lower_bound(ends, positions[i], {},
                                                  [&](std::size_t at) { return positions[at]; });
        previous[i] = end == ends.begin() ? nowhere : *(end - 1);
        if (end == ends.end()) {
            ends.push_back(i);
        } else {
            *end = i;
        }
    }
    std::vector<bool> isPart(positions.size());
    for (auto i = ends.empty() ? nowhere : ends.back(); i != nowhere; i = previous[i]) {
        isPart[i] = true;
    }
    return isPart;
}

} // namespace

std::vector<drawing::PixelRect> changedAreas(const std::vector<SceneEntry> &before,
                                             const std::vector<SceneEntry> &after) {
    const auto positions = positionsIn(after, before);
    const auto kept = longestIncreasing(positions);
    std::vector<bool> isNew(after.size(), true);
    std::vector<drawing::PixelRect> areas;
    for (std::size_t i = 0; i < before.size(); ++i) {
        if (kept[i]) {
            isNew[positions[i]] = false;
        } else {
            areas.push_back(before[i].geometry);
        }
    }
    for (std::size_t i = 0; i < after.size(); ++i) {
        if (isNew[i]) {
            areas.push_back(after[i].geometry);
        }
    }
    return areas;
}

} // namespace lumo::x11
