#include "platform/x11/painting/GlDisplays.h"

namespace lumo::x11 {

std::string GlDisplays::open(const std::string &displayName, int screenNumber, std::uint8_t depth,
                             bool softwareWillDo) {
    std::string problem;
    device_ = GlxDevice::open(displayName, screenNumber, depth, problem);
    if (device_ && device_->isSoftware() && !softwareWillDo) {
        problem = device_->rendererName() + " is no graphics hardware";
    }
    if (device_ && problem.empty()) {
        tools_ = std::make_unique<drawing::GlTools>();
        if (!tools_->areUsable() || !device_->finish()) {
            problem = "the shaders do not compile on " + device_->rendererName();
        }
    }
    if (!problem.empty()) {
        close();
    }
    return problem;
}

void GlDisplays::close() {
    displays_.clear();
    tools_.reset();
    device_.reset();
}

bool GlDisplays::draw(int display, const GlxFrame &wanted) {
    if (!device_ || !device_->isConnected()) {
        return false;
    }
    const auto &frame = wanted.frame;
    auto &known = displays_.try_emplace(display, *tools_).first->second;
    // A pixmap of another size is another one, even if it has the name of one that is gone.
    if (!known.surface || known.scene != wanted.scene || known.canvas != wanted.canvas ||
        known.width != frame.width || known.height != frame.height) {
        known.surface.reset();
        known.surface = std::make_unique<GlxSurface>(*device_, wanted.scene, wanted.canvas);
        known.scene = wanted.scene;
        known.canvas = wanted.canvas;
        known.width = frame.width;
        known.height = frame.height;
    }
    return known.blur.draw(frame, *known.surface);
}

} // namespace lumo::x11
