#include "wayland/PrivateKWin.h"

#include <fake-input-client-protocol.h>
#include <gio/gio.h>
#include <gio/gunixfdlist.h>
#include <kde-output-device-v2-client-protocol.h>
#include <kde-output-management-v2-client-protocol.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>
#include <wayland-client.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <fstream>
#include <map>
#include <stdexcept>
#include <string_view>

namespace lumo::desktop {

namespace fs = std::filesystem;

namespace {

// A connection to the socket at the path that a process of the user's has made, for as long as that
// lives: KWin looks at the program of the process, and may not do so at root's.
class UsersConnection {
  public:
    explicit UsersConnection(const std::string &path)
        : socket(::socket(AF_UNIX, SOCK_STREAM, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.copy(static_cast<char *>(address.sun_path), sizeof address.sun_path - 1);
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends_.data()) != 0) {
            throw std::runtime_error("there are no sockets");
        }
        char byte = 0;
        child_ = fork();
        if (child_ == 0) {
            close(ends_[0]);
            WaylandUser::become();
            prctl(PR_SET_DUMPABLE, 1); // so that others of the user may look
            const bool isConnected = connect(socket, reinterpret_cast<const sockaddr *>(&address),
                                             sizeof address) == 0 &&
                                     write(ends_[1], &byte, 1) == 1;
            _exit(isConnected && read(ends_[1], &byte, 1) == 0 ? 0 : 1);
        }
        close(ends_[1]);
        if (read(ends_[0], &byte, 1) != 1) {
            throw std::runtime_error("nothing answers at " + path);
        }
    }
    ~UsersConnection() {
        close(ends_[0]);
        waitpid(child_, nullptr, 0);
    }
    UsersConnection(const UsersConnection &) = delete;
    UsersConnection &operator=(const UsersConnection &) = delete;

    const int socket;

  private:
    std::array<int, 2> ends_{};
    pid_t child_ = -1;
};

} // namespace

// The test's own connection: input, and how the outputs are.
struct PrivateKWin::Control {
    explicit Control(const UsersConnection &connection)
        : display(wl_display_connect_to_fd(connection.socket))
        , registry(wl_display_get_registry(display)) {
        static const wl_registry_listener listener = {
            [](void *data, wl_registry *, std::uint32_t name, const char *interface,
               std::uint32_t) { static_cast<Control *>(data)->bind(name, interface); },
            [](void *, wl_registry *, std::uint32_t) {}};
        wl_registry_add_listener(registry, &listener, this);
        wl_display_roundtrip(display);
        wl_display_roundtrip(display);
        if (input != nullptr) {
            org_kde_kwin_fake_input_authenticate(input, "test", "test");
        }
    }
    ~Control() { wl_display_disconnect(display); }
    Control(const Control &) = delete;
    Control &operator=(const Control &) = delete;

    void bind(std::uint32_t name, std::string_view interface) {
        const auto take = [&](const wl_interface &wanted, std::uint32_t version, auto *&object) {
            if (interface == wanted.name) {
                object = static_cast<std::remove_reference_t<decltype(object)>>(
                    wl_registry_bind(registry, name, &wanted, version));
            }
        };
        take(org_kde_kwin_fake_input_interface, 4, input);
        take(kde_output_management_v2_interface, 1, management);
        kde_output_device_v2 *device = nullptr;
        take(kde_output_device_v2_interface, 2, device);
        if (device != nullptr) {
            follow(device);
        }
    }

    void follow(kde_output_device_v2 *device) {
        using Device = kde_output_device_v2;
        static const kde_output_device_v2_listener listener = {
            .geometry = [](void *, Device *, int, int, int, int, int, const char *, const char *,
                           int) {},
            .current_mode = [](void *, Device *, kde_output_device_mode_v2 *) {},
            .mode = [](void *, Device *, kde_output_device_mode_v2 *) {},
            .done = [](void *, Device *) {},
            .scale = [](void *, Device *, wl_fixed_t) {},
            .edid = [](void *, Device *, const char *) {},
            .enabled = [](void *, Device *, int) {},
            .uuid = [](void *, Device *, const char *) {},
            .serial_number = [](void *, Device *, const char *) {},
            .eisa_id = [](void *, Device *, const char *) {},
            .capabilities = [](void *, Device *, std::uint32_t) {},
            .overscan = [](void *, Device *, std::uint32_t) {},
            .vrr_policy = [](void *, Device *, std::uint32_t) {},
            .rgb_range = [](void *, Device *, std::uint32_t) {},
            .name = [](void *data, Device *named,
                       const char *name) { static_cast<Control *>(data)->devices[name] = named; }};
        kde_output_device_v2_add_listener(device, &listener, this);
    }

    wl_display *display;
    wl_registry *registry;
    org_kde_kwin_fake_input *input = nullptr;
    kde_output_management_v2 *management = nullptr;
    std::map<std::string, kde_output_device_v2 *> devices;
};

PrivateKWin::PrivateKWin(const KWinOptions &options) {
    const bool isWithoutScreen = options.screen.empty();
    const Environment more = {{"DBUS_SYSTEM_BUS_ADDRESS", bus().address()},
                              {"KWIN_COMPOSE", isWithoutScreen ? "O2" : "Q"},
                              {"KWIN_SCREENSHOT_NO_PERMISSION_CHECKS", "1"},
                              {"KDE_FULL_SESSION", "true"},
                              {"KDE_SESSION_VERSION", "5"},
                              {"XDG_CURRENT_DESKTOP", "KDE"}};
    environment_.insert(more.begin(), more.end());
    if (options.trust == KWinOptions::Trust::everyone) {
        environment_["KWIN_WAYLAND_NO_PERMISSION_CHECKS"] = "1";
    }
    const auto program = runnable("/usr/bin/kwin_wayland").string();
    own();
    std::vector<std::string> command = {program, "--socket", "wayland-k"};
    command.insert(command.end(), {"--width", std::to_string(options.width)});
    command.insert(command.end(), {"--height", std::to_string(options.height)});
    if (isWithoutScreen) {
        command.insert(command.end(), {"--virtual", "--no-lockscreen", "--output-count",
                                       std::to_string(options.outputs)});
    } else {
        command.insert(command.end(), {"--wayland-display", options.screen});
    }
    if (options.hasXwayland) {
        command.emplace_back("--xwayland");
    }
    kwin_ = start(command);
    environment_["WAYLAND_DISPLAY"] = "wayland-k";
    const auto names = [&] {
        const auto answer = start({"gdbus", "introspect", "--session", "--dest", "org.kde.KWin",
                                   "--object-path", "/Scripting"});
        return answer->waitForExit() == 0;
    };
    waitUntil([&] { return fs::exists(path("run") / "wayland-k") && names(); }, *kwin_, "KWin");
    if (options.hasXwayland) {
        waitUntil([&] { return managesXWindows(); }, *kwin_, "Xwayland");
    }
    control_ = std::make_unique<Control>(UsersConnection((path("run") / "wayland-k").string()));
}

PrivateKWin::~PrivateKWin() = default;

bool PrivateKWin::managesXWindows() {
    const auto server = xServer();
    if (!server) {
        return false;
    }
    environment_["DISPLAY"] = server->display;
    const auto answer = start({"xprop", "-root", "_NET_SUPPORTING_WM_CHECK"});
    if (!answer->waitForExit(Seconds(3))) {
        // Where KWin replaces its outputs while the server starts, the server waits for the old
        // ones without end. Another one is started for it.
        ::kill(server->process, SIGKILL);
        return false;
    }
    return std::ranges::any_of(answer->outputLines(), [](const std::string &line) {
        return line.find("window id") != std::string::npos;
    });
}

// KWin tells none but its own children, of which the server is one.
std::optional<PrivateKWin::XServer> PrivateKWin::xServer() const {
    const auto process = std::to_string(kwin_->processIdentifier());
    std::ifstream children("/proc/" + process + "/task/" + process + "/children");
    for (pid_t child = 0; children >> child;) {
        std::ifstream command("/proc/" + std::to_string(child) + "/cmdline");
        std::string program;
        std::string display;
        std::getline(command, program, '\0');
        std::getline(command, display, '\0');
        if (program.ends_with("Xwayland")) {
            return XServer{child, display};
        }
    }
    return std::nullopt;
}

std::unique_ptr<ChildProcess> PrivateKWin::startSample(const std::string &name,
                                                       const std::string &colour, int width,
                                                       int height) {
    auto sample = startSurface(name, colour, width, height);
    const auto hasFocus = [&] {
        return std::ranges::count(sample->outputLines(), std::string("focus")) > 0;
    };
    waitUntil(hasFocus, *sample, name);
    return sample;
}

std::string PrivateKWin::call(const std::string &object, const std::string &method,
                              const std::string &argument) const {
    const auto answer = start({"gdbus", "call", "--session", "--dest", "org.kde.KWin",
                               "--object-path", object, "--method", method, argument});
    answer->waitForExit();
    std::string all;
    for (const auto &line : answer->outputLines()) {
        all += line;
    }
    return all;
}

void PrivateKWin::script(const std::string &code) {
    const auto file = path("pictures") / ("script" + std::to_string(++scripts_) + ".js");
    std::ofstream(file) << "function each(caption, act) { workspace.clientList().forEach("
                           "function (w) { if (w.caption === caption) { act(w); } }); }\n"
                        << code;
    const auto loaded = call("/Scripting", "org.kde.kwin.Scripting.loadScript", file.string());
    const auto started =
        start({"gdbus", "call", "--session", "--dest", "org.kde.KWin", "--object-path",
               "/Scripting", "--method", "org.kde.kwin.Scripting.start"});
    if (started->waitForExit() != 0) {
        throw std::runtime_error("KWin runs no script: " + loaded + started->report());
    }
}

Picture PrivateKWin::picture(const std::string &output) const {
    GError *error = nullptr;
    auto *bus = g_dbus_connection_new_for_address_sync(
        environment_.at("DBUS_SESSION_BUS_ADDRESS").c_str(),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, &error);
    const int file = memfd_create("picture", 0);
    auto *files = g_unix_fd_list_new();
    g_unix_fd_list_append(files, file, nullptr);
    GVariantBuilder options;
    g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
    g_variant_builder_add(&options, "{sv}", "native-resolution", g_variant_new_boolean(TRUE));
    auto *reply =
        bus == nullptr
            ? nullptr
            : g_dbus_connection_call_with_unix_fd_list_sync(
                  bus, "org.kde.KWin", "/org/kde/KWin/ScreenShot2", "org.kde.KWin.ScreenShot2",
                  "CaptureScreen", g_variant_new("(sa{sv}h)", output.c_str(), &options, 0), nullptr,
                  G_DBUS_CALL_FLAGS_NONE, -1, files, nullptr, nullptr, &error);
    g_object_unref(files);
    if (reply == nullptr) {
        throw std::runtime_error(std::string("no picture: ") + error->message);
    }
    auto *facts = g_variant_get_child_value(reply, 0);
    guint width = 0;
    guint height = 0;
    guint stride = 0;
    g_variant_lookup(facts, "width", "u", &width);
    g_variant_lookup(facts, "height", "u", &height);
    g_variant_lookup(facts, "stride", "u", &stride);
    std::vector<std::uint8_t> bytes(std::size_t{stride} * height);
    // KWin writes after it has answered.
    for (const double end = now() + 5;
         now() < end && lseek(file, 0, SEEK_END) < static_cast<off_t>(bytes.size());) {
        pauseBriefly();
    }
    const auto count = pread(file, bytes.data(), bytes.size(), 0);
    close(file);
    g_variant_unref(facts);
    g_variant_unref(reply);
    g_object_unref(bus);
    if (count != static_cast<ssize_t>(bytes.size())) {
        throw std::runtime_error("the picture is cut off");
    }
    return {static_cast<int>(width), static_cast<int>(height), [&](int x, int y) {
                const auto *pixel =
                    &bytes[static_cast<std::size_t>(y) * stride + static_cast<std::size_t>(x) * 4];
                return Colour{pixel[2], pixel[1], pixel[0]};
            }};
}

void PrivateKWin::setOutput(const std::string &name, bool isEnabled, double scale,
                            int quarterTurns) {
    auto *device = control_->devices.at(name);
    auto *wanted = kde_output_management_v2_create_configuration(control_->management);
    kde_output_configuration_v2_enable(wanted, device, isEnabled ? 1 : 0);
    kde_output_configuration_v2_scale(wanted, device, wl_fixed_from_double(scale));
    kde_output_configuration_v2_transform(wanted, device, quarterTurns);
    kde_output_configuration_v2_apply(wanted);
    wl_display_roundtrip(control_->display);
    kde_output_configuration_v2_destroy(wanted);
    wl_display_roundtrip(control_->display);
}

void PrivateKWin::moveTo(Spot spot) {
    org_kde_kwin_fake_input_pointer_motion_absolute(control_->input, wl_fixed_from_int(spot.x),
                                                    wl_fixed_from_int(spot.y));
    wl_display_roundtrip(control_->display);
}

void PrivateKWin::setButton(bool isDown, EvdevButton button) {
    org_kde_kwin_fake_input_button(control_->input, static_cast<std::uint32_t>(button),
                                   isDown ? 1 : 0);
    wl_display_roundtrip(control_->display);
}

void PrivateKWin::setKey(EvdevKey key, bool isDown) {
    org_kde_kwin_fake_input_keyboard_key(control_->input, static_cast<std::uint32_t>(key),
                                         isDown ? 1 : 0);
    wl_display_roundtrip(control_->display);
}

void PrivateKWin::click(Spot spot) {
    moveTo(spot);
    setButton(true);
    setButton(false);
}

void PrivateKWin::press(const std::vector<EvdevKey> &chord) {
    for (const auto key : chord) {
        setKey(key, true);
    }
    auto reversed = chord;
    std::ranges::reverse(reversed);
    for (const auto key : reversed) {
        setKey(key, false);
    }
}

} // namespace lumo::desktop
