#include "platform/freedesktop/DesktopEntries.h"

#include "platform/freedesktop/GlibPointers.h"
#include "platform/freedesktop/GlibSignal.h"

#include <gio/gdesktopappinfo.h>
#include <gio/gio.h>

#include <algorithm>
#include <cctype>
#include <filesystem>

namespace lumo::freedesktop {

namespace {

std::string orEmpty(const char *text) {
    return text == nullptr ? "" : text;
}

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](unsigned char x, unsigned char y) {
        return std::tolower(x) == std::tolower(y);
    });
}

DesktopEntry entryOf(GDesktopAppInfo *info) {
    constexpr std::string_view suffix = ".desktop";
    DesktopEntry entry;
    entry.identifier = orEmpty(g_app_info_get_id(G_APP_INFO(info)));
    if (entry.identifier.ends_with(suffix)) {
        entry.identifier.resize(entry.identifier.size() - suffix.size());
    }
    entry.name = orEmpty(g_app_info_get_name(G_APP_INFO(info)));
    entry.windowClass = orEmpty(g_desktop_app_info_get_startup_wm_class(info));
    entry.executable = std::filesystem::path(orEmpty(g_app_info_get_executable(G_APP_INFO(info))))
                           .filename()
                           .string();
    entry.isInMenu = g_desktop_app_info_get_nodisplay(info) == FALSE;
    return entry;
}

} // namespace

const DesktopEntry *DesktopEntries::find(std::string_view className, std::string_view instanceName,
                                         std::string_view executable) {
    if (!isLoaded_) {
        load();
    }
    const auto matches = [](std::string_view text, std::string_view wanted) {
        return !wanted.empty() && equalsIgnoringCase(text, wanted);
    };
    const auto firstOf = [this](auto fits) -> const DesktopEntry * {
        const auto found = std::find_if(entries_.begin(), entries_.end(), fits);
        return found == entries_.end() ? nullptr : &*found;
    };
    if (const auto *entry = firstOf([&](const DesktopEntry &each) {
            return matches(each.windowClass, className) || matches(each.windowClass, instanceName);
        })) {
        return entry;
    }
    if (const auto *entry = firstOf([&](const DesktopEntry &each) {
            return matches(each.identifier, className) || matches(each.identifier, instanceName);
        })) {
        return entry;
    }
    return firstOf([&](const DesktopEntry &each) { return matches(each.executable, executable); });
}

std::vector<const DesktopEntry *> DesktopEntries::inMenu() {
    if (!isLoaded_) {
        load();
    }
    std::vector<const DesktopEntry *> shown;
    for (const auto &entry : entries_) {
        if (entry.isInMenu) {
            shown.push_back(&entry);
        }
    }
    return shown;
}

void DesktopEntries::load() {
    watch();
    entries_.clear();
    GList *all = g_app_info_get_all();
    for (const GList *each = all; each != nullptr; each = each->next) {
        const GlibPointer<GObject> info(static_cast<GObject *>(each->data));
        if (G_IS_DESKTOP_APP_INFO(info.get())) {
            entries_.push_back(entryOf(G_DESKTOP_APP_INFO(info.get())));
        }
    }
    g_list_free(all);
    std::sort(entries_.begin(), entries_.end(), [](const auto &a, const auto &b) {
        return a.isInMenu != b.isInMenu ? a.isInMenu : a.identifier < b.identifier;
    });
    isLoaded_ = true;
}

void DesktopEntries::watch() {
    if (monitor_) {
        return;
    }
    const GlibPointer<GAppInfoMonitor> monitor(g_app_info_monitor_get());
    const auto changed = +[](GAppInfoMonitor *, gpointer self) {
        auto &entries = *static_cast<DesktopEntries *>(self);
        entries.isLoaded_ = false;
        ++entries.revision_;
        entries.changed_.emit();
    };
    monitor_ = connectToSignal(monitor.get(), "changed", G_CALLBACK(changed), this);
}

} // namespace lumo::freedesktop
