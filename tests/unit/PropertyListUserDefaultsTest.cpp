#include "platform/freedesktop/PropertyListUserDefaults.h"

#include "ScriptedMainLoop.h"
#include "bus/RunUntil.h"
#include "desktop/TemporaryDirectory.h"
#include "support/Log.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
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

const std::string emptyList = "<plist version=\"1.0\"><dict/></plist>";

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
    store(&UserDefaults::setString, "", " <&>\"' ]]>\t\r\n\u00fc\U0001F600 ", "true");
    store(&UserDefaults::setData, Bytes{}, Bytes{0, 255, 10, 13, '<'}, Bytes(1000, 7));
    // In XML, and then in binary, for which alone the last text is.
    const std::string unprintable("a\x01 b\x1b\0 \uFFFF \u00fc\U0001F600", 18);
    for (const auto *format : {"<?xml", "bplist00"}) {
        auto &next = restart();
        for (std::size_t index = 0; index < values.size(); ++index) {
            EXPECT_EQ(next.object(key(index)), values[index]) << index;
        }
        EXPECT_THAT(read(file), testing::StartsWith(format));
        next.setString("text", unprintable);
    }
    EXPECT_EQ(restart().object("text"), Value(unprintable));
    EXPECT_EQ(status(file).st_mode & 07777U, 0600U);
    EXPECT_EQ(status(file.parent_path()).st_mode & 07777U, 0700U);
    EXPECT_THAT(namesBeside(file), IsEmpty());
    EXPECT_THAT(lines, IsEmpty());

    restart().setString("name", std::string("b\xff c\0d", 6));
    EXPECT_EQ(restart().object("name"), Value(std::string("b\uFFFD c\0d", 8)));
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
    const std::string foreign = "<key>my date</key><date>2020-02-03T04:05:06Z</date>"
                                "<key>my list</key><array><real>0.5</real><dict>"
                                "<key>inner</key><data>AAEC</data></dict></array>"
                                "<key>my number</key><integer>18446744073709551616</integer>";
    write(file, R"(<?xml version="1.0"?><plist version="1.0"><dict>)" + foreign +
                    "<key>isEnabled</key><true/></dict></plist>");
    auto &defaults = restart();
    EXPECT_EQ(defaults.object("isEnabled"), Value(true));
    EXPECT_EQ(defaults.object("my date"), std::nullopt);
    EXPECT_EQ(defaults.object("my list"), std::nullopt);
    EXPECT_EQ(defaults.object("my number"), Value(std::numeric_limits<std::int64_t>::max()));
    defaults.setBool("isEnabled", false);
    quit();
    auto text = read(file);
    std::erase_if(text, [](char c) { return c == '\n' || c == '\t'; });
    EXPECT_THAT(text, HasSubstr(foreign));
    EXPECT_THAT(text, HasSubstr("<key>isEnabled</key><false/>"));
}

// One number in an array, 100,000 times around; as dictionaries {"": ...} they would be larger.
std::string deeplyNestedBinary() {
    constexpr std::uint32_t depth = 100000;
    const auto number = [](std::uint64_t value, int size) {
        std::string bytes;
        for (int byte = size; byte-- > 0;) {
            bytes += static_cast<char>(value >> (8 * byte) & 0xffU);
        }
        return bytes;
    };
    std::string objects = "bplist00";
    std::string offsets;
    for (std::uint32_t index = 0; index < depth; ++index) {
        offsets += number(objects.size(), 4);
        objects += '\xa1' + number(index + 1, 4);
    }
    offsets += number(objects.size(), 4);
    objects += '\x09';
    return objects + offsets + std::string(6, '\0') + "\x04\x04" + number(depth + 1, 8) +
           number(0, 8) + number(objects.size(), 8);
}

std::string repeated(std::string_view text, int count) {
    std::string result;
    while (count-- > 0) {
        result += text;
    }
    return result;
}

TEST_F(PropertyListUserDefaultsTest, BrokenFileIsSetAside) {
    const std::string tooLarge(AtomicFile::sizeLimit + 1, ' ');
    const std::vector<std::string> broken{"",
                                          std::string("\0\x01\xff\xfe garbage \0", 13),
                                          "bplist00 but no more",
                                          "<plist version=\"1.0\"><array/></plist>",
                                          "<plist version=\"1.0\"><dict><key>isEnabled</key>",
                                          "<plist><dict><key>a</key>" +
                                              repeated("<array>", 100000) +
                                              repeated("</array>", 100000) + "</dict></plist>",
                                          deeplyNestedBinary(),
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

TEST_F(PropertyListUserDefaultsTest, UnreadableFileStaysAsItIs) {
    write(file, emptyList);
    fs::permissions(file, fs::perms::none);
    fs::permissions(folder, fs::perms::all);
    // The superuser reads everything.
    const auto user = geteuid();
    ASSERT_EQ(user == 0 ? seteuid(65534) : 0, 0);
    auto &defaults = restart();
    defaults.setBool("isEnabled", true);
    loop.runPosted();
    EXPECT_EQ(defaults.object("isEnabled"), Value(true));
    EXPECT_THAT(lines, ElementsAre(HasSubstr("they stay as they are")));
    quit();
    ASSERT_EQ(seteuid(user), 0);
    EXPECT_EQ(read(file), emptyList);
    EXPECT_THAT(namesBeside(file), IsEmpty());
}

TEST_F(PropertyListUserDefaultsTest, LockedTemporaryFileIsWaitedForElsewhere) {
    auto &defaults = restart();
    const auto temporary = file.string() + ".tmp";
    const FileDescriptor lock(open(temporary.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    ASSERT_EQ(flock(lock.get(), LOCK_EX), 0);
    defaults.setBool("a", true);
    loop.runPosted();
    EXPECT_THAT(lines, IsEmpty()) << "it is the other's turn";
    loop.advance(5);
    EXPECT_THAT(lines, ElementsAre(HasSubstr("another process has locked")));
    EXPECT_FALSE(fs::exists(file));
    flock(lock.get(), LOCK_UN);
    loop.advance(0.2);
    EXPECT_THAT(read(file), HasSubstr("<key>a</key>"));

    const FileDescriptor next(open(temporary.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    ASSERT_EQ(flock(next.get(), LOCK_EX), 0);
    defaults.setBool("b", true);
    const auto start = std::chrono::steady_clock::now();
    quit();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    EXPECT_THAT(lines, testing::Contains(HasSubstr("the last changes are lost")));
}

TEST_F(PropertyListUserDefaultsTest, WhatOthersWriteIsTakenIn) {
    GlibMainLoop real;
    Log log([this](std::string_view line) { lines.emplace_back(line); });
    // Two displays of one user; the second has what the user put elsewhere and linked.
    fs::create_directories(file.parent_path());
    const auto elsewhere = folder / "dotfiles" / "lumo.plist";
    fs::create_symlink(elsewhere, file);
    PropertyListUserDefaults first(file, real, log);
    PropertyListUserDefaults second(elsewhere, real, log);
    std::vector<std::string> received;
    const auto observer = first.onChangeByOthers(
        [&](const auto &keys) { received.insert(received.end(), keys.begin(), keys.end()); });
    first.setBool("mine", true);
    second.setInteger("both", 2);
    second.setString("yours", "text");
    EXPECT_TRUE(runUntil(real, [&] {
        return first.object("yours") == Value("text") && second.object("mine") == Value(true);
    }));
    EXPECT_THAT(received, testing::UnorderedElementsAre("both", "yours"));

    // An editor replaces the file at the moment at which a setting changes, and then breaks it.
    const auto changed = file.string() + ".new";
    write(changed, R"(<plist><dict><key>both</key><integer>5</integer><key>new</key><real>1</real>)"
                   "</dict></plist>");
    fs::rename(changed, elsewhere);
    first.setBool("mine", false);
    EXPECT_TRUE(runUntil(real, [&] {
        return second.object("mine") == Value(false) && second.object("new") == Value(1.0);
    }));
    EXPECT_EQ(first.object("both"), Value(5));
    EXPECT_EQ(first.object("yours"), std::nullopt);
    EXPECT_THAT(lines, IsEmpty());
    write(elsewhere, "garbage");
    EXPECT_TRUE(runUntil(real, [&] { return lines.size() == 2; }));
    EXPECT_THAT(lines, testing::Each(HasSubstr("those in force stay")));
    EXPECT_EQ(first.object("both"), Value(5));
    EXPECT_EQ(read(elsewhere), "garbage");
    first.setInteger("both", 6);
    EXPECT_TRUE(runUntil(real, [&] { return second.object("both") == Value(6); }));
    EXPECT_EQ(second.object("new"), Value(1.0));
    EXPECT_THAT(namesBeside(elsewhere), SizeIs(1)) << "set aside";
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

// Writes one generation after another, each in all its own keys, until it is killed.
[[noreturn]] void writeGenerations(const fs::path &file, std::string_view writer) {
    test::ScriptedMainLoop loop(0);
    Log log([](std::string_view) { _exit(1); });
    PropertyListUserDefaults defaults(file, loop, log);
    for (int generation = 0;; ++generation) {
        const auto value = std::string(writer) + std::to_string(generation);
        for (const auto *key : {"a", "b", "c", "d"}) {
            defaults.setString(std::string(writer) + key, value + std::string(4000, '.'));
        }
        defaults.flush();
    }
}

TEST_F(PropertyListUserDefaultsTest, FileStaysWholeWhenWritersAreKilled) {
    constexpr int kills = 200;
    std::mt19937 random(std::random_device{}());
    int cutShort = 0;
    int changed = 0;
    const std::array<std::string, 2> names{"first ", "second "};
    std::array<std::optional<Value>, 2> previous;
    for (int kill = 0; kill < kills; ++kill) {
        std::vector<pid_t> writers;
        for (const auto &name : names) {
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
        for (std::size_t writer = 0; writer < names.size(); ++writer) {
            const auto generation = defaults.object(names[writer] + "a");
            ASSERT_TRUE(generation || !previous[writer]) << "lost by the other writer";
            for (const auto *key : {"b", "c", "d"}) {
                ASSERT_EQ(defaults.object(names[writer] + key), generation);
            }
            changed += generation != previous[writer] ? 1 : 0;
            previous[writer] = generation;
        }
        const auto besides = namesBeside(file);
        cutShort += static_cast<int>(besides.size());
        ASSERT_THAT(besides, testing::Each("app.lumo.Lumo.plist.tmp"));
    }
    EXPECT_GT(changed, 10) << "the writers hardly wrote";
    EXPECT_GT(cutShort, 0) << "no kill has hit a write";
}

} // namespace
} // namespace lumo::freedesktop
