#include "bus/UserFolders.h"

#include "desktop/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <memory>
#include <utility>

namespace lumo::freedesktop {

namespace fs = std::filesystem;

namespace {

class UserFolders final : public testing::Environment {
  public:
    // NOLINTBEGIN(concurrency-mt-unsafe): before there are other threads
    void SetUp() override {
        directory_ = std::make_unique<desktop::TemporaryDirectory>();
        setenv("HOME", directory_->path().c_str(), 1);
        for (const auto &[variable, folder] :
             {std::pair("XDG_DATA_HOME", "data"), std::pair("XDG_DATA_DIRS", "system"),
              std::pair("XDG_CONFIG_HOME", "config"), std::pair("XDG_CONFIG_DIRS", "no-config")}) {
            setenv(variable, (directory_->path() / folder).c_str(), 1);
        }
        unsetenv("XDG_CURRENT_DESKTOP");
    }
    // NOLINTEND(concurrency-mt-unsafe)
    void TearDown() override { directory_.reset(); }

    fs::path path() const { return directory_->path(); }

  private:
    std::unique_ptr<desktop::TemporaryDirectory> directory_;
};

const auto *folders = // NOLINT(cert-err58-cpp): the framework owns it and reports what it throws
    static_cast<UserFolders *>(testing::AddGlobalTestEnvironment(new UserFolders));

} // namespace

fs::path userFolder() {
    return folders->path();
}

void writeDesktopEntry(const std::string &identifier, const std::string &lines) {
    const auto file = userFolder() / "data" / "applications" / (identifier + ".desktop");
    fs::create_directories(file.parent_path());
    std::ofstream(file) << "[Desktop Entry]\nType=Application\n" << lines;
}

} // namespace lumo::freedesktop
