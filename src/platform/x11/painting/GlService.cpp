#include "platform/x11/painting/GlService.h"

#include "platform/MainLoop.h"
#include "platform/x11/painting/GlBackdropRenderer.h"
#include "platform/x11/painting/GlDisplays.h"
#include "platform/x11/server/Connection.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

namespace lumo::x11 {

GlService::GlService(Connection &connection, MainLoop &mainLoop, std::uint8_t depth,
                     bool softwareWillDo)
    : connection_(connection)
    , mainLoop_(mainLoop)
    , depth_(depth)
    , softwareWillDo_(softwareWillDo)
    , displays_(std::make_unique<GlDisplays>()) {
    if (!softwareWillDo_ && !hasHardware()) {
        state_ = State::refused;
        problem_ = "the X server has no graphics hardware to offer";
    }
}

GlService::~GlService() {
    stop();
}

// By the extensions through which drivers get at it, so that no library need be loaded to find out
// that there is none.
bool GlService::hasHardware() const {
    std::vector<xcb_query_extension_cookie_t> cookies;
    for (const std::string_view name : {"DRI3", "DRI2", "NV-GLX"}) {
        cookies.push_back(
            xcb_query_extension(connection_, static_cast<std::uint16_t>(name.size()), name.data()));
    }
    return std::ranges::count_if(cookies, [this](const auto &cookie) {
               const auto reply = connection_.wait(cookie, xcb_query_extension_reply);
               return reply && reply->present != 0;
           }) > 0;
}

void GlService::start() {
    if (state_ != State::idle) {
        return;
    }
    state_ = State::starting;
    if (!thread_) {
        thread_ = std::make_unique<WorkerThreads>(1, WorkerThreads::AtEnd::runTasks);
    }
    auto report = lifetime_.guard([this](const std::string &problem) { started(problem); });
    thread_->post([&displays = *displays_, &mainLoop = mainLoop_, name = connection_.displayName(),
                   screen = connection_.screenNumber(), depth = depth_,
                   softwareWillDo = softwareWillDo_, report = std::move(report)] {
        mainLoop.post(
            [report, problem = displays.open(name, screen, depth, softwareWillDo)]() mutable {
                report(problem);
            });
    });
}

void GlService::started(const std::string &problem) {
    if (state_ == State::starting) {
        problem_ = problem;
        state_ = problem.empty() ? State::ready : (hasWorked_ ? State::idle : State::refused);
        hasWorked_ = hasWorked_ || problem.empty();
        started_.emit();
    }
}

void GlService::stop() {
    if (thread_) {
        thread_->post([&displays = *displays_] { displays.close(); });
    }
    if (state_ != State::refused) {
        state_ = State::idle;
    }
}

std::unique_ptr<BackdropRenderer> GlService::make() {
    if (state_ != State::starting && state_ != State::ready) {
        return nullptr;
    }
    return std::make_unique<GlBackdropRenderer>(connection_, mainLoop_, *thread_, *displays_,
                                                ++lastRenderer_);
}

} // namespace lumo::x11
