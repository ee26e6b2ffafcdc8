#pragma once

#include "desktop/ChildProcess.h"
#include "desktop/Picture.h"
#include "desktop/PixelLayout.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumo::desktop {

// Keys by the symbol on them.
enum class Key : std::uint32_t {
    erase = 0xff08, // what is before the caret
    tab = 0xff09,
    enter = 0xff0d,
    escape = 0xff1b,
    home = 0xff50,
    left = 0xff51,
    up = 0xff52,
    right = 0xff53,
    down = 0xff54,
    end = 0xff57,
    remove = 0xffff,
    numLock = 0xff7f,
    capsLock = 0xffe5,
    space = 0x0020,
    c = 0x0063,
    d = 0x0064,
    j = 0x006a,
    k = 0x006b,
    n = 0x006e,
    v = 0x0076,
    shift = 0xffe1,
    control = 0xffe3,
    option = 0xffe9,  // Alt
    command = 0xffeb, // Super
};

// The person at a desktop, with a pager and a pair of good eyes: an X connection of the tester's
// own that acts on windows as users and their tools do and looks at what became of it. Places are
// in pixels of the root window. What the server refuses is ignored, as windows come and go; a lost
// server makes every look throw.
class DesktopSession {
  public:
    explicit DesktopSession(const std::string &displayName);
    ~DesktopSession();
    DesktopSession(const DesktopSession &) = delete;
    DesktopSession &operator=(const DesktopSession &) = delete;

    xcb_connection_t *connection() const { return connection_; }
    xcb_window_t root() const { return screen_->root; }
    Area screenArea() { return areaOf(root()); }
    xcb_atom_t atom(std::string_view name);

    // Waiting. eventually() is true as soon as the condition holds and false when it does not
    // within the deadline; remains() is true when it holds at every look for that long.
    bool eventually(const std::function<bool()> &condition, Seconds deadline = Seconds(10));
    bool remains(const std::function<bool()> &condition, Seconds duration);

    // Looks until nothing is wrong, and returns what is when the deadline has come.
    std::string wrongUntilNone(const std::function<std::string()> &look);

    // Windows. frameOf() is the child of the root window that holds a window: what the window
    // manager made for it, or the window itself; none when it is gone.
    std::vector<xcb_window_t> stacking(); // children of the root window, bottom to top
    xcb_window_t frameOf(xcb_window_t window);
    bool isAbove(xcb_window_t upper, xcb_window_t lower);
    bool isViewable(xcb_window_t window);
    bool isDrawn(xcb_window_t window); // and not there for its input alone
    bool isOverrideRedirect(xcb_window_t window);
    bool isShaped(xcb_window_t window);                        // in its bounding region
    Area areaOf(xcb_window_t window);                          // without its border
    Area frameAreaOf(xcb_window_t window);                     // of its frame, border included
    std::vector<xcb_window_t> childrenOf(xcb_window_t window); // bottom to top
    std::string classOf(xcb_window_t window);
    std::string titleOf(xcb_window_t window); // WM_NAME
    std::vector<std::uint32_t> numbers(xcb_window_t window, std::string_view property);
    xcb_window_t activeWindow(); // as the window manager says; none when it names none
    xcb_window_t focusedWindow();
    bool isKeyboardGrabbed(); // by another client
    bool isPointerGrabbed();  // the same; a button that is held grabs it as well
    xcb_window_t selectionOwner(std::string_view selection);

    // The window that proves that a window manager lives, and the manager's name from there; none
    // when none runs.
    xcb_window_t windowManagerWindow();
    std::optional<std::string> windowManagerName();

    // A window manager handles windows, whether or not it has a name.
    bool hasWindowManager();

    // Maps a small window and takes it away again: true when a window manager took it in hand soon.
    bool windowManagerTakesWindows();

    // Pixels as shown, the work of a compositing manager included.
    Picture picture();
    Picture picture(const Area &part);

    // The screen's picture once nothing has moved in it for a fifth of a second.
    Picture stillPicture();
    Colour pixel(int x, int y);
    Colour pixel(Spot spot) { return pixel(spot.x, spot.y); }

    // What a pager and a title bar ask for.
    void activate(xcb_window_t window);
    void close(xcb_window_t window);
    void minimise(xcb_window_t window);
    void move(xcb_window_t window, int x, int y);
    void resize(xcb_window_t window, int width, int height);
    void setState(xcb_window_t window, std::string_view state, bool on); // "_NET_WM_STATE_..."
    void switchToDesktop(std::uint32_t index);
    void sendToDesktop(xcb_window_t window, std::uint32_t index);

    // What the window's own client sets.
    void setNumbers(xcb_window_t window, std::string_view property,
                    const std::vector<std::uint32_t> &numbers);
    void setText(xcb_window_t window, std::string_view property, std::string_view type,
                 std::string_view text);

    // What hands do.
    void movePointerTo(int x, int y);
    void movePointerBy(int dx, int dy);
    // To the right and the left by turns, four times, with a mouse that reports so often at most.
    void shakePointer(double reportsPerSecond);
    void click(Spot spot, int button = 1);
    void setButton(int button, bool down);
    void press(const std::vector<Key> &chord); // down in this order, up in the opposite one
    void setKey(Key key, bool down);
    void type(std::string_view lowerCaseLetters);

    // Has the server cut off the connection that was opened last.
    void killLastClient();

    // A wallpaper in the way that wallpaper programs set one: a pixmap that the root window shows
    // and names in a property.
    void setWallpaper(const Picture &picture);

    // Maps an ordinary window, but without a frame to be seen, that shows the picture wherever the
    // window manager puts it.
    xcb_window_t openWindow(const Picture &picture);

  private:
    void askWindowManager(xcb_window_t window, std::string_view type,
                          const std::vector<std::uint32_t> &data);
    std::string textOf(xcb_window_t window, xcb_atom_t property);
    std::uint8_t keycodeOf(Key key);
    void fakeInput(std::uint8_t type, std::uint8_t detail, int x, int y);
    void sync();

    std::string displayName_;
    xcb_connection_t *connection_;
    xcb_screen_t *screen_ = nullptr;
    PixelLayout layout_;
    std::map<std::string, xcb_atom_t, std::less<>> atoms_;
};

} // namespace lumo::desktop
