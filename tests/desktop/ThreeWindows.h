#pragma once

#include "Look.h"
#include "desktop/LumoProcess.h"
#include "desktop/PrivateDesktop.h"
#include "desktop/SampleApplication.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumo::desktop {

// A window in sight, by what it was painted in.
struct Subject {
    xcb_window_t window = XCB_NONE;
    Colour colour;
};

struct SubjectApplication {
    SubjectApplication(PrivateDesktop &desktop, const std::string &name, const SampleWindow &window)
        : program(desktop, name, {window})
        , subject{program.window(), Colour::parse(window.colour)} {}

    SampleApplication program;
    Subject subject;
};

// Three applications whose windows overlap in a row where the window manager lets windows lie where
// they like, and the real program. Looks at pixels only, so it is all the same to it how an overlay
// gets among the windows.
class ThreeWindows {
  public:
    explicit ThreeWindows(const DesktopOptions &options)
        : desktop(options)
        , outputs_(options.outputs) {}

    // Starts the program with red in front and waits until it is seen that these are clear and
    // those under the effect.
    void show() { show({red.subject}, {green.subject, blue.subject}); }
    void show(const std::vector<Subject> &clear, const std::vector<Subject> &covered);

    // Gives it the focus where there is a manager, and raises it where there is none.
    void bringForward(const SubjectApplication &application);

    bool isSupported(std::string_view hint); // by the manager, as it says

    // Places within a window that nothing but overlays hides, nor the shadow of anything.
    std::vector<Spot> spotsIn(xcb_window_t window);

    // What is wrong when these are to be as painted, those as under the effect, and no overlay in
    // focus; empty when nothing is. Those below wait until it is so.
    std::string wrongNow(const std::vector<Subject> &clear, const std::vector<Subject> &covered);
    std::string wrongWith(const std::vector<Subject> &clear, const std::vector<Subject> &covered);

    // With that of the three clear, and the other two under the effect.
    std::string wrongWithOnly(const SubjectApplication &clear);

    // The same for one that has the focus and was perhaps not raised: what hides part of it is
    // clear.
    std::string wrongWithFocused(const SubjectApplication &focused);

    // With the active of the three clear, or the topmost where none is, and those that lie beneath
    // it under the effect.
    std::string wrongWithFrontmostClear();

    // "below", "managed" or "cut-outs", as the server tells of the overlay; empty without one.
    std::string placementSeen();

    PrivateDesktop desktop;
    DesktopSession &session = desktop.session();
    SubjectApplication red{desktop, "Red", {.area = {60, 80, 420, 320}, .colour = "#d83c30"}};
    SubjectApplication green{desktop, "Green", {.area = {360, 240, 420, 320}, .colour = "#3cb450"}};
    SubjectApplication blue{desktop, "Blue", {.area = {640, 420, 420, 320}, .colour = "#3c64e0"}};
    std::optional<LumoProcess> lumo;

  private:
    Area displayAt(Spot spot);
    std::string wrongIn(const Subject &subject, bool isClear);
    std::string wrongUntilNone(const std::function<std::string()> &look);

    const Look look_{"dim", 1};
    std::vector<OutputUse> outputs_ = {}; // one for all when empty
};

} // namespace lumo::desktop
