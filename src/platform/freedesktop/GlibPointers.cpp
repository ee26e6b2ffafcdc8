#include "platform/freedesktop/GlibPointers.h"

#include <gio/gio.h>

namespace lumo::freedesktop {

void GlibDeleter::operator()(char *text) const noexcept {
    g_free(text);
}

void GlibDeleter::operator()(unsigned char *bytes) const noexcept {
    g_free(bytes);
}

void GlibDeleter::operator()(GDateTime *date) const noexcept {
    g_date_time_unref(date);
}

void GlibDeleter::operator()(GDBusNodeInfo *info) const noexcept {
    g_dbus_node_info_unref(info);
}

void GlibDeleter::operator()(GError *error) const noexcept {
    g_error_free(error);
}

void GlibDeleter::operator()(GKeyFile *file) const noexcept {
    g_key_file_unref(file);
}

void GlibDeleter::operator()(GMarkupParseContext *context) const noexcept {
    g_markup_parse_context_free(context);
}

void GlibDeleter::operator()(GSettingsSchema *schema) const noexcept {
    g_settings_schema_unref(schema);
}

void GlibDeleter::operator()(GSource *source) const noexcept {
    g_source_unref(source);
}

void GlibDeleter::operator()(GVariant *variant) const noexcept {
    g_variant_unref(variant);
}

void GlibDeleter::operator()(void *object) const noexcept {
    g_object_unref(object);
}

} // namespace lumo::freedesktop
