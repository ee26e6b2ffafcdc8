#pragma once

#include "platform/freedesktop/AsyncCalls.h"
#include "platform/freedesktop/GlibPointers.h"
#include "support/Handle.h"

#include <filesystem>
#include <functional>
#include <string>

namespace lumo::freedesktop {
class SessionBus;
}

namespace lumo::wayland::kwin {

// A script that KWin runs as long as the object lives and the session bus is there. It has a
// function tell(text), by which it sends messages. Main thread only; never waits but for the
// unloading to be sent.
class KWinScript {
  public:
    // The name, of letters, tells this program's scripts apart. Each message is handed to the
    // function. The bus outlives the object.
    KWinScript(freedesktop::SessionBus &bus, std::string name, std::string code,
               std::function<void(const std::string &)> receive);
    ~KWinScript();
    KWinScript(const KWinScript &) = delete;
    KWinScript &operator=(const KWinScript &) = delete;

  private:
    struct Methods;

    void load();
    void replaceOlder();
    void handleLoaded(GVariant *reply);
    std::string plugin() const;
    std::string path() const;

    freedesktop::SessionBus &bus_;
    std::string name_;
    std::string code_;
    std::function<void(const std::string &)> receive_;
    std::filesystem::path file_; // from which KWin reads the code, some time after it is told to
    Handle export_;
    Handle busChanges_;
    freedesktop::AsyncCalls calls_;
    int attempts_ = 0; // to load it on this connection
};

} // namespace lumo::wayland::kwin
