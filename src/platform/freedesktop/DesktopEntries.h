#pragma once

#include "support/Handle.h"
#include "support/Signal.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace lumo::freedesktop {

// An application as its desktop entry describes it.
struct DesktopEntry {
    std::string identifier;  // the entry's file identifier without ".desktop"
    std::string name;        // in the user's language
    std::string windowClass; // StartupWMClass, empty when absent
    std::string executable;  // without its folder
    bool isInMenu = true;
};

// The desktop entries of this system, read when first asked for and again after they changed.
// Main thread only.
class DesktopEntries {
  public:
    // The entry of an application by what is known of one of its windows: by StartupWMClass, then
    // by the entry's identifier, then by the name of the running program. Of several, one that
    // menus show. Null when none fits; valid until the next call.
    const DesktopEntry *find(std::string_view className, std::string_view instanceName,
                             std::string_view executable);

    // Those that menus show. Valid until the next call.
    std::vector<const DesktopEntry *> inMenu();

    // A number that is another one after the entries changed.
    std::uint64_t revision() const { return revision_; }

    // Calls the observer after revision() has changed.
    Handle onChange(std::function<void()> observer) {
        return changed_.subscribe(std::move(observer));
    }

  private:
    void load();
    void watch();

    std::vector<DesktopEntry> entries_;
    bool isLoaded_ = false;
    std::uint64_t revision_ = 1;
    Signal<> changed_;
    Handle monitor_;
};

} // namespace lumo::freedesktop
