#include "platform/wayland/client/ProtocolPointers.h"

#include <background-effect-client-protocol.h>
#include <blur-client-protocol.h>
#include <ext-idle-notify-v1-client-protocol.h>
#include <idle-client-protocol.h>
#include <layer-shell-client-protocol.h>
#include <plasma-virtual-desktop-client-protocol.h>
#include <plasma-window-management-client-protocol.h>
#include <viewporter-client-protocol.h>
#include <wayland-client.h>
#include <xdg-output-unstable-v1-client-protocol.h>

namespace lumo::wayland {

void ProtocolDeleter::operator()(ext_background_effect_manager_v1 *object) const noexcept {
    ext_background_effect_manager_v1_destroy(object);
}

void ProtocolDeleter::operator()(ext_background_effect_surface_v1 *object) const noexcept {
    ext_background_effect_surface_v1_destroy(object);
}

void ProtocolDeleter::operator()(ext_idle_notification_v1 *object) const noexcept {
    ext_idle_notification_v1_destroy(object);
}

void ProtocolDeleter::operator()(ext_idle_notifier_v1 *object) const noexcept {
    ext_idle_notifier_v1_destroy(object);
}

void ProtocolDeleter::operator()(org_kde_kwin_blur *object) const noexcept {
    org_kde_kwin_blur_release(object);
}

void ProtocolDeleter::operator()(org_kde_kwin_blur_manager *object) const noexcept {
    org_kde_kwin_blur_manager_destroy(object);
}

void ProtocolDeleter::operator()(org_kde_kwin_idle *object) const noexcept {
    org_kde_kwin_idle_destroy(object);
}

void ProtocolDeleter::operator()(org_kde_kwin_idle_timeout *object) const noexcept {
    org_kde_kwin_idle_timeout_release(object);
}

void ProtocolDeleter::operator()(org_kde_plasma_virtual_desktop *object) const noexcept {
    org_kde_plasma_virtual_desktop_destroy(object);
}

void ProtocolDeleter::operator()(org_kde_plasma_virtual_desktop_management *object) const noexcept {
    org_kde_plasma_virtual_desktop_management_destroy(object);
}

void ProtocolDeleter::operator()(org_kde_plasma_window *object) const noexcept {
    org_kde_plasma_window_destroy(object);
}

void ProtocolDeleter::operator()(org_kde_plasma_window_management *object) const noexcept {
    org_kde_plasma_window_management_destroy(object);
}

void ProtocolDeleter::operator()(wl_buffer *object) const noexcept {
    wl_buffer_destroy(object);
}

void ProtocolDeleter::operator()(wl_callback *object) const noexcept {
    wl_callback_destroy(object);
}

void ProtocolDeleter::operator()(wl_compositor *object) const noexcept {
    wl_compositor_destroy(object);
}

void ProtocolDeleter::operator()(wl_keyboard *object) const noexcept {
    if (wl_keyboard_get_version(object) >= WL_KEYBOARD_RELEASE_SINCE_VERSION) {
        wl_keyboard_release(object);
    } else {
        wl_keyboard_destroy(object);
    }
}

void ProtocolDeleter::operator()(wl_output *object) const noexcept {
    if (wl_output_get_version(object) >= WL_OUTPUT_RELEASE_SINCE_VERSION) {
        wl_output_release(object);
    } else {
        wl_output_destroy(object);
    }
}

void ProtocolDeleter::operator()(wl_region *object) const noexcept {
    wl_region_destroy(object);
}

void ProtocolDeleter::operator()(wl_registry *object) const noexcept {
    wl_registry_destroy(object);
}

void ProtocolDeleter::operator()(wl_seat *object) const noexcept {
    if (wl_seat_get_version(object) >= WL_SEAT_RELEASE_SINCE_VERSION) {
        wl_seat_release(object);
    } else {
        wl_seat_destroy(object);
    }
}

void ProtocolDeleter::operator()(wl_shm *object) const noexcept {
    wl_shm_destroy(object);
}

void ProtocolDeleter::operator()(wl_surface *object) const noexcept {
    wl_surface_destroy(object);
}

void ProtocolDeleter::operator()(wp_viewport *object) const noexcept {
    wp_viewport_destroy(object);
}

void ProtocolDeleter::operator()(wp_viewporter *object) const noexcept {
    wp_viewporter_destroy(object);
}

void ProtocolDeleter::operator()(zwlr_layer_shell_v1 *object) const noexcept {
    if (zwlr_layer_shell_v1_get_version(object) >= ZWLR_LAYER_SHELL_V1_DESTROY_SINCE_VERSION) {
        zwlr_layer_shell_v1_destroy(object);
    } else {
        wl_proxy_destroy(reinterpret_cast<wl_proxy *>(object));
    }
}

void ProtocolDeleter::operator()(zwlr_layer_surface_v1 *object) const noexcept {
    zwlr_layer_surface_v1_destroy(object);
}

void ProtocolDeleter::operator()(zxdg_output_manager_v1 *object) const noexcept {
    zxdg_output_manager_v1_destroy(object);
}

void ProtocolDeleter::operator()(zxdg_output_v1 *object) const noexcept {
    zxdg_output_v1_destroy(object);
}

} // namespace lumo::wayland
