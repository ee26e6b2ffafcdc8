#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumo::desktop {

using Seconds = std::chrono::duration<double>;

// Seconds on the steady clock.
double now();
using Environment = std::map<std::string, std::string>;

// The variables of the tester's own that programs under test have too: where libraries are, how
// sanitizers report, which fault is seeded.
Environment inheritedEnvironment();

// A wait of a few milliseconds between two looks at something that announces nothing.
void pauseBriefly();

class ChildProcess;

// Waits until the condition holds. Throws with what the program said when it ends before that, or
// takes more than half a minute.
void waitUntil(const std::function<bool()> &condition, ChildProcess &program,
               const std::string &what);

// A program started in a process group of its own. It is killed with everything in its group when
// the object goes, and by the kernel when the tester dies. Used on the thread that made it.
class ChildProcess {
  public:
    // Starts command[0], looked up in PATH, with exactly this environment. Standard output and
    // error go to files named after it in the directory. Throws when it cannot be started.
    ChildProcess(std::vector<std::string> command, const Environment &environment,
                 const std::filesystem::path &outputDirectory);
    ~ChildProcess();
    ChildProcess(const ChildProcess &) = delete;
    ChildProcess &operator=(const ChildProcess &) = delete;

    pid_t processIdentifier() const { return pid_; }
    const std::string &name() const { return name_; }
    bool isRunning();

    // How often its main thread has gone to sleep by itself so far, which counts its turns of the
    // main loop.
    long voluntarySwitches() const;

    // Sends a signal to the program alone; nothing when it has ended.
    void signal(int number);

    // The exit status, or 128 plus the number of the signal that ended it; absent when the program
    // still runs at the deadline.
    std::optional<int> waitForExit(Seconds deadline = Seconds(10));

    // Kills the whole group and waits until the program has gone.
    void kill();

    // Writes a line to its standard input.
    void writeLine(std::string_view line);

    // The complete lines it has printed so far.
    std::vector<std::string> outputLines() const;
    std::vector<std::string> errorLines() const;

    // Everything it said and how it ended, for a failure's message.
    std::string report();

  private:
    void spawn(const std::vector<std::string> &command, const Environment &environment);

    std::string name_;
    std::filesystem::path outputFile_;
    std::filesystem::path errorFile_;
    pid_t pid_ = -1;
    int input_ = -1;
    std::optional<int> exitStatus_;
};

} // namespace lumo::desktop
