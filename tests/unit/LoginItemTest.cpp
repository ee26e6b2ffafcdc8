#include "bus/RunUntil.h"
#include "desktop/TemporaryDirectory.h"
#include "desktop/Variable.h"
#include "platform/freedesktop/AutostartLoginItem.h"
#include "platform/freedesktop/GlibPointers.h"
#include "platform/freedesktop/PropertyListUserDefaults.h"

#include <gio/gdesktopappinfo.h>
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

namespace lumo::freedesktop {
namespace {

namespace fs = std::filesystem;
using desktop::TemporaryDirectory;
using desktop::Variable;
using testing::IsEmpty;

TEST(LoginItemTest, EntryStartsExactlyTheProgram) {
    const TemporaryDirectory directory;
    const fs::path program = directory.path() / "odd \"name\"\t$HOME `x` \\ é\nend ";
    const fs::path trace = directory.path() / "started";
    std::ofstream(program) << "#!/bin/sh\necho \"$@\" > " << trace << '\n';
    fs::permissions(program, fs::perms::owner_all);
    const fs::path entry = directory.path() / "autostart" / "app.lumo.Lumo.desktop";
    AutostartLoginItem item(entry, program);
    EXPECT_EQ(item.unregisterMainApplication(), std::nullopt) << "never registered";
    EXPECT_EQ(item.registerMainApplication(), std::nullopt);
    const auto written = fs::last_write_time(entry);
    EXPECT_EQ(item.registerMainApplication(), std::nullopt);
    EXPECT_EQ(fs::last_write_time(entry), written) << "nothing to change";

    const GlibPointer<GDesktopAppInfo> info(g_desktop_app_info_new_from_filename(entry.c_str()));
    ASSERT_TRUE(info) << "its program is not found";
    EXPECT_STREQ(g_app_info_get_name(G_APP_INFO(info.get())), "Lumo");
    EXPECT_TRUE(g_app_info_launch(G_APP_INFO(info.get()), nullptr, nullptr, nullptr));
    GlibMainLoop loop;
    const auto arguments = [&] {
        std::string line;
        std::getline(std::ifstream(trace), line);
        return line;
    };
    EXPECT_TRUE(runUntil(loop, [&] { return arguments() == "--from-desktop"; })) << arguments();

    for (const auto *off : {"Hidden=true", "X-GNOME-Autostart-enabled=false"}) {
        std::ofstream(entry) << "[Desktop Entry]\nType=Application\n" << off << '\n';
        EXPECT_NE(item.registerMainApplication(), std::nullopt) << off << " is the user's word";
        EXPECT_EQ(item.unregisterMainApplication(), std::nullopt);
        EXPECT_EQ(item.registerMainApplication(), std::nullopt) << "asked for anew";
    }
    std::ofstream(entry) << "[Desktop Entry]\nHidden=false\nExec=elsewhere\n";
    EXPECT_EQ(item.registerMainApplication(), std::nullopt) << "moved, not switched off";

    EXPECT_EQ(item.unregisterMainApplication(), std::nullopt);
    EXPECT_THAT(std::vector(fs::directory_iterator(entry.parent_path()), {}), IsEmpty());
    AutostartLoginItem nowhere(program / "autostart" / "entry.desktop", program);
    EXPECT_NE(nowhere.registerMainApplication().value_or(""), "");
}

// The settings and the login item are in the same folder, however the environment names it.
TEST(ConfigurationFolderTest, SameForSettingsAndLoginItem) {
    struct Row {
        std::optional<std::string> configuration;
        std::optional<std::string> home;
        std::optional<fs::path> expected;
    };
    const TemporaryDirectory directory;
    const auto home = directory.path() / "home";
    const auto configuration = directory.path() / "configuration";
    const auto inHome = home / ".config";
    for (const auto &[configurationHome, homeFolder, expected] :
         {Row{configuration, home, configuration}, Row{configuration, std::nullopt, configuration},
          Row{std::nullopt, home, inHome}, Row{"", home, inHome}, Row{"relative", home, inHome},
          Row{std::nullopt, std::nullopt, std::nullopt}, Row{"relative", "", std::nullopt},
          Row{std::nullopt, "relative", std::nullopt}}) {
        SCOPED_TRACE(configurationHome.value_or("none") + " and " + homeFolder.value_or("none"));
        const Variable first("XDG_CONFIG_HOME", configurationHome);
        const Variable second("HOME", homeFolder);
        auto item = AutostartLoginItem::ofThisProgram();
        const auto refusal = item.registerMainApplication();
        EXPECT_EQ(refusal.has_value(), !expected.has_value());
        const auto settings = PropertyListUserDefaults::standardFile();
        ASSERT_EQ(settings.has_value(), expected.has_value());
        if (expected) {
            EXPECT_EQ(*settings, *expected / "lumo" / "app.lumo.Lumo.plist");
            EXPECT_TRUE(fs::exists(*expected / "autostart" / "app.lumo.Lumo.desktop"));
        }
        EXPECT_EQ(item.unregisterMainApplication(), std::nullopt);
        if (expected) {
            EXPECT_THAT(std::vector(fs::directory_iterator(*expected / "autostart"), {}),
                        IsEmpty());
        }
    }
}

} // namespace
} // namespace lumo::freedesktop
