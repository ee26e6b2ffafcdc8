#include "desktop/LumoProcess.h"

#include "desktop/PrivateDesktop.h"
#include "desktop/ProgramUnderTest.h"

#include <csignal>
#include <fstream>
#include <iomanip>
#include <limits>
#include <stdexcept>

namespace lumo::desktop {

namespace fs = std::filesystem;

namespace {

struct ValueWriter {
    std::ostream &stream;

    void operator()(bool value) const { stream << (value ? "<true/>" : "<false/>"); }
    void operator()(long value) const { stream << "<integer>" << value << "</integer>"; }
    void operator()(double value) const { stream << "<real>" << value << "</real>"; }
    void operator()(const std::string &value) const {
        stream << "<string>" << value << "</string>";
    }
};

} // namespace

Preferences shownEffect(const std::string &effectMode, double intensity) {
    return {{"isEnabled", true},
            {"hasCompletedOnboarding", true},
            {"effectMode", effectMode},
            {"effectIntensity", intensity}};
}

fs::path preferencesFile(const PrivateDesktop &desktop) {
    return desktop.configDirectory() / "lumo" / "app.lumo.Lumo.plist";
}

void writePreferences(const PrivateDesktop &desktop, const Preferences &preferences) {
    writePreferences(preferencesFile(desktop), preferences);
}

void writePreferences(const fs::path &file, const Preferences &preferences) {
    fs::create_directories(file.parent_path());
    std::ofstream stream(file);
    stream << std::setprecision(std::numeric_limits<double>::max_digits10)
           << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           << "<plist version=\"1.0\">\n<dict>\n";
    for (const auto &[key, value] : preferences) {
        stream << "  <key>" << key << "</key>";
        std::visit(ValueWriter{stream}, value);
        stream << "\n";
    }
    stream << "</dict>\n</plist>\n";
}

LumoProcess::LumoProcess(PrivateDesktop &desktop)
    : desktop_(desktop)
    , process_(desktop.start({programUnderTest()})) {
}

LumoProcess::LumoProcess(PrivateDesktop &desktop, const Preferences &preferences,
                         const Environment &variables)
    : desktop_(desktop) {
    writePreferences(desktop, preferences);
    process_ = desktop.start({programUnderTest()}, variables);
}

std::vector<LumoProcess::Overlay> LumoProcess::overlays() {
    DesktopSession &session = desktop_.session();
    // Those that a window manager has in a frame.
    std::map<xcb_window_t, xcb_window_t> managed;
    for (const xcb_window_t client : session.numbers(session.root(), "_NET_CLIENT_LIST")) {
        if (isOverlay(client)) {
            managed[session.frameOf(client)] = client;
        }
    }
    std::vector<Overlay> found;
    for (const xcb_window_t child : session.stacking()) {
        const auto inside = managed.find(child);
        const xcb_window_t window = inside != managed.end() ? inside->second : child;
        if (isOverlay(window) && session.isViewable(window)) {
            found.push_back({window, session.areaOf(window)});
        }
    }
    return found;
}

bool LumoProcess::isOverlay(xcb_window_t window) {
    DesktopSession &session = desktop_.session();
    return session.classOf(window) == "Lumo" &&
           !session.numbers(window, "_NET_WM_BYPASS_COMPOSITOR").empty();
}

std::vector<LumoProcess::Overlay> LumoProcess::waitForOverlays(std::size_t count) {
    std::vector<Overlay> found;
    const auto isThere = [&] {
        found = overlays();
        return found.size() == count || !process_->isRunning();
    };
    // OpenGL in software takes most of a minute for its first picture on a busy machine.
    constexpr Seconds longest(60);
    if (!desktop_.session().eventually(isThere, longest) || found.size() != count) {
        throw std::runtime_error("expected " + std::to_string(count) + " overlays but saw " +
                                 std::to_string(found.size()) + ": " + process_->report());
    }
    return found;
}

std::vector<std::string> LumoProcess::remarks() const {
    std::vector<std::string> lines = process_->outputLines();
    const auto errors = process_->errorLines();
    lines.insert(lines.end(), errors.begin(), errors.end());
    std::erase_if(lines, [](const std::string &line) {
        return line.starts_with("[Lumo][display ") || line.starts_with("[Lumo][screen ") ||
               line.starts_with("[Lumo] screen=");
    });
    return lines;
}

std::optional<int> LumoProcess::stop() {
    process_->signal(SIGTERM);
    return process_->waitForExit();
}

} // namespace lumo::desktop
