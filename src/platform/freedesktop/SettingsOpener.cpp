#include "platform/freedesktop/SettingsOpener.h"

#include "platform/freedesktop/CurrentDesktop.h"
#include "platform/freedesktop/GlibPointers.h"
#include "platform/freedesktop/SettingsProgram.h"

#include <gio/gdesktopappinfo.h>

#include <string>

namespace lumo::freedesktop {

namespace {

GlibPointer<GAppInfo> settingsProgram() {
    for (const auto entry : settingsEntriesOf(currentDesktop())) {
        auto *info = g_desktop_app_info_new((std::string(entry) + ".desktop").c_str());
        if (info != nullptr) {
            return GlibPointer<GAppInfo>(G_APP_INFO(info));
        }
    }
    return nullptr;
}

} // namespace

bool SettingsOpener::open() {
    const auto program = settingsProgram();
    if (!program) {
        return false;
    }
    calls_.start(
        [this](GObject *source, GAsyncResult *result) {
            GError *raw = nullptr;
            g_app_info_launch_uris_finish(G_APP_INFO(source), result, &raw);
            if (const GlibPointer<GError> error(raw); error) {
                log_.print("[Lumo] could not start " +
                           std::string(g_app_info_get_name(G_APP_INFO(source))) + ": " +
                           error->message);
            }
        },
        g_app_info_launch_uris_async, program.get(), nullptr, nullptr);
    return true;
}

} // namespace lumo::freedesktop
