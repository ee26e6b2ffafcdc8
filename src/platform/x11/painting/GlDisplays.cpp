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
    blurs_.clear();
    tools_.reset();
    device_.reset();
}

bool GlDisplays::draw(int display, const GlFrame &frame) {
    return device_ && blurs_.try_emplace(display, *device_, *tools_).first->second.draw(frame);
}

} // namespace lumo::x11
