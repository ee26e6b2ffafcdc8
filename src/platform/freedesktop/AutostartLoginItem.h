#pragma once

#include "platform/LoginItem.h"

#include <filesystem>
#include <optional>
#include <string>

namespace lumo::freedesktop {

// A desktop entry in the folder of what freedesktop.org desktops start when the user logs in. One
// that the user has switched off in the desktop's own settings stays so until it is unregistered.
class AutostartLoginItem final : public LoginItem {
  public:
    // The path of the entry, absent when there is no folder for it, and that of the program to
    // start.
    AutostartLoginItem(std::optional<std::filesystem::path> entry, std::filesystem::path program);

    // For the running program, in the user's configuration folder.
    static AutostartLoginItem ofThisProgram();

    std::optional<std::string> registerMainApplication() override;
    std::optional<std::string> unregisterMainApplication() override;

  private:
    std::optional<std::filesystem::path> entry_;
    std::filesystem::path program_;
};

} // namespace lumo::freedesktop
