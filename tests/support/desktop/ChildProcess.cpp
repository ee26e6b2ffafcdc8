#include "desktop/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace lumo::desktop {

double now() {
    return Seconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

namespace fs = std::filesystem;

namespace {

std::vector<std::string> linesOf(const fs::path &file) {
    std::ifstream stream(file);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line) && !stream.eof();) {
        lines.push_back(line);
    }
    return lines;
}

std::vector<char *> pointersTo(std::vector<std::string> &strings) {
    std::vector<char *> pointers;
    pointers.reserve(strings.size() + 1);
    for (std::string &string : strings) {
        pointers.push_back(string.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

} // namespace

Environment inheritedEnvironment() {
    Environment environment;
    for (const char *name : {"PATH", "LD_LIBRARY_PATH", "ASAN_OPTIONS", "UBSAN_OPTIONS",
                             "LSAN_OPTIONS", "TSAN_OPTIONS", "LUMO_SEEDED_FAULT"}) {
        // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing changes the tester's environment
        if (const char *value = std::getenv(name)) {
            environment[name] = value;
        }
    }
    return environment;
}

void pauseBriefly() {
    ::poll(nullptr, 0, 3);
}

void waitUntil(const std::function<bool()> &condition, ChildProcess &program,
               const std::string &what) {
    const double end = now() + 30;
    while (!condition()) {
        if (!program.isRunning() || now() > end) {
            throw std::runtime_error(what + " did not start: " + program.report());
        }
        pauseBriefly();
    }
}

ChildProcess::ChildProcess(std::vector<std::string> command, const Environment &environment,
                           const fs::path &outputDirectory)
    : name_(fs::path(command.at(0)).filename().string()) {
    static std::atomic<int> count = 0;
    const std::string stem = name_ + "-" + std::to_string(++count);
    outputFile_ = outputDirectory / (stem + ".out");
    errorFile_ = outputDirectory / (stem + ".err");
    spawn(command, environment);
}

ChildProcess::~ChildProcess() {
    kill();
    close(input_);
}

void ChildProcess::spawn(const std::vector<std::string> &command, const Environment &environment) {
    std::vector<std::string> arguments = command;
    std::vector<std::string> settings;
    for (const auto &[key, value] : environment) {
        settings.emplace_back(key).append("=").append(value);
    }
    const std::vector<char *> argv = pointersTo(arguments);
    const std::vector<char *> envp = pointersTo(settings);
    std::array<int, 2> pipes{};
    if (pipe2(pipes.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("cannot make a pipe for " + name_);
    }
    input_ = pipes[1];
    const int output = open(outputFile_.c_str(), O_CREAT | O_WRONLY | O_APPEND | O_CLOEXEC, 0600);
    const int error = open(errorFile_.c_str(), O_CREAT | O_WRONLY | O_APPEND | O_CLOEXEC, 0600);
    const pid_t parent = getpid();
    pid_ = fork();
    if (pid_ == 0) {
        setpgid(0, 0);
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != parent) {
            _exit(127);
        }
        dup2(pipes[0], STDIN_FILENO);
        dup2(output, STDOUT_FILENO);
        dup2(error, STDERR_FILENO);
        execvpe(argv[0], argv.data(), envp.data());
        _exit(127);
    }
    close(pipes[0]);
    close(output);
    close(error);
    if (pid_ < 0) {
        throw std::runtime_error("cannot start " + name_);
    }
    setpgid(pid_, pid_);
}

bool ChildProcess::isRunning() {
    return !waitForExit(Seconds(0));
}

long ChildProcess::voluntarySwitches() const {
    constexpr std::string_view key = "voluntary_ctxt_switches:";
    std::ifstream status("/proc/" + std::to_string(pid_) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(key)) {
            return std::stol(line.substr(key.size()));
        }
    }
    return 0;
}

void ChildProcess::signal(int number) {
    if (!exitStatus_) {
        ::kill(pid_, number);
    }
}

std::optional<int> ChildProcess::waitForExit(Seconds deadline) {
    const auto end = std::chrono::steady_clock::now() + deadline;
    while (!exitStatus_) {
        int status = 0;
        if (waitpid(pid_, &status, WNOHANG) == pid_) {
            exitStatus_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        } else if (std::chrono::steady_clock::now() >= end) {
            break;
        } else {
            pauseBriefly();
        }
    }
    return exitStatus_;
}

void ChildProcess::kill() {
    ::kill(-pid_, SIGKILL);
    waitForExit(Seconds(30));
}

void ChildProcess::writeLine(std::string_view line) {
    const std::string text = std::string(line) + "\n";
    if (write(input_, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
        throw std::runtime_error("cannot talk to " + report());
    }
}

std::vector<std::string> ChildProcess::outputLines() const {
    return linesOf(outputFile_);
}

std::vector<std::string> ChildProcess::errorLines() const {
    return linesOf(errorFile_);
}

std::string ChildProcess::report() {
    std::ostringstream text;
    text << name_ << " (process " << pid_ << ", ";
    if (isRunning()) {
        text << "still running";
    } else {
        text << "exit status " << *exitStatus_;
    }
    text << ") said:\n";
    for (const fs::path &file : {outputFile_, errorFile_}) {
        std::ifstream stream(file);
        for (std::string line; std::getline(stream, line);) {
            text << "    " << line << "\n";
        }
    }
    return text.str();
}

} // namespace lumo::desktop
