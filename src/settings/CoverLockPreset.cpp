#include "settings/CoverLockPreset.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdio>

namespace lumo {

namespace {

struct Facts {
    std::string_view title;
    double duration;
    std::string_view description;
};

constexpr std::array<Facts, allCoverLockPresets.size()> facts{{
    {"Fast", 0.2, "Lower latency, may switch targets more often."},
    {"Balanced", 0.35, "Balanced responsiveness and stability."},
    {"Stable", 0.5, "Most stable target lock, with a bit more lag."},
}};

const Facts &factsOf(CoverLockPreset preset) {
    return facts.at(static_cast<std::size_t>(preset));
}

} // namespace

std::string_view title(CoverLockPreset preset) {
    return factsOf(preset).title;
}

double duration(CoverLockPreset preset) {
    return factsOf(preset).duration;
}

CoverLockPreset nearestCoverLockPreset(double seconds) {
    const auto distance = [seconds](CoverLockPreset preset) {
        return std::abs(seconds - duration(preset));
    };
    auto nearest = allCoverLockPresets.front();
    for (const auto preset : allCoverLockPresets) {
        if (distance(preset) < distance(nearest)) {
            nearest = preset;
        }
    }
    return nearest;
}

std::string millisecondsText(double seconds) {
    // Adding zero turns a negative zero into a plain one.
    const double milliseconds = std::round(seconds * 1000) + 0.0;
    std::array<char, 400> number{};
    std::snprintf(number.data(), number.size(), "%.0f", milliseconds);
    return number.data();
}

std::string coverLockDetail(double seconds) {
    const auto &preset = factsOf(nearestCoverLockPreset(seconds));
    return std::string(preset.title) + " (" + millisecondsText(seconds) +
           " ms): " + std::string(preset.description);
}

} // namespace lumo
