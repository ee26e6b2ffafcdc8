#pragma once

#include "platform/Platform.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace lumo {

class SettingsStore;

// A shortcut as this desktop's people write it: the modifiers of the mask and the key's name.
std::string shortcutLabel(const Platform &platform, std::int64_t keyCode, std::int64_t modifiers);

// The name by which a single modifier is chosen, for the one under which the settings keep it; the
// same for what is none.
std::string modifierName(const Vocabulary &vocabulary, std::string_view storedName);

// A text of the vocabulary with the shortcuts and keys that it leaves open.
std::string withShortcuts(std::string_view text, const Platform &platform,
                          const SettingsStore &settings);

} // namespace lumo
