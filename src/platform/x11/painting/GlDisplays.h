#pragma once

#include "drawing/gl/GlTools.h"
#include "platform/x11/painting/GlBlur.h"
#include "platform/x11/painting/GlxDevice.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>

namespace lumo::x11 {

// All that there is in the graphics hardware, by display. Lives on the thread for it.
class GlDisplays {
  public:
    // Opens the device; what is wrong with it, empty when nothing is.
    std::string open(const std::string &displayName, int screenNumber, std::uint8_t depth,
                     bool softwareWillDo);
    void close();

    // Draws a frame of the display of that number, which is a new one if it is not known.
    bool draw(int display, const GlFrame &frame);
    void forget(int display) { blurs_.erase(display); }

  private:
    std::unique_ptr<GlxDevice> device_;
    std::unique_ptr<drawing::GlTools> tools_;
    std::map<int, GlBlur> blurs_;
};

} // namespace lumo::x11
