#include "platform/freedesktop/AtomicFile.h"

#include <fcntl.h>
#include <glib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <thread>
#include <utility>

namespace lumo::freedesktop {

namespace {

namespace fs = std::filesystem;

std::error_code lastError() {
    return {errno, std::generic_category()};
}

// The path with links followed, also when what the last one names does not exist. Links that run
// in a circle give the path itself.
fs::path withoutLinks(const fs::path &path) {
    constexpr int mostLinks = 40;
    fs::path current = path;
    for (int links = 0; links < mostLinks; ++links) {
        std::error_code error;
        const auto target = fs::read_symlink(current, error);
        if (error) {
            return current;
        }
        current = target.is_absolute() ? target : current.parent_path() / target;
    }
    return path;
}

fs::path withSuffix(fs::path path, const std::string &suffix) {
    return path += suffix;
}

void syncFolder(const fs::path &folder) {
    // Nothing can be done where a file system has no such operation; the file itself is safe.
    if (const FileDescriptor descriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        descriptor) {
        fsync(descriptor.get());
    }
}

std::error_code makeFolder(const fs::path &folder) {
    std::error_code ignored;
    if (fs::is_directory(folder, ignored)) {
        return {};
    }
    if (g_mkdir_with_parents(folder.c_str(), S_IRWXU) != 0) {
        return lastError();
    }
    syncFolder(folder.parent_path());
    return {};
}

// Opens the temporary file, and locks it so that no other process writes to it.
FileDescriptor openTemporary(const fs::path &path, std::error_code &error) {
    constexpr int flags = O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    while (true) {
        FileDescriptor file(open(path.c_str(), flags, S_IRUSR | S_IWUSR));
        if (!file || flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
            error = lastError();
            return {};
        }
        // The process that held the lock before may have renamed or removed the file meanwhile.
        struct stat opened {};
        struct stat current {};
        if (fstat(file.get(), &opened) == 0 && stat(path.c_str(), &current) == 0 &&
            opened.st_ino == current.st_ino && opened.st_dev == current.st_dev) {
            return file;
        }
    }
}

std::error_code writeAll(int file, std::string_view contents) {
    while (!contents.empty()) {
        const auto written = write(file, contents.data(), contents.size());
        if (written >= 0) {
            contents.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno != EINTR) {
            return lastError();
        }
    }
    return {};
}

std::error_code fill(int file, std::string_view contents) {
    if (ftruncate(file, 0) != 0) {
        return lastError();
    }
    if (const auto error = writeAll(file, contents)) {
        return error;
    }
    return fchmod(file, S_IRUSR | S_IWUSR) == 0 && fsync(file) == 0 ? std::error_code{}
                                                                    : lastError();
}

std::string timeStamp() {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    gmtime_r(&now, &parts);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y%m%dT%H%M%SZ", &parts);
    return text.data();
}

// As rename(2), but never over something else.
bool renameToFreeName(const fs::path &from, const fs::path &to) {
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
        return true;
    }
    if (errno != EINVAL) {
        return false;
    }
    // The file system can't promise it, so look first.
    struct stat existing {};
    if (lstat(to.c_str(), &existing) == 0) {
        errno = EEXIST;
        return false;
    }
    return rename(from.c_str(), to.c_str()) == 0;
}

} // namespace

AtomicFile::AtomicFile(fs::path path)
    : path_(std::move(path)) {
}

std::optional<std::string> AtomicFile::read(std::error_code &error) const {
    error.clear();
    // Without waiting, in case it is a pipe.
    const FileDescriptor file(open(path_.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!file) {
        if (errno != ENOENT && errno != ENOTDIR) {
            error = lastError();
        }
        return std::nullopt;
    }
    struct stat facts {};
    if (fstat(file.get(), &facts) != 0) {
        error = lastError();
        return std::nullopt;
    }
    if (!S_ISREG(facts.st_mode)) {
        error = make_error_code(S_ISDIR(facts.st_mode) ? std::errc::is_a_directory
                                                       : std::errc::not_supported);
        return std::nullopt;
    }
    std::string contents;
    std::array<char, 65536> block{};
    while (true) {
        const auto count = ::read(file.get(), block.data(), block.size());
        if (count == 0) {
            return contents;
        }
        if (count > 0) {
            contents.append(block.data(), static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            error = lastError();
            return std::nullopt;
        }
        if (contents.size() > sizeLimit) {
            error = make_error_code(std::errc::file_too_large);
            return std::nullopt;
        }
    }
}

fs::path AtomicFile::target(std::error_code &error) const {
    auto target = withoutLinks(path_);
    error = makeFolder(target.parent_path());
    return target;
}

std::optional<AtomicFile::Turn> AtomicFile::takeTurn(std::error_code &error) const {
    auto target = this->target(error);
    if (error) {
        return std::nullopt;
    }
    auto temporary = withSuffix(target, ".tmp");
    auto file = openTemporary(temporary, error);
    return file ? std::optional(Turn(std::move(target), std::move(temporary), std::move(file)))
                : std::nullopt;
}

std::error_code AtomicFile::replace(std::string_view contents) const {
    constexpr int mostAttempts = 10;
    std::error_code error;
    for (int attempt = 1;; ++attempt) {
        if (auto turn = takeTurn(error)) {
            return turn->replace(contents);
        }
        if (error != std::errc::resource_unavailable_try_again || attempt == mostAttempts) {
            return error;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

AtomicFile::Turn::Turn(fs::path target, fs::path temporary, FileDescriptor file)
    : target_(std::move(target))
    , temporary_(std::move(temporary))
    , file_(std::move(file)) {
}

AtomicFile::Turn::~Turn() {
    if (file_ && !isDone_) {
        unlink(temporary_.c_str());
    }
}

std::error_code AtomicFile::Turn::replace(std::string_view contents) {
    if (const auto error = fill(file_.get(), contents)) {
        return error;
    }
    if (rename(temporary_.c_str(), target_.c_str()) != 0) {
        return lastError();
    }
    isDone_ = true;
    syncFolder(target_.parent_path());
    return {};
}

fs::path AtomicFile::setAside(std::error_code &error) const {
    // A link to something that is no file is itself what is wrong.
    struct stat facts {};
    const auto target = withoutLinks(path_);
    const bool isFile = lstat(target.c_str(), &facts) == 0 && S_ISREG(facts.st_mode);
    const auto &subject = isFile ? target : path_;
    const auto name = withSuffix(subject, ".broken-" + timeStamp());
    constexpr int mostAttempts = 1000;
    auto free = name;
    for (int attempt = 2; !renameToFreeName(subject, free); ++attempt) {
        if (errno != EEXIST || attempt > mostAttempts) {
            error = lastError();
            return {};
        }
        free = withSuffix(name, "-" + std::to_string(attempt));
    }
    error.clear();
    return free;
}

} // namespace lumo::freedesktop
