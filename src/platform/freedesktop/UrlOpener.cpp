#include "platform/freedesktop/UrlOpener.h"

#include "platform/Workspace.h"
#include "platform/freedesktop/GlibPointers.h"
#include "platform/freedesktop/SettingsProgram.h"

#include <gio/gdesktopappinfo.h>

#include <cstdlib>
#include <string>

namespace lumo::freedesktop {

namespace {

// A start that is under way. Without its opener only what it owns may be touched.
struct Start {
    const Log *log;
    std::string name;
};

GlibPointer<GAppInfo> settingsProgram() {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing changes the environment
    const char *desktop = std::getenv("XDG_CURRENT_DESKTOP");
    for (const auto entry : settingsEntriesOf(desktop == nullptr ? "" : desktop)) {
        auto *info = g_desktop_app_info_new((std::string(entry) + ".desktop").c_str());
        if (info != nullptr) {
            return GlibPointer<GAppInfo>(G_APP_INFO(info));
        }
    }
    return nullptr;
}

GlibPointer<GAppInfo> programFor(std::string_view scheme) {
    return GlibPointer<GAppInfo>(
        g_app_info_get_default_for_uri_scheme(std::string(scheme).c_str()));
}

void finish(GObject *program, GAsyncResult *result, gpointer data) {
    const std::unique_ptr<Start> start(static_cast<Start *>(data));
    GError *raw = nullptr;
    g_app_info_launch_uris_finish(G_APP_INFO(program), result, &raw);
    const GlibPointer<GError> error(raw);
    if (error && g_error_matches(raw, G_IO_ERROR, G_IO_ERROR_CANCELLED) == FALSE) {
        start->log->print("[Lumo] could not start " + start->name + ": " + raw->message);
    }
}

} // namespace

UrlOpener::UrlOpener(const Log &log)
    : log_(log)
    , cancellation_(std::make_unique<Cancellation>()) {
}

UrlOpener::~UrlOpener() = default;

bool UrlOpener::open(std::string_view url) {
    const auto scheme = url.substr(0, url.find(':'));
    const bool isSettingsPage = scheme == systemSettingsScheme;
    const auto program = isSettingsPage ? settingsProgram() : programFor(scheme);
    if (!program) {
        return false;
    }
    std::string text(url);
    GList one{text.data(), nullptr, nullptr};
    g_app_info_launch_uris_async(program.get(), isSettingsPage ? nullptr : &one, nullptr,
                                 cancellation_->get(), finish,
                                 new Start{&log_, g_app_info_get_name(program.get())});
    return true;
}

} // namespace lumo::freedesktop
