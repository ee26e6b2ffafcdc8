#include "platform/posix/LineOutput.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <array>
#include <string>
#include <vector>

namespace lumo::posix {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::StartsWith;

struct Pipe {
    Pipe() {
        EXPECT_EQ(pipe(ends.data()), 0);
        fcntl(ends[0], F_SETFL, O_NONBLOCK);
    }
    ~Pipe() {
        close(ends[0]);
        close(ends[1]);
    }
    Pipe(const Pipe &) = delete;
    Pipe &operator=(const Pipe &) = delete;

    // All that has been written so far.
    std::string read() const {
        std::string all;
        std::array<char, 4096> buffer{};
        for (ssize_t count = 0; (count = ::read(ends[0], buffer.data(), buffer.size())) > 0;) {
            all.append(buffer.data(), static_cast<std::size_t>(count));
        }
        return all;
    }

    std::array<int, 2> ends{};
};

TEST(LineOutput, FullPipeDropsAndCountsLines) {
    const Pipe pipe;
    LineOutput output(pipe.ends[1]);
    const std::string line(1000, 'x');
    for (int i = 0; i < 1000; ++i) {
        output.print(line);
    }
    const auto first = pipe.read();
    const auto written = first.size() / (line.size() + 1);
    EXPECT_GT(written, 0U);
    EXPECT_LT(written, 1000U);
    output.print("after");
    EXPECT_THAT(pipe.read(), EndsWith("[Lumo] " + std::to_string(1000 - written) +
                                      " lines could not be written here\nafter\n"));
    output.print("and again");
    EXPECT_EQ(pipe.read(), "and again\n");
}

TEST(LineOutput, LineLongerThanAPipeIsNeverCut) {
    const Pipe pipe;
    LineOutput output(pipe.ends[1]);
    const std::string line(200000, 'y');
    output.print(line);
    output.print("dropped");
    std::string all = pipe.read();
    for (int i = 0; i < 100 && all.size() < line.size(); ++i) {
        output.print("dropped too, while there is no room");
        all += pipe.read();
    }
    EXPECT_THAT(all, StartsWith(line + "\n[Lumo] "));
}

TEST(Log, ControlCharactersReachNoSink) {
    std::vector<std::string> lines;
    const Log log([&](std::string_view line) { lines.emplace_back(line); });
    log.print("title=\x1b]0;owned\x07 a\nb\tc\x7f");
    log.print("gr\u00fc\u00df \u0085 \u009b2J \u00a0\u4e2d");
    EXPECT_THAT(lines, ElementsAre("title=\\x1b]0;owned\\x07 a\\x0ab\\x09c\\x7f",
                                   "gr\u00fc\u00df \\x85 \\x9b2J \u00a0\u4e2d"));
}

} // namespace
} // namespace lumo::posix
