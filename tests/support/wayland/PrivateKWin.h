#pragma once

#include "desktop/ChildProcess.h"
#include "desktop/Picture.h"
#include "wayland/WaylandHands.h"
#include "wayland/WaylandUser.h"

#include <sys/types.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace lumo::desktop {

struct KWinOptions {
    enum class Trust { everyone, desktopEntries };

    int outputs = 1; // side by side, each of that size in pixels
    int width = 1280;
    int height = 720;
    bool hasXwayland = false;
    // The socket of a compositor in whose window it shows its one output, and may be locked;
    // without a screen when empty. KWin takes no pictures of a locked screen.
    std::string screen = {};
    Trust trust = Trust::everyone; // with windows, input and outputs of others
};

// KWin in a session of its own. Making it returns when it is at work and throws, with what it said,
// when it does not get there.
class PrivateKWin : public WaylandUser {
  public:
    explicit PrivateKWin(const KWinOptions &options = {});
    ~PrivateKWin();
    PrivateKWin(const PrivateKWin &) = delete;
    PrivateKWin &operator=(const PrivateKWin &) = delete;

    // The sample application, once KWin has its window.
    std::unique_ptr<ChildProcess> startSample(const std::string &name, const std::string &colour,
                                              int width, int height);

    // Has KWin run code of its scripts' language, in which each(caption, function) calls the
    // function with every window of that caption.
    void script(const std::string &code);

    // Calls a method of an object of KWin's with one argument of a type, as printed.
    std::string call(const std::string &object, const std::string &method,
                     const std::string &argument) const;

    // Everything on the screens, in pixels.
    Picture picture(const std::string &output = "Virtual-0") const;

    // For trust in everyone alone.
    void setOutput(const std::string &name, bool isEnabled, double scale = 1, int quarterTurns = 0);
    void moveTo(Spot spot);
    void setButton(bool isDown, EvdevButton button = EvdevButton::left);
    void setKey(EvdevKey key, bool isDown);
    void click(Spot spot);
    void press(const std::vector<EvdevKey> &chord);

    ChildProcess &process() { return *kwin_; }

  private:
    struct Control;

    struct XServer {
        pid_t process;
        std::string display;
    };

    // The one that KWin has started; absent while there is none.
    std::optional<XServer> xServer() const;

    // Whether KWin is the window manager of its Xwayland: what a client maps before is never shown.
    bool managesXWindows();

    std::unique_ptr<ChildProcess> kwin_;
    std::unique_ptr<Control> control_;
    int scripts_ = 0;
};

} // namespace lumo::desktop
