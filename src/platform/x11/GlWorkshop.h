#pragma once

#include "platform/x11/GlBlur.h"
#include "platform/x11/GlDevice.h"
#include "platform/x11/GlTools.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>

namespace lumo::x11 {

// All that there is in the graphics hardware, by display. Lives on the thread for it.
class GlWorkshop {
  public:
    // Opens the device; what is wrong with it, empty when nothing is.
    std::string open(const std::string &displayName, int screenNumber, std::uint8_t depth,
                     bool softwareWillDo);
    void close();

    // Draws a frame of the display of that number, which is a new one if it is not known.
    bool draw(int display, const GlFrame &frame);
    void forget(int display) { blurs_.erase(display); }

  private:
    std::unique_ptr<GlDevice> device_;
    std::unique_ptr<GlTools> tools_;
    std::map<int, GlBlur> blurs_;
};

} // namespace lumo::x11
