// A small application for trying things on: opens windows in known colours, obeys commands on its
// standard input, and prints each window it opened and each click it got. Ends with its input.

#include "desktop/Picture.h"
#include "desktop/PixelLayout.h"

#include <poll.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace lumo::desktop {
namespace {

struct Free {
    void operator()(void *memory) const noexcept { std::free(memory); }
};

struct OpenWindow {
    xcb_window_t window;
    Colour colour;
    bool page;
    bool isAnimated = false;
};

Colour mixed(Colour a, Colour b, int percentOfA) {
    const auto mix = [&](int first, int second) {
        return static_cast<std::uint8_t>((first * percentOfA + second * (100 - percentOfA)) / 100);
    };
    return {mix(a.red, b.red), mix(a.green, b.green), mix(a.blue, b.blue)};
}

class Application {
  public:
    explicit Application(std::string className)
        : className_(std::move(className))
        , connection_(xcb_connect(nullptr, nullptr)) {
        if (xcb_connection_has_error(connection_) != 0) {
            throw std::runtime_error("there is no X server");
        }
        screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
        layout_ = PixelLayout::of(connection_, *screen_);
        protocols_ = atom("WM_PROTOCOLS");
        context_ = xcb_generate_id(connection_);
        xcb_create_gc(connection_, context_, screen_->root, 0, nullptr);
    }

    ~Application() { xcb_disconnect(connection_); }
    Application(const Application &) = delete;
    Application &operator=(const Application &) = delete;

    int run() {
        while (true) {
            xcb_flush(connection_);
            std::array<pollfd, 2> sources = {
                {{xcb_get_file_descriptor(connection_), POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}}};
            if (::poll(sources.data(), sources.size(), isAnimating() ? 33 : -1) == 0) {
                animateOnce();
            }
            handleEvents();
            if (sources[1].revents != 0 && !readCommands()) {
                return 0;
            }
            if (xcb_connection_has_error(connection_) != 0) {
                return 1;
            }
        }
    }

  private:
    xcb_atom_t atom(const std::string &name) {
        const std::unique_ptr<xcb_intern_atom_reply_t, Free> reply(xcb_intern_atom_reply(
            connection_,
            xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data()),
            nullptr));
        return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
    }

    template <class T>
    void setProperty(xcb_window_t window, const std::string &name, xcb_atom_t type, int format,
                     const std::vector<T> &values) {
        xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, atom(name), type,
                            static_cast<std::uint8_t>(format),
                            static_cast<std::uint32_t>(values.size()), values.data());
    }

    void open(std::istringstream &fields) {
        int x = 0;
        int y = 0;
        int width = 0;
        int height = 0;
        std::string colour;
        std::string type;
        std::string state;
        bool overrideRedirect = false;
        bool page = false;
        xcb_window_t transientFor = XCB_NONE;
        std::string title;
        fields >> x >> y >> width >> height >> colour >> type >> state >> overrideRedirect >>
            page >> transientFor;
        std::getline(fields >> std::ws, title);

        const xcb_window_t window = xcb_generate_id(connection_);
        const std::array<std::uint32_t, 3> values = {
            layout_.pixelOf(Colour::parse(colour)), overrideRedirect ? 1U : 0U,
            XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_BUTTON_PRESS |
                XCB_EVENT_MASK_STRUCTURE_NOTIFY};
        xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, screen_->root,
                          static_cast<std::int16_t>(x), static_cast<std::int16_t>(y),
                          static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(height), 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                          XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK,
                          values.data());
        windows_.push_back({window, Colour::parse(colour), page});
        describe(window, title, type, state, {x, y, width, height});
        if (transientFor != XCB_NONE) {
            setProperty<std::uint32_t>(window, "WM_TRANSIENT_FOR", XCB_ATOM_WINDOW, 32,
                                       {transientFor});
        }
        xcb_map_window(connection_, window);
        std::printf("window %u\n", window);
        std::fflush(stdout);
    }

    void describe(xcb_window_t window, const std::string &title, const std::string &type,
                  const std::string &state, const Area &area) {
        std::string classes = className_;
        classes += '\0';
        classes += className_;
        classes += '\0';
        setProperty(window, "WM_CLASS", XCB_ATOM_STRING, 8,
                    std::vector<char>(classes.begin(), classes.end()));
        const std::vector<char> name(title.begin(), title.end());
        setProperty(window, "WM_NAME", XCB_ATOM_STRING, 8, name);
        setProperty(window, "_NET_WM_NAME", atom("UTF8_STRING"), 8, name);
        setProperty<std::uint32_t>(window, "_NET_WM_PID", XCB_ATOM_CARDINAL, 32,
                                   {static_cast<std::uint32_t>(getpid())});
        setProperty<std::uint32_t>(window, "WM_PROTOCOLS", XCB_ATOM_ATOM, 32,
                                   {atom("WM_DELETE_WINDOW")});
        constexpr std::uint32_t userPositionAndSize = 3;
        std::vector<std::uint32_t> hints(18);
        hints[0] = userPositionAndSize;
        hints[1] = static_cast<std::uint32_t>(area.x);
        hints[2] = static_cast<std::uint32_t>(area.y);
        hints[3] = static_cast<std::uint32_t>(area.width);
        hints[4] = static_cast<std::uint32_t>(area.height);
        setProperty(window, "WM_NORMAL_HINTS", XCB_ATOM_WM_SIZE_HINTS, 32, hints);
        if (type != "-") {
            setProperty<std::uint32_t>(window, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM, 32,
                                       {atom("_NET_WM_WINDOW_TYPE_" + type)});
        }
        if (state != "-") {
            setProperty<std::uint32_t>(window, "_NET_WM_STATE", XCB_ATOM_ATOM, 32,
                                       {atom("_NET_WM_STATE_" + state)});
        }
    }

    bool isAnimating() const { return std::ranges::any_of(windows_, &OpenWindow::isAnimated); }

    void animateOnce() {
        ++frame_;
        for (OpenWindow &window : windows_) {
            if (window.isAnimated) {
                window.colour.blue = static_cast<std::uint8_t>(frame_ * 8);
                show(window);
            }
        }
    }

    void show(const OpenWindow &window) {
        const std::uint32_t background = layout_.pixelOf(window.colour);
        xcb_change_window_attributes(connection_, window.window, XCB_CW_BACK_PIXEL, &background);
        xcb_clear_area(connection_, 1, window.window, 0, 0, 0, 0);
    }

    void fill(xcb_window_t window, Colour colour, const Area &area) {
        const std::uint32_t foreground = layout_.pixelOf(colour);
        xcb_change_gc(connection_, context_, XCB_GC_FOREGROUND, &foreground);
        const xcb_rectangle_t rectangle = {
            static_cast<std::int16_t>(area.x), static_cast<std::int16_t>(area.y),
            static_cast<std::uint16_t>(area.width), static_cast<std::uint16_t>(area.height)};
        xcb_poly_fill_rectangle(connection_, window, context_, 1, &rectangle);
    }

    // A side bar, a heading, and paragraphs of words that are bars of varying length.
    void paintPage(const OpenWindow &window) {
        const std::unique_ptr<xcb_get_geometry_reply_t, Free> size(xcb_get_geometry_reply(
            connection_, xcb_get_geometry(connection_, window.window), nullptr));
        if (!size) {
            return;
        }
        constexpr Colour paper = {250, 250, 248};
        const Colour ink = mixed(window.colour, {20, 22, 28}, 25);
        const int sideBar = size->width / 5;
        const int left = sideBar + 28;
        const int right = size->width - 28;
        fill(window.window, paper, {sideBar, 0, size->width - sideBar, size->height});
        for (int row = 0; row < 6; ++row) {
            fill(window.window, mixed(paper, window.colour, 45),
                 {16, 28 + 30 * row, (sideBar - 32) * (5 + row * 7 % 5) / 9, 9});
        }
        fill(window.window, ink, {left, 28, (right - left) / 2, 18});
        fill(window.window, window.colour, {left, 56, (right - left) / 4, 5});
        unsigned noise = 17;
        for (int y = 84; y + 20 < size->height; y += (y / 18) % 6 == 0 ? 34 : 18) {
            for (int x = left; x < right;) {
                noise = noise * 1103515245U + 12345U;
                const int word = 18 + static_cast<int>(noise >> 16) % 60;
                fill(window.window, mixed(ink, paper, 62), {x, y, std::min(word, right - x), 7});
                x += word + 9;
            }
        }
    }

    void handleEvents() {
        while (const std::unique_ptr<xcb_generic_event_t, Free> event{
            xcb_poll_for_event(connection_)}) {
            switch (event->response_type & 0x7f) {
            case XCB_BUTTON_PRESS:
                noteClick(reinterpret_cast<const xcb_button_press_event_t &>(*event));
                break;
            case XCB_EXPOSE: {
                const auto &expose = reinterpret_cast<const xcb_expose_event_t &>(*event);
                const auto index = indexOf(expose.window);
                if (index && expose.count == 0 && windows_[*index].page) {
                    paintPage(windows_[*index]);
                }
                break;
            }
            case XCB_CLIENT_MESSAGE: {
                const auto &message = reinterpret_cast<const xcb_client_message_event_t &>(*event);
                if (message.type == protocols_) { // to close: the only protocol it speaks
                    xcb_destroy_window(connection_, message.window);
                }
                break;
            }
            default:
                break;
            }
        }
    }

    void noteClick(const xcb_button_press_event_t &press) {
        if (const auto index = indexOf(press.event)) {
            std::printf("click %zu %d %d %d\n", *index, press.root_x, press.root_y, press.detail);
            std::fflush(stdout);
        }
    }

    std::optional<std::size_t> indexOf(xcb_window_t window) const {
        for (std::size_t index = 0; index < windows_.size(); ++index) {
            if (windows_[index].window == window) {
                return index;
            }
        }
        return std::nullopt;
    }

    bool readCommands() {
        std::array<char, 4096> buffer{};
        const ssize_t count = read(STDIN_FILENO, buffer.data(), buffer.size());
        if (count <= 0) {
            return false;
        }
        input_.append(buffer.data(), static_cast<std::size_t>(count));
        for (std::size_t end = input_.find('\n'); end != std::string::npos;
             end = input_.find('\n')) {
            obey(input_.substr(0, end));
            input_.erase(0, end + 1);
        }
        return true;
    }

    void obey(const std::string &line) {
        std::istringstream fields(line);
        std::string command;
        fields >> command;
        if (command == "open") {
            open(fields);
            return;
        }
        std::size_t index = 0;
        fields >> index;
        OpenWindow &window = windows_.at(index);
        if (command == "close") {
            xcb_destroy_window(connection_, window.window);
        } else if (command == "animate") {
            fields >> window.isAnimated;
        }
    }

    std::string className_;
    xcb_connection_t *connection_;
    xcb_screen_t *screen_ = nullptr;
    PixelLayout layout_;
    xcb_gcontext_t context_ = XCB_NONE;
    xcb_atom_t protocols_ = XCB_NONE;
    std::vector<OpenWindow> windows_;
    std::string input_;
    int frame_ = 0;
};

} // namespace
} // namespace lumo::desktop

int main(int argc, char **argv) {
    try {
        return lumo::desktop::Application(argc > 1 ? argv[1] : "Sample").run();
    } catch (const std::exception &problem) {
        std::fprintf(stderr, "%s\n", problem.what());
        return 1;
    }
}
