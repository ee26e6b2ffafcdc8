// A small application for trying things on Wayland: opens windows in one colour, obeys commands on
// its standard input, and prints what its windows receive. Ends with its input, or when its first
// window is closed.
//   lumo-sample-surface <application> <title> <#rrggbb> <width> <height>

#include "desktop/Picture.h"

#include <layer-shell-client-protocol.h>
#include <poll.h>
#include <sys/mman.h>
#include <unistd.h>
#include <wayland-client.h>
#include <xdg-shell-client-protocol.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <iostream>
#include <list>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>

namespace lumo::desktop {
namespace {

struct Globals {
    wl_compositor *compositor = nullptr;
    wl_shm *memory = nullptr;
    wl_seat *seat = nullptr;
    xdg_wm_base *shell = nullptr;
    zwlr_layer_shell_v1 *layerShell = nullptr;
};

void say(const std::string &line) {
    std::cout << line << std::endl;
}

// A surface that is all of one colour in whatever size it is given.
class Window {
  public:
    Window(const Globals &globals, Colour colour, int width, int height)
        : globals_(globals)
        , colour_(colour)
        , width_(width)
        , height_(height)
        , surface_(wl_compositor_create_surface(globals.compositor)) {}

    ~Window() {
        if (popup_ != nullptr) {
            xdg_popup_destroy(popup_);
        }
        if (toplevel_ != nullptr) {
            xdg_toplevel_destroy(toplevel_);
        }
        if (shell_ != nullptr) {
            xdg_surface_destroy(shell_);
        }
        if (panel_ != nullptr) {
            zwlr_layer_surface_v1_destroy(panel_);
        }
        wl_surface_destroy(surface_);
    }
    Window(const Window &) = delete;
    Window &operator=(const Window &) = delete;

    void become(const std::string &application, const std::string &title, Window *parent) {
        makeShell();
        toplevel_ = xdg_surface_get_toplevel(shell_);
        xdg_toplevel_set_app_id(toplevel_, application.c_str());
        xdg_toplevel_set_title(toplevel_, title.c_str());
        if (parent != nullptr) {
            xdg_toplevel_set_parent(toplevel_, parent->toplevel_);
        }
        static const xdg_toplevel_listener listener = {
            .configure =
                [](void *data, xdg_toplevel *, std::int32_t width, std::int32_t height,
                   wl_array *) {
                    auto &self = *static_cast<Window *>(data);
                    self.width_ = width > 0 ? width : self.width_;
                    self.height_ = height > 0 ? height : self.height_;
                },
            .close = [](void *data,
                        xdg_toplevel *) { static_cast<Window *>(data)->wantsClose = true; }};
        xdg_toplevel_add_listener(toplevel_, &listener, this);
        wl_surface_commit(surface_);
    }

    // A menu at that place of its owner.
    void becomeMenu(Window &owner, int x, int y) {
        makeShell();
        auto *place = xdg_wm_base_create_positioner(globals_.shell);
        xdg_positioner_set_size(place, width_, height_);
        xdg_positioner_set_anchor_rect(place, x, y, 1, 1);
        xdg_positioner_set_anchor(place, XDG_POSITIONER_ANCHOR_TOP_LEFT);
        xdg_positioner_set_gravity(place, XDG_POSITIONER_GRAVITY_BOTTOM_RIGHT);
        popup_ = xdg_surface_get_popup(shell_, owner.shell_, place);
        xdg_positioner_destroy(place);
        static const xdg_popup_listener listener = {.configure = [](void *, xdg_popup *,
                                                                    std::int32_t, std::int32_t,
                                                                    std::int32_t, std::int32_t) {},
                                                    .popup_done = [](void *, xdg_popup *) {}};
        xdg_popup_add_listener(popup_, &listener, this);
        wl_surface_commit(surface_);
    }

    // A panel along the bottom of a display, which no window is to cover.
    void becomePanel() {
        panel_ = zwlr_layer_shell_v1_get_layer_surface(globals_.layerShell, surface_, nullptr,
                                                       ZWLR_LAYER_SHELL_V1_LAYER_TOP, "dock");
        zwlr_layer_surface_v1_set_size(panel_, 0, static_cast<std::uint32_t>(height_));
        zwlr_layer_surface_v1_set_anchor(panel_, ZWLR_LAYER_SURFACE_V1_ANCHOR_BOTTOM |
                                                     ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT |
                                                     ZWLR_LAYER_SURFACE_V1_ANCHOR_RIGHT);
        zwlr_layer_surface_v1_set_exclusive_zone(panel_, height_);
        static const zwlr_layer_surface_v1_listener listener = {
            [](void *data, zwlr_layer_surface_v1 *panel, std::uint32_t serial, std::uint32_t width,
               std::uint32_t) {
                auto &self = *static_cast<Window *>(data);
                zwlr_layer_surface_v1_ack_configure(panel, serial);
                self.width_ = static_cast<int>(width);
                self.draw();
            },
            [](void *data, zwlr_layer_surface_v1 *) {
                static_cast<Window *>(data)->wantsClose = true;
            }};
        zwlr_layer_surface_v1_add_listener(panel_, &listener, this);
        wl_surface_commit(surface_);
    }

    void startMove(wl_seat *seat, std::uint32_t serial) const {
        xdg_toplevel_move(toplevel_, seat, serial);
    }
    void setFullScreen(bool isOn) const {
        isOn ? xdg_toplevel_set_fullscreen(toplevel_, nullptr)
             : xdg_toplevel_unset_fullscreen(toplevel_);
    }

    bool wantsClose = false;

  private:
    void makeShell() {
        shell_ = xdg_wm_base_get_xdg_surface(globals_.shell, surface_);
        static const xdg_surface_listener listener = {
            [](void *data, xdg_surface *surface, std::uint32_t serial) {
                xdg_surface_ack_configure(surface, serial);
                static_cast<Window *>(data)->draw();
            }};
        xdg_surface_add_listener(shell_, &listener, this);
    }

    void draw() {
        const auto size = static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_) * 4;
        const int file = memfd_create("sample", MFD_CLOEXEC);
        if (ftruncate(file, static_cast<off_t>(size)) != 0) {
            throw std::runtime_error("there is no memory");
        }
        auto *memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
        const std::uint32_t pixel = 0xff000000U | static_cast<std::uint32_t>(colour_.red) << 16U |
                                    static_cast<std::uint32_t>(colour_.green) << 8U | colour_.blue;
        std::fill_n(static_cast<std::uint32_t *>(memory), size / 4, pixel);
        munmap(memory, size);
        auto *pool = wl_shm_create_pool(globals_.memory, file, static_cast<std::int32_t>(size));
        auto *buffer =
            wl_shm_pool_create_buffer(pool, 0, width_, height_, width_ * 4, WL_SHM_FORMAT_XRGB8888);
        static const wl_buffer_listener listener = {
            [](void *, wl_buffer *released) { wl_buffer_destroy(released); }};
        wl_buffer_add_listener(buffer, &listener, nullptr);
        wl_shm_pool_destroy(pool);
        close(file);
        wl_surface_attach(surface_, buffer, 0, 0);
        wl_surface_damage_buffer(surface_, 0, 0, width_, height_);
        wl_surface_commit(surface_);
    }

    const Globals &globals_;
    Colour colour_;
    int width_;
    int height_;
    wl_surface *surface_;
    xdg_surface *shell_ = nullptr;
    zwlr_layer_surface_v1 *panel_ = nullptr;
    xdg_toplevel *toplevel_ = nullptr;
    xdg_popup *popup_ = nullptr;
};

class Application {
  public:
    explicit Application(const std::array<std::string, 5> &arguments)
        : name_(arguments[0])
        , display_(wl_display_connect(nullptr)) {
        if (display_ == nullptr) {
            throw std::runtime_error("there is no compositor");
        }
        static const wl_registry_listener listener = {
            [](void *data, wl_registry *registry, std::uint32_t name, const char *interface,
               std::uint32_t) {
                static_cast<Application *>(data)->bind(registry, name, interface);
            },
            [](void *, wl_registry *, std::uint32_t) {}};
        wl_registry_add_listener(wl_display_get_registry(display_), &listener, this);
        wl_display_roundtrip(display_);
        wl_display_roundtrip(display_);
        open(arguments[1], Colour::parse(arguments[2]), std::stoi(arguments[3]),
             std::stoi(arguments[4]), nullptr);
    }

    void run() {
        bool hasInput = true;
        while (hasInput && !windows_.front().wantsClose) {
            windows_.remove_if([](const Window &window) { return window.wantsClose; });
            wl_display_flush(display_);
            std::array<pollfd, 2> files = {
                {{wl_display_get_fd(display_), POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}}};
            poll(files.data(), files.size(), -1);
            if (files[0].revents != 0 && wl_display_dispatch(display_) < 0) {
                return;
            }
            if (files[1].revents != 0) {
                hasInput = readInput();
            }
        }
    }

  private:
    bool readInput() {
        std::array<char, 4096> bytes{};
        const auto count = read(STDIN_FILENO, bytes.data(), bytes.size());
        if (count <= 0) {
            return false;
        }
        input_.append(bytes.data(), static_cast<std::size_t>(count));
        for (auto end = input_.find('\n'); end != std::string::npos; end = input_.find('\n')) {
            obey(input_.substr(0, end));
            input_.erase(0, end + 1);
        }
        return true;
    }

    void bind(wl_registry *registry, std::uint32_t name, const std::string &interface) {
        const auto bindAs = [&](const wl_interface &wanted, std::uint32_t version) {
            return interface == wanted.name ? wl_registry_bind(registry, name, &wanted, version)
                                            : nullptr;
        };
        if (auto *compositor = bindAs(wl_compositor_interface, 4)) {
            globals_.compositor = static_cast<wl_compositor *>(compositor);
        } else if (auto *memory = bindAs(wl_shm_interface, 1)) {
            globals_.memory = static_cast<wl_shm *>(memory);
        } else if (auto *shell = bindAs(xdg_wm_base_interface, 1)) {
            globals_.shell = static_cast<xdg_wm_base *>(shell);
            static const xdg_wm_base_listener listener = {
                [](void *, xdg_wm_base *base, std::uint32_t serial) {
                    xdg_wm_base_pong(base, serial);
                }};
            xdg_wm_base_add_listener(globals_.shell, &listener, nullptr);
        } else if (auto *layers = bindAs(zwlr_layer_shell_v1_interface, 1)) {
            globals_.layerShell = static_cast<zwlr_layer_shell_v1 *>(layers);
        } else if (auto *seat = bindAs(wl_seat_interface, 1)) {
            globals_.seat = static_cast<wl_seat *>(seat);
            followSeat();
        }
    }

    void followSeat() {
        static const wl_seat_listener listener = {
            [](void *data, wl_seat *, std::uint32_t capabilities) {
                static_cast<Application *>(data)->followDevices(capabilities);
            },
            [](void *, wl_seat *, const char *) {}};
        wl_seat_add_listener(globals_.seat, &listener, this);
    }

    void followDevices(std::uint32_t capabilities) {
        static const wl_pointer_listener pointer = {
            .enter = [](void *, wl_pointer *, std::uint32_t, wl_surface *, wl_fixed_t,
                        wl_fixed_t) {},
            .leave = [](void *, wl_pointer *, std::uint32_t, wl_surface *) {},
            .motion = [](void *, wl_pointer *, std::uint32_t, wl_fixed_t, wl_fixed_t) {},
            .button =
                [](void *data, wl_pointer *, std::uint32_t serial, std::uint32_t, std::uint32_t,
                   std::uint32_t state) {
                    auto &self = *static_cast<Application *>(data);
                    say(state == 0 ? "release" : "click");
                    if (state != 0 && std::exchange(self.movesAtClick_, false)) {
                        self.windows_.front().startMove(self.globals_.seat, serial);
                        wl_display_roundtrip(self.display_); // the compositor has read it
                        say("moves");
                    }
                },
            .axis = [](void *, wl_pointer *, std::uint32_t, std::uint32_t, wl_fixed_t) {}};
        static const wl_keyboard_listener keyboard = {
            .keymap = [](void *, wl_keyboard *, std::uint32_t, int file,
                         std::uint32_t) { close(file); },
            .enter = [](void *, wl_keyboard *, std::uint32_t, wl_surface *,
                        wl_array *) { say("focus"); },
            .leave = [](void *, wl_keyboard *, std::uint32_t, wl_surface *) { say("blur"); },
            .key =
                [](void *, wl_keyboard *, std::uint32_t, std::uint32_t, std::uint32_t key,
                   std::uint32_t state) {
                    say((state == 0 ? "up " : "down ") + std::to_string(key));
                },
            .modifiers = [](void *, wl_keyboard *, std::uint32_t, std::uint32_t, std::uint32_t,
                            std::uint32_t, std::uint32_t) {}};
        if ((capabilities & WL_SEAT_CAPABILITY_POINTER) != 0 && pointer_ == nullptr) {
            pointer_ = wl_seat_get_pointer(globals_.seat);
            wl_pointer_add_listener(pointer_, &pointer, this);
        }
        if ((capabilities & WL_SEAT_CAPABILITY_KEYBOARD) != 0 && keyboard_ == nullptr) {
            keyboard_ = wl_seat_get_keyboard(globals_.seat);
            wl_keyboard_add_listener(keyboard_, &keyboard, this);
        }
    }

    void open(const std::string &title, Colour colour, int width, int height, Window *parent) {
        windows_.emplace_back(globals_, colour, width, height).become(name_, title, parent);
    }

    // "window <title> <#rrggbb> <width> <height>", "dialog" with the same, "menu <x> <y> <#rrggbb>
    // <width> <height>", "panel <#rrggbb> <height>", "unmenu" and "unpanel" for the last one,
    // "fill", "unfill", "move" at the next click.
    void obey(const std::string &line) {
        std::istringstream words(line);
        std::string verb;
        std::string text;
        std::string colour;
        int x = 0;
        int y = 0;
        int width = 0;
        int height = 0;
        words >> verb;
        if (verb == "window" || verb == "dialog") {
            words >> text >> colour >> width >> height;
            open(text, Colour::parse(colour), width, height,
                 verb == "dialog" ? &windows_.front() : nullptr);
        } else if (verb == "menu") {
            words >> x >> y >> colour >> width >> height;
            windows_.emplace_back(globals_, Colour::parse(colour), width, height)
                .becomeMenu(windows_.front(), x, y);
        } else if (verb == "panel") {
            words >> colour >> height;
            windows_.emplace_back(globals_, Colour::parse(colour), width, height).becomePanel();
        } else if (verb == "unmenu" || verb == "unpanel") {
            windows_.pop_back();
        } else if (verb == "fill" || verb == "unfill") {
            windows_.front().setFullScreen(verb == "fill");
        } else if (verb == "move") {
            movesAtClick_ = true;
            say("moves at a click");
        }
    }

    std::string name_;
    wl_display *display_;
    Globals globals_;
    wl_pointer *pointer_ = nullptr;
    wl_keyboard *keyboard_ = nullptr;
    std::list<Window> windows_;
    bool movesAtClick_ = false;
    std::string input_; // that is not a whole line yet
};

} // namespace
} // namespace lumo::desktop

int main(int argumentCount, char **arguments) {
    if (argumentCount != 6) {
        std::cerr
            << "usage: lumo-sample-surface <application> <title> <#rrggbb> <width> <height>\n";
        return 2;
    }
    lumo::desktop::Application(
        {arguments[1], arguments[2], arguments[3], arguments[4], arguments[5]})
        .run();
    return 0;
}
