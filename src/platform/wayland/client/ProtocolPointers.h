#pragma once

#include <memory>

// As the protocols' headers declare them, so that headers can name them without those.
struct ext_background_effect_manager_v1;
struct ext_background_effect_surface_v1;
struct ext_idle_notification_v1;
struct ext_idle_notifier_v1;
struct org_kde_kwin_blur;
struct org_kde_kwin_blur_manager;
struct org_kde_kwin_idle;
struct org_kde_kwin_idle_timeout;
struct org_kde_plasma_virtual_desktop;
struct org_kde_plasma_virtual_desktop_management;
struct org_kde_plasma_window;
struct org_kde_plasma_window_management;
struct wl_buffer;
struct wl_callback;
struct wl_compositor;
struct wl_keyboard;
struct wl_output;
struct wl_region;
struct wl_registry;
struct wl_seat;
struct wl_shm;
struct wl_surface;
struct wp_viewport;
struct wp_viewporter;
struct zwlr_layer_shell_v1;
struct zwlr_layer_surface_v1;
struct zxdg_output_manager_v1;
struct zxdg_output_v1;

namespace lumo::wayland {

struct ProtocolDeleter {
    void operator()(ext_background_effect_manager_v1 *object) const noexcept;
    void operator()(ext_background_effect_surface_v1 *object) const noexcept;
    void operator()(ext_idle_notification_v1 *object) const noexcept;
    void operator()(ext_idle_notifier_v1 *object) const noexcept;
    void operator()(org_kde_kwin_blur *object) const noexcept;
    void operator()(org_kde_kwin_blur_manager *object) const noexcept;
    void operator()(org_kde_kwin_idle *object) const noexcept;
    void operator()(org_kde_kwin_idle_timeout *object) const noexcept;
    void operator()(org_kde_plasma_virtual_desktop *object) const noexcept;
    void operator()(org_kde_plasma_virtual_desktop_management *object) const noexcept;
    void operator()(org_kde_plasma_window *object) const noexcept;
    void operator()(org_kde_plasma_window_management *object) const noexcept;
    void operator()(wl_buffer *object) const noexcept;
    void operator()(wl_callback *object) const noexcept;
    void operator()(wl_compositor *object) const noexcept;
    void operator()(wl_keyboard *object) const noexcept;
    void operator()(wl_output *object) const noexcept;
    void operator()(wl_region *object) const noexcept;
    void operator()(wl_registry *object) const noexcept;
    void operator()(wl_seat *object) const noexcept;
    void operator()(wl_shm *object) const noexcept;
    void operator()(wl_surface *object) const noexcept;
    void operator()(wp_viewport *object) const noexcept;
    void operator()(wp_viewporter *object) const noexcept;
    void operator()(zwlr_layer_shell_v1 *object) const noexcept;
    void operator()(zwlr_layer_surface_v1 *object) const noexcept;
    void operator()(zxdg_output_manager_v1 *object) const noexcept;
    void operator()(zxdg_output_v1 *object) const noexcept;
};

// Owns a protocol object and destroys it by the request that its interface has for that, where it
// has one. No event of it arrives any more. The connection must outlive it.
template <class T>
using ProtocolPointer = std::unique_ptr<T, ProtocolDeleter>;

} // namespace lumo::wayland
