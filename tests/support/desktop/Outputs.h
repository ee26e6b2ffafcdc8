#pragma once

#include "desktop/Picture.h"

#include <xcb/randr.h>
#include <xcb/xcb.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace lumo::desktop {

// One output at work.
struct OutputUse {
    std::size_t output = 0; // counted from 0
    Area area;
    bool isPrimary = false;
};

// The outputs of a server of the kind Server::xorg, which people plug displays into and whose modes
// a desktop's settings choose. Throws when the server refuses.
class Outputs {
  public:
    explicit Outputs(const std::string &displayName);

    // Puts these outputs to work and no others, in the steps in which display settings do it: what
    // changes goes dark, the root window takes the size of all, and each output lights up. The
    // server tells everybody of each step.
    void arrange(const std::vector<OutputUse> &uses);

  private:
    struct Disconnect {
        void operator()(xcb_connection_t *connection) const noexcept { xcb_disconnect(connection); }
    };

    xcb_randr_mode_t modeFor(std::size_t output, const Area &area);
    void configure(std::size_t output, const Area &area);

    std::unique_ptr<xcb_connection_t, Disconnect> connection_;
    xcb_window_t root_;
    std::vector<xcb_randr_output_t> outputs_;
    std::vector<xcb_randr_crtc_t> controllers_; // one for each output
    std::vector<Area> areas_;                   // as they are; empty for an output that is off
    std::map<std::pair<int, int>, xcb_randr_mode_t> modes_; // by width and height
    std::map<std::size_t, std::vector<xcb_randr_mode_t>> modesOfOutputs_;
};

} // namespace lumo::desktop
