#include "platform/wayland/client/InputActivity.h"

#include "platform/wayland/client/Connection.h"

#include <ext-idle-notify-v1-client-protocol.h>
#include <idle-client-protocol.h>

#include <utility>

namespace lumo::wayland {

namespace {

constexpr std::uint32_t timeUntilIdle = 2000; // milliseconds

} // namespace

InputActivity::InputActivity(const Connection &connection)
    : seat_(connection.bind<wl_seat>(wl_seat_interface, 5)) {
    if (!seat_) {
        return;
    }
    notifier_ = connection.bind<ext_idle_notifier_v1>(ext_idle_notifier_v1_interface, 1);
    if (notifier_) {
        notification_.reset(ext_idle_notifier_v1_get_idle_notification(notifier_.get(),
                                                                       timeUntilIdle, seat_.get()));
        static const ext_idle_notification_v1_listener listener = {
            [](void *data, auto *) { static_cast<InputActivity *>(data)->set(false); },
            [](void *data, auto *) { static_cast<InputActivity *>(data)->set(true); }};
        ext_idle_notification_v1_add_listener(notification_.get(), &listener, this);
        return;
    }
    olderNotifier_ = connection.bind<org_kde_kwin_idle>(org_kde_kwin_idle_interface, 1);
    if (olderNotifier_) {
        timeout_.reset(
            org_kde_kwin_idle_get_idle_timeout(olderNotifier_.get(), seat_.get(), timeUntilIdle));
        static const org_kde_kwin_idle_timeout_listener listener = {
            [](void *data, auto *) { static_cast<InputActivity *>(data)->set(false); },
            [](void *data, auto *) { static_cast<InputActivity *>(data)->set(true); }};
        org_kde_kwin_idle_timeout_add_listener(timeout_.get(), &listener, this);
    }
}

InputActivity::~InputActivity() = default;

Handle InputActivity::onChange(std::function<void()> observer) {
    return changed_.subscribe(std::move(observer));
}

void InputActivity::set(bool isActive) {
    if (std::exchange(isActive_, isActive) != isActive) {
        changed_.emit();
    }
}

} // namespace lumo::wayland
