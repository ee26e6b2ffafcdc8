#include "platform/wayland/overlay/BackgroundBlur.h"

#include <background-effect-client-protocol.h>
#include <blur-client-protocol.h>
#include <wayland-client.h>

#include <string_view>
#include <utility>

namespace lumo::wayland {

BackgroundBlur::BackgroundBlur(Connection &connection)
    : connection_(connection)
    , globals_{connection.onGlobalAdded([this](const auto & /*global*/) { bind(); }),
               connection.onGlobalRemoved([this](const auto &global) { release(global); })} {
    bind();
}

BackgroundBlur::~BackgroundBlur() = default;

Handle BackgroundBlur::onChange(std::function<void()> observer) {
    return changed_.subscribe(std::move(observer));
}

void BackgroundBlur::bind() {
    if (!manager_) {
        manager_ = connection_.bind<ext_background_effect_manager_v1>(
            ext_background_effect_manager_v1_interface, 1);
        static const ext_background_effect_manager_v1_listener listener = {
            [](void *data, auto *, std::uint32_t flags) {
                auto &self = *static_cast<BackgroundBlur *>(data);
                self.canBlur_ = (flags & EXT_BACKGROUND_EFFECT_MANAGER_V1_CAPABILITY_BLUR) != 0;
                self.changed_.emit();
            }};
        if (manager_) {
            ext_background_effect_manager_v1_add_listener(manager_.get(), &listener, this);
        }
    }
    if (!manager_ && !olderManager_) {
        olderManager_ =
            connection_.bind<org_kde_kwin_blur_manager>(org_kde_kwin_blur_manager_interface, 1);
        if (olderManager_) {
            changed_.emit();
        }
    }
}

void BackgroundBlur::release(const Connection::Global &global) {
    if (global.interface == ext_background_effect_manager_v1_interface.name) {
        manager_.reset();
        canBlur_ = false;
    } else if (global.interface == org_kde_kwin_blur_manager_interface.name) {
        olderManager_.reset();
    } else {
        return;
    }
    bind();
    changed_.emit();
}

SurfaceBlur::SurfaceBlur(const BackgroundBlur &blur, wl_compositor &compositor, wl_surface &surface)
    : blur_(blur)
    , compositor_(compositor)
    , surface_(surface) {
}

void SurfaceBlur::set(const drawing::Region &part) {
    olderEffect_.reset();
    if (!blur_.manager_) {
        effect_.reset();
    }
    if (part.isEmpty() && !effect_) {
        if (blur_.olderManager_) {
            org_kde_kwin_blur_manager_unset(blur_.olderManager_.get(), &surface_);
        }
        return;
    }
    const ProtocolPointer<wl_region> region(wl_compositor_create_region(&compositor_));
    for (const auto &rectangle : part.rectangles()) {
        wl_region_add(region.get(), rectangle.x, rectangle.y, rectangle.width, rectangle.height);
    }
    if (blur_.manager_) {
        if (!effect_) {
            effect_.reset(ext_background_effect_manager_v1_get_background_effect(
                blur_.manager_.get(), &surface_));
        }
        ext_background_effect_surface_v1_set_blur_region(effect_.get(), region.get());
    } else if (blur_.olderManager_) {
        // A new one each time: KWin takes notice of no change of an old one.
        olderEffect_.reset(org_kde_kwin_blur_manager_create(blur_.olderManager_.get(), &surface_));
        org_kde_kwin_blur_set_region(olderEffect_.get(), region.get());
        org_kde_kwin_blur_commit(olderEffect_.get());
    }
}

} // namespace lumo::wayland
