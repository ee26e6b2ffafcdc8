#include "platform/freedesktop/PortalAppearance.h"

#include "bus/BusService.h"
#include "bus/RunUntil.h"
#include "desktop/MessageBus.h"
#include "desktop/Variable.h"
#include "platform/freedesktop/GlibSignal.h"
#include "platform/freedesktop/SessionBus.h"

#include <gio/gio.h>
#include <gmock/gmock.h>
#include <org.freedesktop.portal.Settings.h>

#include <optional>
#include <string>

namespace lumo::freedesktop {
namespace {

// The portal, with a preference as it stands in the desktop's settings.
class Portal {
  public:
    explicit Portal(const std::string &address)
        : service_(address)
        , settings_(dbus_portal_settings_skeleton_new())
        , reads_(connectToSignal(settings_.get(), "handle-read", G_CALLBACK(&Portal::read), this)) {
        service_.offer(settings_.get(), "/org/freedesktop/portal/desktop");
        service_.takeName("org.freedesktop.portal.Desktop");
    }
    Portal(const Portal &) = delete;
    Portal &operator=(const Portal &) = delete;

    void announce(const char *group, const char *key, unsigned value) {
        dbus_portal_settings_emit_setting_changed(
            settings_.get(), group, key, g_variant_new_variant(g_variant_new_uint32(value)));
    }

    unsigned scheme = 0;
    int questions = 0;

  private:
    // In two boxes, as the method of this name gives it.
    static gboolean read(DbusPortalSettings *settings, GDBusMethodInvocation *invocation,
                         const char * /*group*/, const char * /*key*/, gpointer self) {
        auto &portal = *static_cast<Portal *>(self);
        ++portal.questions;
        dbus_portal_settings_complete_read(
            settings, invocation,
            g_variant_new_variant(g_variant_new_variant(g_variant_new_uint32(portal.scheme))));
        return TRUE;
    }

    test::BusService service_;
    GlibPointer<DbusPortalSettings> settings_;
    Handle reads_;
};

TEST(PortalAppearanceTest, SchemeIsFollowedOnceObserved) {
    const desktop::MessageBus messageBus;
    const desktop::Variable address("DBUS_SESSION_BUS_ADDRESS", messageBus.address());
    Portal portal(messageBus.address());
    portal.scheme = 1;
    GlibMainLoop loop;
    SessionBus bus(loop);
    PortalAppearance appearance(bus);
    ASSERT_TRUE(runUntil(loop, [&] { return bus.connection() != nullptr; }));
    EXPECT_EQ(portal.questions, 0);
    int changes = 0;
    const auto observer = appearance.onChange([&] { ++changes; });
    EXPECT_EQ(appearance.prefersDark(), std::nullopt);
    EXPECT_TRUE(runUntil(loop, [&] { return appearance.prefersDark() == true; }));
    portal.announce("org.freedesktop.appearance", "contrast", 2);
    portal.announce("org.gnome.desktop.interface", "color-scheme", 2);
    portal.announce("org.freedesktop.appearance", "color-scheme", 1);
    portal.announce("org.freedesktop.appearance", "color-scheme", 2);
    EXPECT_TRUE(runUntil(loop, [&] { return appearance.prefersDark() == false; }));
    EXPECT_EQ(changes, 2);
    for (const unsigned none : {0U, 3U}) {
        portal.announce("org.freedesktop.appearance", "color-scheme", none);
        portal.announce("org.freedesktop.appearance", "color-scheme", none);
        EXPECT_TRUE(runUntil(loop, [&] { return !appearance.prefersDark(); }));
    }
    EXPECT_EQ(changes, 3);
    EXPECT_EQ(portal.questions, 1);
}

} // namespace
} // namespace lumo::freedesktop
