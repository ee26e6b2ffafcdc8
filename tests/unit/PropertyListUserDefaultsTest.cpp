#include "platform/freedesktop/PropertyListUserDefaults.h"

#include "ScriptedMainLoop.h"
#include "desktop/TemporaryDirectory.h"
#include "support/Log.h"

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace lumo::freedesktop {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

// A folder of its own for each test, and what one run of the program after another does in it.
class PropertyListUserDefaultsTest : public testing::Test {
  protected:
    PropertyListUserDefaults &restart() { return restart(file); }
    PropertyListUserDefaults &restart(const std::optional<fs::path> &path) {
        run_.reset();
        lines.clear();
        run_ = std::make_unique<PropertyListUserDefaults>(path, loop, log_);
        return *run_;
    }
    void quit() { run_.reset(); }

    static void write(const fs::path &path, std::string_view contents) {
        fs::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << contents;
    }
    static std::string read(const fs::path &path) {
        std::ifstream stream(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    // All zero for what does not exist.
    static struct stat status(const fs::path &path) {
        struct stat facts {};
        stat(path.c_str(), &facts);
        return facts;
    }
    static std::vector<std::string> namesBeside(const fs::path &path) {
        std::vector<std::string> names;
        for (const auto &entry : fs::directory_iterator(path.parent_path())) {
            if (entry.path() != path) {
                names.push_back(entry.path().filename().string());
            }
        }
        return names;
    }

    desktop::TemporaryDirectory directory;
    fs::path folder = directory.path();
    fs::path file = folder / "new" / "lumo" / "app.lumo.Lumo.plist";
    test::ScriptedMainLoop loop{0};
    std::vector<std::string> lines;

  private:
    Log log_{[this](std::string_view line) { lines.emplace_back(line); }};
    std::unique_ptr<PropertyListUserDefaults> run_;
};

TEST_F(PropertyListUserDefaultsTest, EveryTypeIsKeptExactly) {
    using Integers = std::numeric_limits<std::int64_t>;
    std::vector<Value> values;
    const auto key = [](std::size_t index) { return "key <&> " + std::to_string(index); };
    auto &first = restart();
    const auto store = [&](auto set, const auto &...each) {
        ((std::invoke(set, first, key(values.size()), each), values.emplace_back(each)), ...);
    };
    store(&UserDefaults::setBool, true, false);
    store(&UserDefaults::setInteger, 0, -5, Integers::max(), Integers::min());
    store(&UserDefaults::setDouble, 0.1 + 0.2, 2.0, -17.25, 5e-324,
          std::numeric_limits<double>::max());
    store(&UserDefaults::setString, "", " <&>\"' ]]>\t\n\u00fc\U0001F600 ", "true");
    store(&UserDefaults::setData, Bytes{}, Bytes{0, 255, 10, 13, '<'}, Bytes(1000, 7));
    const auto &second = restart();
    for (std::size_t index = 0; index < values.size(); ++index) {
        EXPECT_EQ(second.object(key(index)), values[index]) << index;
    }
    EXPECT_EQ(status(file).st_mode & 07777U, 0600U);
    EXPECT_EQ(status(file.parent_path()).st_mode & 07777U, 0700U);
    EXPECT_THAT(namesBeside(file), IsEmpty());
    EXPECT_THAT(lines, IsEmpty());

    restart().setString("name", std::string("a\x01 b\xff c\0d", 9));
    EXPECT_EQ(restart().object("name"), Value("a\uFFFD b\uFFFD c\uFFFDd"))
        << "what XML cannot hold";
}

TEST_F(PropertyListUserDefaultsTest, OneWritePerTurn) {
    auto &defaults = restart();
    defaults.setBool("a", true);
    defaults.setInteger("b", 1);
    EXPECT_FALSE(fs::exists(file));
    loop.runPosted();
    const auto first = status(file).st_ino;
    ASSERT_NE(first, 0U);
    defaults.setBool("a", true);
    defaults.removeObject("missing");
    loop.runPosted();
    EXPECT_EQ(status(file).st_ino, first) << "nothing to write";
    defaults.removeObject("b");
    defaults.setString("a", "other type");
    loop.runPosted();
    EXPECT_EQ(restart().object("a"), Value("other type"));
    EXPECT_EQ(restart().object("b"), std::nullopt);
    restart().setBool("last", true);
    quit(); // without another turn
    EXPECT_EQ(restart().object("last"), Value(true));
}

TEST_F(PropertyListUserDefaultsTest, UnknownEntriesStayInTheFile) {
    const std::string foreign = "<key>date</key><date>2020-02-03T04:05:06Z</date>"
                                "<key>list</key><array><real>0.5</real><dict>"
                                "<key>inner</key><data>AAEC</data></dict></array>";
    write(file, R"(<?xml version="1.0"?><plist version="1.0"><dict>)" + foreign +
                    "<key>isEnabled</key><true/></dict></plist>");
    auto &defaults = restart();
    EXPECT_EQ(defaults.object("isEnabled"), Value(true));
    EXPECT_EQ(defaults.object("date"), std::nullopt);
    EXPECT_EQ(defaults.object("list"), std::nullopt);
    defaults.setBool("isEnabled", false);
    quit();
    auto text = read(file);
    std::erase_if(text, [](char c) { return c == '\n' || c == '\t'; });
    EXPECT_THAT(text, HasSubstr(foreign));
    EXPECT_THAT(text, HasSubstr("<key>isEnabled</key><false/>"));
}

TEST_F(PropertyListUserDefaultsTest, BrokenFileIsSetAside) {
    const std::string tooLarge(AtomicFile::sizeLimit + 1, ' ');
    const std::vector<std::string> broken{"",
                                          std::string("\0\x01\xff\xfe garbage \0", 13),
                                          "bplist00 but no more",
                                          "<plist version=\"1.0\"><array/></plist>",
                                          "<plist version=\"1.0\"><dict><key>isEnabled</key>",
                                          tooLarge};
    for (std::size_t index = 0; index < broken.size(); ++index) {
        write(file, broken[index]);
        auto &defaults = restart();
        EXPECT_THAT(lines, ElementsAre(HasSubstr("set aside as " + file.string() + ".broken-")));
        EXPECT_EQ(defaults.object("isEnabled"), std::nullopt);
        defaults.setInteger("index", static_cast<std::int64_t>(index));
        EXPECT_EQ(restart().object("index"), Value(static_cast<std::int64_t>(index)));
        EXPECT_THAT(lines, IsEmpty());
    }
    // Nothing was overwritten, though most of it happened within one second.
    std::vector<std::string> kept;
    for (const auto &name : namesBeside(file)) {
        EXPECT_THAT(name, testing::StartsWith("app.lumo.Lumo.plist.broken-2"));
        kept.push_back(read(file.parent_path() / name));
    }
    EXPECT_THAT(kept, testing::UnorderedElementsAreArray(broken));
}

TEST_F(PropertyListUserDefaultsTest, ObstaclesInTheFilesPlaceAreSetAside) {
    const auto real = folder / "a folder";
    fs::create_directories(real);
    fs::create_directories(file.parent_path());
    const std::vector<std::function<void()>> obstacles{
        [&] { fs::create_directory(file); }, [&] { fs::create_directory_symlink(real, file); },
        [&] { fs::create_symlink(file, file); }, [&] { ASSERT_EQ(mkfifo(file.c_str(), 0600), 0); }};
    for (const auto &place : obstacles) {
        fs::remove(file);
        place();
        restart().setBool("isEnabled", true);
        EXPECT_THAT(lines, ElementsAre(HasSubstr("set aside")));
        EXPECT_EQ(restart().object("isEnabled"), Value(true));
        EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(file)));
    }
    EXPECT_THAT(namesBeside(file), SizeIs(obstacles.size()));
    EXPECT_TRUE(fs::is_directory(real));
}

TEST_F(PropertyListUserDefaultsTest, WritingThroughALink) {
    const auto target = folder / "dotfiles" / "lumo.plist";
    fs::create_directories(target.parent_path());
    fs::create_directories(file.parent_path());
    fs::create_symlink("../../dotfiles/lumo.plist", file); // leads nowhere yet
    for (const bool value : {true, false}) {
        restart().setBool("isEnabled", value);
        EXPECT_EQ(restart().object("isEnabled"), Value(value));
        EXPECT_TRUE(fs::is_symlink(file));
        EXPECT_FALSE(fs::is_symlink(target));
        EXPECT_THAT(read(target), HasSubstr("isEnabled"));
    }
    write(target, "garbage");
    restart().setBool("isEnabled", true);
    EXPECT_THAT(lines, ElementsAre(HasSubstr("set aside as " + (folder / "").string())));
    EXPECT_EQ(restart().object("isEnabled"), Value(true));
    EXPECT_TRUE(fs::is_symlink(file));
    EXPECT_THAT(namesBeside(target), SizeIs(1));
}

TEST_F(PropertyListUserDefaultsTest, MemoryWhileTheFileCannotBeWritten) {
    write(folder / "new", "a file where a folder has to be");
    auto &defaults = restart();
    EXPECT_THAT(lines, IsEmpty());
    for (const int number : {1, 2, 3}) {
        defaults.setInteger("number", number);
        loop.runPosted();
    }
    EXPECT_THAT(lines, ElementsAre(HasSubstr("can't be written to " + file.string())));
    EXPECT_EQ(defaults.object("number"), Value(3));
    fs::remove(folder / "new");
    defaults.setBool("another", true);
    loop.runPosted();
    EXPECT_THAT(lines, SizeIs(1));
    EXPECT_EQ(restart().object("number"), Value(3));
    EXPECT_EQ(restart().object("another"), Value(true));

    auto &homeless = restart(std::nullopt);
    homeless.setBool("isEnabled", true);
    loop.runPosted();
    EXPECT_EQ(homeless.object("isEnabled"), Value(true));
    EXPECT_THAT(lines, ElementsAre(HasSubstr("no home folder")));
}

TEST_F(PropertyListUserDefaultsTest, OldFileStaysWhenTheDiskIsFull) {
    auto &defaults = restart();
    defaults.setBool("old", true);
    loop.runPosted();
    const auto old = read(file);

    // A limit on file sizes fails the write half way, as a full disk does.
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
    const auto previousHandler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{100, limit.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    for (const int number : {1, 2}) {
        defaults.setInteger("number", number);
        loop.runPosted();
    }
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    std::signal(SIGXFSZ, previousHandler);

    EXPECT_EQ(read(file), old);
    EXPECT_THAT(namesBeside(file), IsEmpty());
    EXPECT_THAT(lines, SizeIs(1));
    quit(); // the disk has room again
    EXPECT_EQ(restart().object("number"), Value(2));
}

// Writes one generation after another, each in all keys, until it is killed.
[[noreturn]] void writeGenerations(const fs::path &file, std::string_view writer) {
    test::ScriptedMainLoop loop(0);
    Log log([](std::string_view) { _exit(1); });
    PropertyListUserDefaults defaults(file, loop, log);
    for (int generation = 0;; ++generation) {
        const auto value = std::string(writer) + std::to_string(generation);
        for (const auto *key : {"a", "b", "c", "d", "e", "f", "g", "h"}) {
            defaults.setString(key, value + std::string(2000, '.'));
        }
        defaults.flush();
    }
}

TEST_F(PropertyListUserDefaultsTest, FileStaysWholeWhenWritersAreKilled) {
    constexpr int kills = 200;
    std::mt19937 random(std::random_device{}());
    int cutShort = 0;
    int changed = 0;
    std::optional<Value> previous;
    for (int kill = 0; kill < kills; ++kill) {
        std::vector<pid_t> writers;
        for (const auto *name : {"first ", "second "}) {
            const pid_t child = fork();
            if (child == 0) {
                writeGenerations(file, name);
            }
            writers.push_back(child);
        }
        // A random moment; nothing is waited for.
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 10000));
        for (const auto writer : writers) {
            ::kill(writer, SIGKILL);
        }
        for (const auto writer : writers) {
            int status = 0;
            waitpid(writer, &status, 0);
            EXPECT_TRUE(WIFSIGNALED(status)) << "a writer found the file broken, or failed";
        }
        if (!fs::exists(file)) {
            continue; // killed before anything was written
        }
        const auto &defaults = restart();
        ASSERT_THAT(lines, IsEmpty());
        const auto generation = defaults.object("a");
        ASSERT_NE(generation, std::nullopt);
        for (const auto *key : {"b", "c", "d", "e", "f", "g", "h"}) {
            ASSERT_EQ(defaults.object(key), generation);
        }
        changed += generation != previous ? 1 : 0;
        previous = generation;
        const auto besides = namesBeside(file);
        cutShort += static_cast<int>(besides.size());
        ASSERT_THAT(besides, testing::Each("app.lumo.Lumo.plist.tmp"));
    }
    EXPECT_GT(changed, 10) << "the writers hardly wrote";
    EXPECT_GT(cutShort, 0) << "no kill has hit a write";
}

} // namespace
} // namespace lumo::freedesktop
