#include "desktop/TemporaryDirectory.h"

#include <cstdlib>
#include <stdexcept>
#include <string>
#include <system_error>

namespace lumo::desktop {

namespace fs = std::filesystem;

TemporaryDirectory::TemporaryDirectory() {
    std::string pattern = (fs::temp_directory_path() / "lumo-desktop-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("cannot make a temporary directory");
    }
    path_ = pattern;
}

TemporaryDirectory::~TemporaryDirectory() {
    // A test may have taken away the right to write, to see what the program does then.
    std::error_code ignored;
    for (const fs::path &place : {path_, path_ / "config", path_ / "config" / "lumo"}) {
        fs::permissions(place, fs::perms::owner_all, fs::perm_options::add, ignored);
    }
    fs::remove_all(path_, ignored);
}

} // namespace lumo::desktop
