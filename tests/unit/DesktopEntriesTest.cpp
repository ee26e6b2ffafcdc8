#include "platform/freedesktop/DesktopEntries.h"

#include "bus/RunUntil.h"
#include "bus/UserFolders.h"
#include "desktop/Variable.h"
#include "platform/freedesktop/SettingsOpener.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

namespace lumo::freedesktop {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

// A program that writes its own name, the number of its arguments and the first of them to a file.
std::string writeProgram(const std::string &name) {
    const auto program = userFolder() / name;
    std::ofstream(program) << "#!/bin/sh\necho \"${0##*/} $# $1\" > " << userFolder() / "started"
                           << '\n';
    fs::permissions(program, fs::perms::owner_all);
    return program.string();
}

std::string started() {
    std::string text;
    std::getline(std::ifstream(userFolder() / "started"), text);
    return text;
}

TEST(DesktopEntriesTest, FoundByClassIdentifierOrProgram) {
    writeDesktopEntry("org.example.Browser",
                      "Name=Browser\nExec=sh -c true\nStartupWMClass=Navigator\n");
    writeDesktopEntry("navigator", "Name=Another\nExec=cat\n");
    writeDesktopEntry("hidden-editor", "Name=Hidden\nExec=cat\nNoDisplay=true\n");
    writeDesktopEntry("editor", "Name=Editor\nExec=/usr/bin/env --version %F\n");
    GlibMainLoop loop;
    DesktopEntries entries;
    const auto found = [&](const char *className, const char *instance, const char *program) {
        const auto *entry = entries.find(className, instance, program);
        return entry == nullptr ? "" : entry->identifier;
    };
    EXPECT_EQ(found("Navigator", "", ""), "org.example.Browser");
    EXPECT_EQ(found("unknown", "navigator", ""), "org.example.Browser");
    EXPECT_EQ(found("Editor", "", "sh"), "editor");
    EXPECT_EQ(found("ORG.EXAMPLE.BROWSER", "", "env"), "org.example.Browser");
    EXPECT_EQ(found("unknown", "unknown", "env"), "editor");
    EXPECT_EQ(found("unknown", "", "cat"), "navigator") << "one that menus show";
    EXPECT_EQ(found("hidden-editor", "", ""), "hidden-editor");
    EXPECT_EQ(found("unknown", "", ""), "");
    std::vector<std::string> names;
    for (const auto *entry : entries.inMenu()) {
        names.push_back(entry->name);
    }
    EXPECT_THAT(names, testing::IsSupersetOf({"Another", "Browser", "Editor"}));
    EXPECT_THAT(names, testing::Not(testing::Contains("Hidden")));

    const auto before = entries.revision();
    writeDesktopEntry("late", "Name=Late\nExec=true\nStartupWMClass=latecomer\n");
    EXPECT_TRUE(runUntil(loop, [&] { return entries.revision() != before; }));
    EXPECT_EQ(found("latecomer", "", ""), "late");
}

TEST(SettingsOpenerTest, ProgramOfTheRunningDesktop) {
    std::vector<std::string> lines;
    GlibMainLoop loop;
    const Log log([&](std::string_view line) { lines.emplace_back(line); });
    SettingsOpener opener(log);
    const auto eventually = [&](const auto &condition) { return runUntil(loop, condition); };
    for (const char *entry : {"org.gnome.Settings", "kdesystemsettings", "cinnamon-settings"}) {
        writeDesktopEntry(entry, "Name=Settings\nExec=" + writeProgram(entry) + " %u\n");
    }
    writeDesktopEntry("matecc", "Name=Control Center\nPath=/nowhere\nExec=true\n");
    for (const auto &[desktop, program] :
         std::map<std::string, std::string>{{"ubuntu:GNOME", "org.gnome.Settings"},
                                            {"KDE", "kdesystemsettings"},
                                            {"XFCE:X-Cinnamon:", "cinnamon-settings"},
                                            {"XFCE", ""},
                                            {"", ""}}) {
        SCOPED_TRACE(desktop);
        const desktop::Variable current("XDG_CURRENT_DESKTOP", desktop);
        const auto expected = program.empty() ? "" : program + " 0 ";
        fs::remove(userFolder() / "started");
        EXPECT_TRUE(eventually([&] { return opener.open() == !expected.empty(); }));
        EXPECT_TRUE(eventually([&] { return started() == expected; }));
    }
    EXPECT_THAT(lines, IsEmpty());
    const desktop::Variable current("XDG_CURRENT_DESKTOP", "MATE");
    EXPECT_TRUE(eventually([&] { return opener.open(); }));
    EXPECT_TRUE(eventually([&] { return !lines.empty(); })) << "a start that fails is told";
    EXPECT_THAT(lines, ElementsAre(StartsWith("[Lumo] could not start Control Center")));
}

} // namespace
} // namespace lumo::freedesktop
