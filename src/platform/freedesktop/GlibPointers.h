#pragma once

#include <gio/gio.h>

#include <memory>
#include <string>

namespace lumo::freedesktop {

struct GlibDeleter {
    void operator()(gchar *text) const noexcept { g_free(text); }
    void operator()(GVariant *variant) const noexcept { g_variant_unref(variant); }
    void operator()(GError *error) const noexcept { g_error_free(error); }
    void operator()(GDBusNodeInfo *info) const noexcept { g_dbus_node_info_unref(info); }
    void operator()(GKeyFile *file) const noexcept { g_key_file_unref(file); }
    void operator()(GSettingsSchema *schema) const noexcept { g_settings_schema_unref(schema); }
    void operator()(GSource *source) const noexcept { g_source_unref(source); }
    void operator()(gpointer object) const noexcept { g_object_unref(object); }
};

// Owns one reference to a GObject or to any of the types above, and is how this program frees them.
template <class T>
using GlibPointer = std::unique_ptr<T, GlibDeleter>;

// Cancels whatever was begun with it when it is destroyed.
class Cancellation {
  public:
    Cancellation() = default;
    ~Cancellation() { g_cancellable_cancel(cancellable_.get()); }
    Cancellation(const Cancellation &) = delete;
    Cancellation &operator=(const Cancellation &) = delete;

    GCancellable *get() const { return cancellable_.get(); }

  private:
    GlibPointer<GCancellable> cancellable_{g_cancellable_new()};
};

} // namespace lumo::freedesktop
