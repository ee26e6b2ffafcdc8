#include "platform/freedesktop/FileWatch.h"

#include "platform/freedesktop/GlibPointers.h"
#include "platform/freedesktop/GlibSignal.h"

#include <gio/gio.h>

#include <memory>
#include <utility>

namespace lumo::freedesktop {

namespace {

struct Watch {
    GlibPointer<GFileMonitor> monitor;
    std::function<void()> function;
    Handle events;

    ~Watch() {
        events.reset();
        g_file_monitor_cancel(monitor.get());
    }
};

void callBack(GFileMonitor * /*monitor*/, GFile * /*file*/, GFile * /*other*/,
              GFileMonitorEvent /*event*/, gpointer data) {
    static_cast<Watch *>(data)->function();
}

} // namespace

Handle watchFile(const std::filesystem::path &file, std::function<void()> function) {
    // The local file system's own file: the default one may belong to a service that mounts other
    // file systems, which this would connect to.
    const GlibPointer<GFile> local(g_vfs_get_file_for_path(g_vfs_get_local(), file.c_str()));
    GlibPointer<GFileMonitor> monitor(
        g_file_monitor_file(local.get(), G_FILE_MONITOR_NONE, nullptr, nullptr));
    if (!monitor) {
        return {};
    }
    auto watch = std::make_shared<Watch>(std::move(monitor), std::move(function), Handle());
    watch->events =
        connectToSignal(watch->monitor.get(), "changed", G_CALLBACK(callBack), watch.get());
    return Handle([watch]() mutable { watch.reset(); });
}

} // namespace lumo::freedesktop
