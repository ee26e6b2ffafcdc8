#pragma once

#include "desktop/ChildProcess.h"
#include "desktop/Picture.h"
#include "wayland/WaylandHands.h"
#include "wayland/WaylandUser.h"

#include <memory>
#include <string>

namespace lumo::desktop {

struct SwayOptions {
    int outputs = 1; // of 1280 x 720 pixels each, side by side
    std::string configuration = {};
    bool hasXwayland = false;
};

// sway without a screen. Making it returns when sway is at work and throws, with what it said, when
// it does not get there.
class PrivateSway : public WaylandUser {
  public:
    explicit PrivateSway(const SwayOptions &options = {});
    ~PrivateSway();
    PrivateSway(const PrivateSway &) = delete;
    PrivateSway &operator=(const PrivateSway &) = delete;

    // The sample application with a window of that size in points.
    std::unique_ptr<ChildProcess> startSample(const std::string &name, const std::string &colour,
                                              int width = 400, int height = 300) const;

    // Has sway obey a command of its configuration's language; false when it does not.
    bool command(const std::string &text) const;

    // What sway answers to a question by the name that swaymsg has for it, in JSON.
    std::string ask(const std::string &question) const;

    // The pixels of an output as shown.
    Picture picture(const std::string &output = "HEADLESS-1") const;

    // sway has no pointer and no keyboard before they are asked for.
    WaylandHands &hands();

    ChildProcess &process() { return *sway_; }

  private:
    std::unique_ptr<ChildProcess> sway_;
    std::unique_ptr<WaylandHands> hands_;
};

} // namespace lumo::desktop
