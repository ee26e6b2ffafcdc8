#include "platform/freedesktop/SettingsProgram.h"

#include "platform/freedesktop/CurrentDesktop.h"

#include <array>
#include <utility>

namespace lumo::freedesktop {

namespace {

using Entry = std::pair<std::string_view, std::string_view>;

// By desktop, as each registers its name and as its packages install its program.
constexpr std::array entriesOfDesktops = {
    Entry{"GNOME", "org.gnome.Settings"},
    Entry{"GNOME", "gnome-control-center"},
    Entry{"KDE", "systemsettings"},
    Entry{"KDE", "kdesystemsettings"},
    Entry{"XFCE", "xfce-settings-manager"},
    Entry{"X-Cinnamon", "cinnamon-settings"},
    Entry{"Cinnamon", "cinnamon-settings"},
    Entry{"MATE", "matecc"},
    Entry{"LXQt", "lxqt-config"},
    Entry{"Budgie", "org.buddiesofbudgie.ControlCenter"},
    Entry{"Budgie", "budgie-control-center"},
    Entry{"Pantheon", "io.elementary.settings"},
    Entry{"Pantheon", "io.elementary.switchboard"},
    Entry{"Unity", "unity-control-center"},
    Entry{"UKUI", "ukui-control-center"},
    Entry{"Deepin", "org.deepin.dde.control-center"},
    Entry{"Deepin", "dde-control-center"},
};

} // namespace

std::vector<std::string_view> settingsEntriesOf(std::string_view currentDesktop) {
    std::vector<std::string_view> entries;
    for (const auto name : desktopNames(currentDesktop)) {
        for (const auto &[desktop, entry] : entriesOfDesktops) {
            if (desktop == name) {
                entries.push_back(entry);
            }
        }
    }
    return entries;
}

} // namespace lumo::freedesktop
