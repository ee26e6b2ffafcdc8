#include "bus/MessageBus.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace lumo::test {

MessageBus::MessageBus()
    : address_("unix:path=" + (directory_.path() / "bus").string()) {
    std::ofstream(directory_.path() / "bus.conf")
        << "<busconfig><type>session</type><listen>" << address_
        << "</listen><policy context=\"default\"><allow send_destination=\"*\"/>"
           "<allow receive_sender=\"*\"/><allow own=\"*\"/></policy></busconfig>";
    start();
}

void MessageBus::start() {
    const auto socket = directory_.path() / "bus";
    std::filesystem::remove(socket);
    daemon_ = std::make_unique<desktop::ChildProcess>(
        std::vector<std::string>{"dbus-daemon",
                                 "--config-file=" + (directory_.path() / "bus.conf").string(),
                                 "--nofork", "--nopidfile"},
        desktop::Environment{{"PATH", "/usr/local/bin:/usr/bin:/bin"}}, directory_.path());
    const auto deadline = desktop::now() + 30;
    while (!std::filesystem::exists(socket)) {
        if (!daemon_->isRunning() || desktop::now() > deadline) {
            throw std::runtime_error("the message bus did not start: " + daemon_->report());
        }
        desktop::pauseBriefly();
    }
}

} // namespace lumo::test
