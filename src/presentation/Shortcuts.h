#pragma once

#include "platform/Platform.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace lumo {

class SettingsStore;

// A shortcut as this desktop's people write it: the modifiers of the mask and the key's name.
std::string shortcutLabel(const Platform &platform, std::int64_t keyCode, std::int64_t modifiers);

// The name by which a single modifier is chosen, for the one under which the settings keep it; the
// same for what is none.
std::string modifierName(const Vocabulary &vocabulary, std::string_view storedName);

// The names of a shortcut's keys, the modifiers first.
std::vector<std::string> shortcutKeys(const Platform &platform, std::int64_t keyCode,
                                      std::int64_t modifiers);

// Those of the shortcut that turns the effect on and off, and of the emergency stop.
std::vector<std::string> toggleKeys(const Platform &platform, const SettingsStore &settings);
std::vector<std::string> emergencyKeys(const Platform &platform);

// Keys as they are written together.
std::string joinedKeys(const Platform &platform, const std::vector<std::string> &keys);

} // namespace lumo
