#include "desktop/MessageBus.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <utility>

namespace lumo::desktop {

namespace {

// A socket's file is there a moment before its owner listens.
bool accepts(const std::string &path) {
    const int client = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::copy_n(path.begin(), std::min(path.size(), sizeof address.sun_path - 1), address.sun_path);
    const bool isAccepted =
        connect(client, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
    close(client);
    return isAccepted;
}

} // namespace

MessageBus::MessageBus(Environment environment, Services services)
    : environment_(std::move(environment))
    , address_("unix:path=" + (directory_.path() / "bus").string()) {
    std::ofstream(directory_.path() / "bus.conf")
        << "<busconfig><type>session</type><listen>" << address_ << "</listen>"
        << (services == Services::none ? "" : "<standard_session_servicedirs/>")
        << "<policy context=\"default\"><allow user=\"*\"/><allow send_destination=\"*\"/>"
           "<allow receive_sender=\"*\"/><allow own=\"*\"/></policy></busconfig>";
    std::filesystem::permissions(directory_.path(), std::filesystem::perms::others_exec,
                                 std::filesystem::perm_options::add);
    start();
}

void MessageBus::start() {
    const auto socket = directory_.path() / "bus";
    std::filesystem::remove(socket);
    const std::vector<std::string> command = {
        "dbus-daemon", "--config-file=" + (directory_.path() / "bus.conf").string(), "--nofork",
        "--nopidfile"};
    daemon_ = std::make_unique<ChildProcess>(command, environment_, directory_.path());
    waitUntil([&] { return accepts(socket.string()); }, *daemon_, "the message bus");
}

} // namespace lumo::desktop
