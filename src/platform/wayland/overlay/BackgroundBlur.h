#pragma once

#include "drawing/Region.h"
#include "platform/wayland/client/Connection.h"
#include "platform/wayland/client/ProtocolPointers.h"
#include "support/Handle.h"
#include "support/Signal.h"

#include <array>
#include <cstdint>
#include <functional>

namespace lumo::wayland {

// The compositor's own blur of what lies behind a surface, by the protocol that several have, or
// else by KWin's older one. How strong it is, the user chooses there. Main thread only.
class BackgroundBlur {
  public:
    // The connection outlives the object.
    explicit BackgroundBlur(Connection &connection);
    ~BackgroundBlur();
    BackgroundBlur(const BackgroundBlur &) = delete;
    BackgroundBlur &operator=(const BackgroundBlur &) = delete;

    // It may come and go, as when the user switches the effect on or off.
    bool isAvailable() const { return canBlur_ || olderManager_; }

    Handle onChange(std::function<void()> observer);

  private:
    friend class SurfaceBlur;

    void bind();
    void release(const Connection::Global &global);

    Connection &connection_;
    ProtocolPointer<ext_background_effect_manager_v1> manager_;
    bool canBlur_ = false; // the manager says
    ProtocolPointer<org_kde_kwin_blur_manager> olderManager_;
    Signal<> changed_;
    std::array<Handle, 2> globals_;
};

// The blur behind one surface.
class SurfaceBlur {
  public:
    // What is passed outlives the object.
    SurfaceBlur(const BackgroundBlur &blur, wl_compositor &compositor, wl_surface &surface);

    // Blurs what lies behind that part of the surface, in points, from its next commit on.
    void set(const drawing::Region &part);

  private:
    const BackgroundBlur &blur_;
    wl_compositor &compositor_;
    wl_surface &surface_;
    ProtocolPointer<ext_background_effect_surface_v1> effect_;
    ProtocolPointer<org_kde_kwin_blur> olderEffect_; // blurs for as long as it lives
};

} // namespace lumo::wayland
