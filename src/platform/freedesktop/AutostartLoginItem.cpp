#include "platform/freedesktop/AutostartLoginItem.h"

#include "platform/freedesktop/AtomicFile.h"
#include "platform/freedesktop/ConfigurationFolder.h"
#include "platform/freedesktop/GlibPointers.h"
#include "platform/freedesktop/ProgramIdentity.h"

#include <glib.h>

#include <string_view>
#include <utility>

namespace lumo::freedesktop {

namespace {

// Text as the value of a key in a desktop entry.
std::string entryValue(std::string_view text) {
    std::string value;
    for (const char character : text) {
        switch (character) {
        case '\\':
            value += "\\\\";
            break;
        case '\n':
            value += "\\n";
            break;
        case '\r':
            value += "\\r";
            break;
        case '\t':
            value += "\\t";
            break;
        default:
            value += character;
        }
    }
    // Blanks at the end may be dropped.
    return value.ends_with(' ') ? value.replace(value.size() - 1, 1, "\\s") : value;
}

// An argument of a command line in a desktop entry, as any text.
std::string commandArgument(std::string_view argument) {
    std::string quoted = "\"";
    for (const char character : argument) {
        if (std::string_view("\"`$\\").find(character) != std::string_view::npos) {
            quoted += '\\';
        } else if (character == '%') {
            quoted += '%';
        }
        quoted += character;
    }
    return quoted + '"';
}

std::string entryText(const std::filesystem::path &program) {
    return "[Desktop Entry]\n"
           "Type=Application\n"
           "Name=" +
           std::string(program::name) +
           "\n"
           "Comment=Focus and privacy\n"
           "TryExec=" +
           entryValue(program.string()) +
           "\n"
           "Exec=" +
           entryValue(commandArgument(program.string())) +
           " --from-desktop\n"
           "Icon=" +
           std::string(program::identifier) +
           "\n"
           "Terminal=false\n"
           "X-GNOME-Autostart-enabled=true\n";
}

// Whether the user has switched the entry off in the desktop's own settings, which keep it for
// that.
bool isSwitchedOff(const std::string &entry) {
    const GlibPointer<GKeyFile> file(g_key_file_new());
    const auto says = [&file](const char *key, bool value) {
        GError *raw = nullptr;
        const bool found =
            g_key_file_get_boolean(file.get(), G_KEY_FILE_DESKTOP_GROUP, key, &raw) != FALSE;
        const GlibPointer<GError> error(raw);
        return !error && found == value;
    };
    return g_key_file_load_from_data(file.get(), entry.data(), entry.size(), G_KEY_FILE_NONE,
                                     nullptr) != FALSE &&
           (says(G_KEY_FILE_DESKTOP_KEY_HIDDEN, true) || says("X-GNOME-Autostart-enabled", false) ||
            says("X-MATE-Autostart-enabled", false));
}

} // namespace

AutostartLoginItem::AutostartLoginItem(std::optional<std::filesystem::path> entry,
                                       std::filesystem::path program)
    : entry_(std::move(entry))
    , program_(std::move(program)) {
}

AutostartLoginItem AutostartLoginItem::ofThisProgram() {
    std::error_code error;
    auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    auto entry = userConfigurationFolder();
    if (entry) {
        *entry /= "autostart";
        *entry /= std::string(program::identifier) + ".desktop";
    }
    return {std::move(entry), error ? std::filesystem::path("lumo") : std::move(program)};
}

std::optional<std::string> AutostartLoginItem::registerMainApplication() {
    if (!entry_) {
        return "there is no home folder";
    }
    const auto text = entryText(program_);
    const AtomicFile file(*entry_);
    std::error_code error;
    const auto present = file.read(error);
    if (present == text) {
        return std::nullopt;
    }
    if (present && isSwitchedOff(*present)) {
        return "it is switched off in the desktop's own settings";
    }
    error = file.replace(text);
    return error ? std::optional(error.message()) : std::nullopt;
}

std::optional<std::string> AutostartLoginItem::unregisterMainApplication() {
    std::error_code error;
    if (entry_) {
        std::filesystem::remove(*entry_, error);
    }
    return error ? std::optional(error.message()) : std::nullopt;
}

} // namespace lumo::freedesktop
