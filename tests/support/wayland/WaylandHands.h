#pragma once

#include "desktop/Picture.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace lumo::desktop {

// Keys and buttons by the kernel's codes.
enum class EvdevKey : std::uint32_t {
    tab = 15,
    control = 29,
    d = 32,
    g = 34,
    n = 49,
    option = 56,
    space = 57,
    command = 125,
};

enum class EvdevButton : std::uint32_t { left = 0x110, right = 0x111 };

// A pointer and a keyboard on a compositor that has virtual ones. What is asked for has reached the
// compositor when the call returns.
class WaylandHands {
  public:
    // Throws when the compositor at that socket has no such devices.
    explicit WaylandHands(const std::string &socket);
    ~WaylandHands();
    WaylandHands(const WaylandHands &) = delete;
    WaylandHands &operator=(const WaylandHands &) = delete;

    // Points are those of the whole desktop, which is that large.
    void moveTo(Spot spot, Area desktop);
    void setButton(bool isDown, EvdevButton button = EvdevButton::left);
    void setKey(EvdevKey key, bool isDown);

    void click(Spot spot, Area desktop);
    void press(const std::vector<EvdevKey> &chord); // down in this order, up in the opposite one

  private:
    struct Devices;

    std::unique_ptr<Devices> devices_;
    std::uint32_t modifiers_ = 0;
};

} // namespace lumo::desktop
