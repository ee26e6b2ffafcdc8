#pragma once

#include "platform/freedesktop/FileDescriptor.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace lumo::freedesktop {

// A small file that is read and replaced as a whole, for data that must survive a crash of the
// program or the machine.
class AtomicFile {
  public:
    // Larger files are taken for something else.
    static constexpr std::size_t sizeLimit = std::size_t{16} << 20;

    // An absolute path. A symbolic link there is followed and stays, even where it leads nowhere
    // yet.
    explicit AtomicFile(std::filesystem::path path);

    const std::filesystem::path &path() const { return path_; }

    // All that is in the file; nothing when there is no such file. Anything that is not a readable
    // regular file of moderate size sets the error.
    std::optional<std::string> read(std::error_code &error) const;

    // The sole right to replace the file, among the processes that ask for it in this way. It ends
    // with the object.
    class Turn {
      public:
        ~Turn();
        Turn(Turn &&) noexcept = default;
        Turn &operator=(Turn &&) = delete;

        // Makes this the contents of the file, with mode 0600, on the disk when this returns. A
        // reader at any moment, after a crash too, sees all of the old or all of the new contents.
        // On an error the old contents are in force. To be called once.
        std::error_code replace(std::string_view contents);

      private:
        friend class AtomicFile;
        Turn(std::filesystem::path target, std::filesystem::path temporary, FileDescriptor file);

        std::filesystem::path target_;
        std::filesystem::path temporary_;
        FileDescriptor file_; // the temporary one, locked
        bool isDone_ = false;
    };

    // Never waits: while another process has its turn, or a lock on the temporary file for whatever
    // reason, the error is errc::resource_unavailable_try_again. Missing folders are made with mode
    // 0700. At most one temporary file, the path with ".tmp", is ever left behind.
    std::optional<Turn> takeTurn(std::error_code &error) const;

    // Takes a turn for this alone, and waits for it no longer than ten milliseconds.
    std::error_code replace(std::string_view contents) const;

    // Where the contents lie: the path with links followed, in a folder that is made where there is
    // none.
    std::filesystem::path target(std::error_code &error) const;

    // Moves what lies there to a new name beside it, the path with ".broken-" and the time, that
    // nothing else has. Gives that name, or sets the error.
    std::filesystem::path setAside(std::error_code &error) const;

  private:
    std::filesystem::path path_;
};

} // namespace lumo::freedesktop
