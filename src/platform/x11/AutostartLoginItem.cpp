#include "platform/x11/AutostartLoginItem.h"

#include "platform/x11/AtomicFile.h"
#include "platform/x11/X11Workspace.h"

#include <glib.h>

#include <string_view>
#include <utility>

namespace lumo::x11 {

namespace {

// An argument of an Exec line. Quotes, backquotes, dollars and backslashes are escaped within the
// quotes, percent signs are doubled; backslashes once more, since the value is a string of the
// file.
std::string execArgument(std::string_view argument) {
    std::string quoted = "\"";
    for (const char character : argument) {
        switch (character) {
        case '"':
        case '`':
        case '$':
            quoted += "\\\\";
            break;
        case '\\':
            quoted += "\\\\\\";
            break;
        case '%':
            quoted += '%';
            break;
        default:
            break;
        }
        quoted += character;
    }
    return quoted + '"';
}

} // namespace

AutostartLoginItem::AutostartLoginItem(std::filesystem::path entry, std::filesystem::path program)
    : entry_(std::move(entry))
    , program_(std::move(program)) {
}

AutostartLoginItem AutostartLoginItem::ofThisProgram() {
    std::error_code error;
    auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    return {std::filesystem::path(g_get_user_config_dir()) / "autostart" /
                (std::string(X11Workspace::ownBundleIdentifier) + ".desktop"),
            error ? std::filesystem::path("lumo") : std::move(program)};
}

std::optional<std::string> AutostartLoginItem::registerMainApplication() {
    const auto text = "[Desktop Entry]\n"
                      "Type=Application\n"
                      "Name=" +
                      std::string(X11Workspace::ownName) +
                      "\n"
                      "Comment=Focus and privacy\n"
                      "Exec=" +
                      execArgument(program_.string()) +
                      "\n"
                      "Icon=" +
                      std::string(X11Workspace::ownBundleIdentifier) +
                      "\n"
                      "Terminal=false\n"
                      "X-GNOME-Autostart-enabled=true\n";
    const AtomicFile file(entry_);
    std::error_code error;
    if (file.read(error) == text && !error) {
        return std::nullopt;
    }
    error = file.replace(text);
    return error ? std::optional(error.message()) : std::nullopt;
}

std::optional<std::string> AutostartLoginItem::unregisterMainApplication() {
    std::error_code error;
    std::filesystem::remove(entry_, error);
    return error ? std::optional(error.message()) : std::nullopt;
}

} // namespace lumo::x11
