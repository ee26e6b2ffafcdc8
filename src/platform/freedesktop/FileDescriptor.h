#pragma once

#include <unistd.h>

#include <utility>

namespace lumo::freedesktop {

// Owns an open file descriptor, or none (-1), and closes it.
class FileDescriptor {
  public:
    FileDescriptor() = default;
    explicit FileDescriptor(int number)
        : number_(number) {}
    ~FileDescriptor() {
        if (number_ >= 0) {
            close(number_);
        }
    }
    FileDescriptor(FileDescriptor &&other) noexcept
        : number_(other.release()) {}
    FileDescriptor &operator=(FileDescriptor &&other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    FileDescriptor(const FileDescriptor &) = delete;
    FileDescriptor &operator=(const FileDescriptor &) = delete;

    int get() const { return number_; }
    explicit operator bool() const { return number_ >= 0; }

    // Gives up the descriptor, which the caller closes from now on.
    [[nodiscard]] int release() { return std::exchange(number_, -1); }

  private:
    int number_ = -1;
};

} // namespace lumo::freedesktop
