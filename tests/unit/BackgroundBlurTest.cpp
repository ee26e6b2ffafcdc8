#include "platform/wayland/overlay/BackgroundBlur.h"

#include "platform/wayland/client/Connection.h"

#include <background-effect-client-protocol.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <wayland-server.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace lumo::wayland {
namespace {

using drawing::PixelRect;

// A compositor of surfaces, regions and background effects, in a thread of its own. The next client
// that connects is its only one.
class ScriptedCompositor {
  public:
    ScriptedCompositor()
        : display_(wl_display_create()) {
        std::array<int, 2> ends{};
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
            throw std::runtime_error("no socket pair");
        }
        wl_client_create(display_, ends[0]);
        // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread has begun
        setenv("WAYLAND_SOCKET", std::to_string(ends[1]).c_str(), 1);
        wl_global_create(display_, &wl_compositor_interface, 1, this,
                         [](wl_client *client, void *self, std::uint32_t, std::uint32_t id) {
                             implement(client, &wl_compositor_interface, id, &onCompositor, self);
                         });
        thread_ = std::jthread([this](const std::stop_token &stop) {
            while (!stop.stop_requested()) {
                change([this] {
                    wl_event_loop_dispatch(wl_display_get_event_loop(display_), 1);
                    wl_display_flush_clients(display_);
                });
            }
        });
    }

    ~ScriptedCompositor() {
        thread_ = {};
        wl_display_destroy_clients(display_);
        wl_display_destroy(display_);
    }

    ScriptedCompositor(const ScriptedCompositor &) = delete;
    ScriptedCompositor &operator=(const ScriptedCompositor &) = delete;

    void offerEffects(std::uint32_t capabilities) {
        change([&] {
            capabilities_ = capabilities;
            global_ = wl_global_create(
                display_, &ext_background_effect_manager_v1_interface, 1, this,
                [](wl_client *client, void *data, std::uint32_t, std::uint32_t id) {
                    auto *self = static_cast<ScriptedCompositor *>(data);
                    self->manager_ = implement(client, &ext_background_effect_manager_v1_interface,
                                               id, &onManager, self);
                    self->tellCapabilities();
                });
        });
    }

    void setCapabilities(std::uint32_t capabilities) {
        change([&] {
            capabilities_ = capabilities;
            tellCapabilities();
        });
    }

    void withdrawEffects() {
        change([&] { wl_global_destroy(global_); });
    }

    // What is blurred behind the surface that has an effect; without one the list is empty.
    std::vector<PixelRect> blurred() {
        std::vector<PixelRect> result;
        change([&] { result = blurred_; });
        return result;
    }

    int effectsMade() {
        int result = 0;
        change([&] { result = effectsMade_; });
        return result;
    }

  private:
    // The first requests of each interface; no others are made.
    struct CompositorRequests {
        void (*createSurface)(wl_client *, wl_resource *, std::uint32_t id);
        void (*createRegion)(wl_client *, wl_resource *, std::uint32_t id);
    };
    struct SurfaceRequests {
        void (*destroy)(wl_client *, wl_resource *);
    };
    struct RegionRequests {
        void (*destroy)(wl_client *, wl_resource *);
        void (*add)(wl_client *, wl_resource *, int x, int y, int width, int height);
    };
    struct ManagerRequests {
        void (*destroy)(wl_client *, wl_resource *);
        void (*getEffect)(wl_client *, wl_resource *, std::uint32_t id, wl_resource *surface);
    };
    struct EffectRequests {
        void (*destroy)(wl_client *, wl_resource *);
        void (*setBlurRegion)(wl_client *, wl_resource *, wl_resource *region);
    };
    using Rectangles = std::vector<PixelRect>;

    void change(const std::function<void()> &what) {
        const std::scoped_lock lock(mutex_);
        what();
    }

    void tellCapabilities() { wl_resource_post_event(manager_, 0, capabilities_); }

    static wl_resource *implement(wl_client *client, const wl_interface *interface,
                                  std::uint32_t id, const void *requests, void *data,
                                  wl_resource_destroy_func_t gone = nullptr) {
        auto *resource = wl_resource_create(client, interface, 1, id);
        wl_resource_set_implementation(resource, requests, data, gone);
        return resource;
    }

    static ScriptedCompositor &of(wl_resource *resource) {
        return *static_cast<ScriptedCompositor *>(wl_resource_get_user_data(resource));
    }

    static Rectangles &rectanglesOf(wl_resource *region) {
        return *static_cast<Rectangles *>(wl_resource_get_user_data(region));
    }

    static void destroy(wl_client * /*client*/, wl_resource *resource) {
        wl_resource_destroy(resource);
    }

    static void createSurface(wl_client *client, wl_resource *self, std::uint32_t id) {
        implement(client, &wl_surface_interface, id, &onSurface, &of(self));
    }

    static void createRegion(wl_client *client, wl_resource * /*self*/, std::uint32_t id) {
        implement(client, &wl_region_interface, id, &onRegion, new Rectangles,
                  [](wl_resource *region) { delete &rectanglesOf(region); });
    }

    static void add(wl_client * /*client*/, wl_resource *region, int x, int y, int width,
                    int height) {
        rectanglesOf(region).push_back({x, y, width, height});
    }

    static void getEffect(wl_client *client, wl_resource *manager, std::uint32_t id,
                          wl_resource * /*surface*/) {
        auto &self = of(manager);
        if (self.effect_ != nullptr) {
            wl_resource_post_error(manager, 0, "the surface has an effect");
            return;
        }
        ++self.effectsMade_;
        self.effect_ = implement(client, &ext_background_effect_surface_v1_interface, id, &onEffect,
                                 &self, [](wl_resource *effect) {
                                     of(effect).effect_ = nullptr;
                                     of(effect).blurred_.clear();
                                 });
    }

    static void setBlurRegion(wl_client * /*client*/, wl_resource *effect, wl_resource *region) {
        of(effect).blurred_ = region != nullptr ? rectanglesOf(region) : Rectangles{};
    }

    static constexpr CompositorRequests onCompositor = {createSurface, createRegion};
    static constexpr SurfaceRequests onSurface = {destroy};
    static constexpr RegionRequests onRegion = {destroy, add};
    static constexpr ManagerRequests onManager = {destroy, getEffect};
    static constexpr EffectRequests onEffect = {destroy, setBlurRegion};

    wl_display *display_;
    wl_global *global_ = nullptr;
    wl_resource *manager_ = nullptr;
    wl_resource *effect_ = nullptr;
    std::uint32_t capabilities_ = 0;
    Rectangles blurred_;
    int effectsMade_ = 0;
    std::mutex mutex_;
    std::jthread thread_;
};

TEST(BackgroundBlur, ComesAndGoesWithTheCompositorsAbility) {
    ScriptedCompositor compositor;
    const auto connection = Connection::open();
    ASSERT_NE(connection, nullptr);
    const auto surfaces = connection->bind<wl_compositor>(wl_compositor_interface, 1);
    const ProtocolPointer<wl_surface> surface(wl_compositor_create_surface(surfaces.get()));
    BackgroundBlur blur(*connection);
    SurfaceBlur behind(blur, *surfaces, *surface);
    int changes = 0;
    const auto observer = blur.onChange([&] { ++changes; });
    const auto hear = [&] { return connection->roundTrip() && connection->roundTrip(); };
    EXPECT_FALSE(blur.isAvailable());

    compositor.offerEffects(0);
    EXPECT_TRUE(hear());
    EXPECT_FALSE(blur.isAvailable()) << "it has the protocol, and no blur";
    changes = 0;
    compositor.setCapabilities(EXT_BACKGROUND_EFFECT_MANAGER_V1_CAPABILITY_BLUR);
    EXPECT_TRUE(hear());
    EXPECT_TRUE(blur.isAvailable());
    EXPECT_EQ(changes, 1);

    const PixelRect whole = {0, 0, 40, 30};
    behind.set(drawing::Region(whole) - PixelRect{0, 10, 30, 20});
    EXPECT_TRUE(hear());
    EXPECT_EQ(compositor.blurred(), (std::vector<PixelRect>{{0, 0, 40, 10}, {30, 10, 10, 20}}));
    behind.set(whole);
    EXPECT_TRUE(hear());
    EXPECT_EQ(compositor.blurred(), std::vector{whole});
    EXPECT_EQ(compositor.effectsMade(), 1);

    compositor.setCapabilities(0);
    EXPECT_TRUE(hear());
    EXPECT_FALSE(blur.isAvailable());
    compositor.setCapabilities(EXT_BACKGROUND_EFFECT_MANAGER_V1_CAPABILITY_BLUR);
    EXPECT_TRUE(hear());
    EXPECT_TRUE(blur.isAvailable());

    compositor.withdrawEffects();
    EXPECT_TRUE(hear());
    EXPECT_FALSE(blur.isAvailable());
    behind.set({});
    EXPECT_TRUE(hear());
    EXPECT_TRUE(compositor.blurred().empty());
    compositor.offerEffects(EXT_BACKGROUND_EFFECT_MANAGER_V1_CAPABILITY_BLUR);
    EXPECT_TRUE(hear());
    EXPECT_TRUE(blur.isAvailable());
    behind.set(whole);
    EXPECT_TRUE(hear());
    EXPECT_EQ(compositor.blurred(), std::vector{whole});
}

} // namespace
} // namespace lumo::wayland
