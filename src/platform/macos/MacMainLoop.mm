#import "platform/macos/MacMainLoop.h"

#include "platform/macos/logic/TimerPolicy.h"

#import <Foundation/Foundation.h>
#import <QuartzCore/QuartzCore.h>
#import <dispatch/dispatch.h>

#include <csignal>
#include <utility>

namespace lumo::macos {

namespace {

// The application object empties its own pool with each event only, and hours may pass without one.
void run(const std::function<void()> &task) {
    @autoreleasepool {
        task();
    }
}

// In the common modes, so that menus and dragging don't stop it.
Handle scheduleTimer(double seconds, bool repeats, std::function<void()> task) {
    const auto policy = timerPolicy(seconds, repeats);
    auto live = std::make_shared<std::function<void()>>(std::move(task));
    NSTimer *timer = [NSTimer timerWithTimeInterval:policy.interval
                                            repeats:repeats
                                              block:^(NSTimer *) {
                                                  // Held, because the task may release the handle.
                                                  const auto call = live;
                                                  run(*call);
                                              }];
    timer.tolerance = policy.tolerance;
    [[NSRunLoop mainRunLoop] addTimer:timer forMode:NSRunLoopCommonModes];
    return Handle([timer] { [timer invalidate]; });
}

qos_class_t qosClass(QualityOfService quality) {
    return quality == QualityOfService::userInitiated ? QOS_CLASS_USER_INITIATED
                                                      : QOS_CLASS_UTILITY;
}

} // namespace

MacMainLoop::MacMainLoop()
    : alive_(std::make_shared<const bool>(true)) {
}

MacMainLoop::~MacMainLoop() = default;

double MacMainLoop::now() const {
    return CACurrentMediaTime();
}

void MacMainLoop::post(std::function<void()> task) {
    const std::weak_ptr<const bool> alive = alive_;
    const auto call = std::make_shared<std::function<void()>>(std::move(task));
    dispatch_async(dispatch_get_main_queue(), ^{
        if (!alive.expired()) {
            run(*call);
        }
    });
}

Handle MacMainLoop::after(double seconds, std::function<void()> task) {
    return scheduleTimer(seconds, false, std::move(task));
}

Handle MacMainLoop::every(double seconds, std::function<void()> task) {
    return scheduleTimer(seconds, true, std::move(task));
}

void MacMainLoop::runInBackground(QualityOfService quality, std::function<void()> task) {
    const std::weak_ptr<const bool> alive = alive_;
    const auto call = std::make_shared<std::function<void()>>(std::move(task));
    dispatch_async(dispatch_get_global_queue(qosClass(quality), 0), ^{
        if (!alive.expired()) {
            (*call)();
        }
    });
}

Handle MacMainLoop::onUnixSignal(int signal, std::function<void()> function) {
    std::signal(signal, SIG_IGN);
    dispatch_source_t source = dispatch_source_create(
        DISPATCH_SOURCE_TYPE_SIGNAL, static_cast<uintptr_t>(signal), 0, dispatch_get_main_queue());
    const auto call = std::make_shared<std::function<void()>>(std::move(function));
    dispatch_source_set_event_handler(source, ^{
        (*call)();
    });
    dispatch_resume(source);
    return Handle([source] { dispatch_source_cancel(source); });
}

} // namespace lumo::macos
