#pragma once

#include "desktop/Picture.h"

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace lumo::desktop {

// What was seen under each window manager, for people: a table that the run writes when the
// environment names a file for it (LUMO_MANAGERS_TABLE), with a picture of each beside it.
class ManagersTable {
  public:
    static ManagersTable &shared();

    // The columns in their order.
    static const std::vector<std::string> &columns();

    // Puts a small copy of the picture beside the file, if one is wanted, and gives the cell that
    // shows it.
    std::string keepPicture(const std::string &row, const Picture &picture) const;

    void set(const std::string &row, const std::string &column, const std::string &cell);

    // Writes the file if one is wanted.
    void write() const;

  private:
    ManagersTable();

    std::filesystem::path file_;
    std::vector<std::string> rows_;
    std::map<std::string, std::map<std::string, std::string>> cells_;
};

} // namespace lumo::desktop
