#pragma once

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

    // Makes this the contents of the file, with mode 0600, on the disk when this returns; missing
    // folders are made with mode 0700. A reader at any moment, after a crash too, sees all of
    // the old or all of the new contents. On an error the old contents are in force. At most one
    // temporary file, the path with ".tmp", is ever left behind; processes that replace the same
    // file take turns.
    std::error_code replace(std::string_view contents) const;

    // Moves what lies there to a new name beside it, the path with ".broken-" and the time, that
    // nothing else has. Gives that name, or sets the error.
    std::filesystem::path setAside(std::error_code &error) const;

  private:
    std::filesystem::path path_;
};

} // namespace lumo::freedesktop
