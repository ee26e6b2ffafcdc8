#pragma once

#include <memory>

// As GLib declares them, so that headers can name them without GLib's own.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl*)
using GCancellable = struct _GCancellable;
using GDBusConnection = struct _GDBusConnection;
using GDateTime = struct _GDateTime;
using GDBusNodeInfo = struct _GDBusNodeInfo;
using GError = struct _GError;
using GKeyFile = struct _GKeyFile;
using GMarkupParseContext = struct _GMarkupParseContext;
using GSettingsSchema = struct _GSettingsSchema;
using GSource = struct _GSource;
using GVariant = struct _GVariant;
// NOLINTEND(bugprone-reserved-identifier,cert-dcl*)

namespace lumo::freedesktop {

struct GlibDeleter {
    void operator()(char *text) const noexcept;
    void operator()(unsigned char *bytes) const noexcept;
    void operator()(GDateTime *date) const noexcept;
    void operator()(GDBusNodeInfo *info) const noexcept;
    void operator()(GError *error) const noexcept;
    void operator()(GKeyFile *file) const noexcept;
    void operator()(GMarkupParseContext *context) const noexcept;
    void operator()(GSettingsSchema *schema) const noexcept;
    void operator()(GSource *source) const noexcept;
    void operator()(GVariant *variant) const noexcept;
    void operator()(void *object) const noexcept; // any GObject
};

// Owns one reference to a GObject or to one of the types above. This is how the program frees what
// it has from GLib.
template <class T>
using GlibPointer = std::unique_ptr<T, GlibDeleter>;

} // namespace lumo::freedesktop
