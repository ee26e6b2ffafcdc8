#include "platform/freedesktop/DesktopSettings.h"

#include "platform/freedesktop/CurrentDesktop.h"
#include "platform/freedesktop/GlibPointers.h"

#include <gio/gio.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string_view>

namespace lumo::freedesktop {

namespace {

constexpr const char *backgroundSchema = "org.gnome.desktop.background";
constexpr const char *colorKey = "primary-color";

// Of those that use the schema, by the names in XDG_CURRENT_DESKTOP.
constexpr std::array<std::string_view, 2> desktops = {"GNOME", "Unity"};

bool isDesktopRunning() {
    const auto current = currentDesktop();
    return std::ranges::any_of(desktopNames(current), [](std::string_view name) {
        return std::ranges::find(desktops, name) != desktops.end();
    });
}

} // namespace

std::optional<Color> desktopBackgroundColor() {
    auto *source = g_settings_schema_source_get_default();
    if (source == nullptr || !isDesktopRunning()) {
        return std::nullopt;
    }
    const GlibPointer<GSettingsSchema> schema(
        g_settings_schema_source_lookup(source, backgroundSchema, TRUE));
    // Asking for what a schema lacks would end the program.
    if (!schema || g_settings_schema_has_key(schema.get(), colorKey) == FALSE) {
        return std::nullopt;
    }
    const GlibPointer<GSettings> settings(g_settings_new_full(schema.get(), nullptr, nullptr));
    const GlibPointer<gchar> text(g_settings_get_string(settings.get(), colorKey));
    return colorFromHexadecimal(text.get());
}

std::optional<Color> colorFromHexadecimal(std::string_view text) {
    if (text.size() < 4 || text.size() > 13 || text[0] != '#' || (text.size() - 1) % 3 != 0) {
        return std::nullopt;
    }
    const auto digits = (text.size() - 1) / 3;
    const double largest = std::pow(16, digits) - 1;
    std::array<double, 3> channels{};
    for (std::size_t index = 0; index < channels.size(); ++index) {
        const auto part = text.substr(1 + index * digits, digits);
        unsigned value = 0;
        const auto result = std::from_chars(part.begin(), part.end(), value, 16);
        if (result.ec != std::errc() || result.ptr != part.end()) {
            return std::nullopt;
        }
        channels[index] = value / largest;
    }
    return Color{channels[0], channels[1], channels[2], 1};
}

} // namespace lumo::freedesktop
