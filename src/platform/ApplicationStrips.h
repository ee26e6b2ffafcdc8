#pragma once

#include <optional>
#include <string>

namespace lumo {

// The strips of recent applications that a desktop may keep at the edges of its screens. Main
// thread only.
class ApplicationStrips {
  public:
    virtual ~ApplicationStrips() = default;

    // Whether the user wants them; absent where the desktop has none, or does not tell. Cheap
    // enough for every tick.
    virtual std::optional<bool> areEnabled() const = 0;

    // Whether the program of that name and bundle identifier draws them.
    virtual bool areDrawnBy(const std::string &name,
                            const std::optional<std::string> &bundleIdentifier) const = 0;
};

} // namespace lumo
