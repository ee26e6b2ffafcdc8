#include "ManagersTable.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>

namespace lumo::desktop {

namespace {

constexpr const char *introduction =
    R"(# Lumo under each window manager

Made by `./dev managers`, which starts each manager on a private X server with the real program, acts as a user and
looks at the pixels. The clear window must be exactly as painted, the others exactly as the effect paints them.

- *placement*: how the overlay got among the other windows (see [architecture.md](architecture.md)).
- *ok*: seen to work. *not offered*: the manager does not list the capability in `_NET_SUPPORTED`, or has no such key.
- *focus by click*: where the manager leaves the window that a click focuses beneath others, as enlightenment does, what
  hides part of it stays clear, too.
- *two displays*: where each display shows a desktop of its own, whether each has its clear window.
- *clicks through*: of ten clicks on windows under the effect, how many reached the window and moved the focus there.
- *corrections*: requests for the overlay's order beyond one for each of those ten changes of focus.
- *idle requests*: all requests of the program to the X server within so many seconds in which nothing happened.

Not tried: xmonad with hints, whose configuration has to be compiled (its compiler and library take 868 MB more in Debian
12), and qtile, which Debian 12 does not have.

)";

// By hand: add what a new story there has shown.
constexpr const char *wayland =
    R"(
## On Wayland

`./dev managers` runs the same stories on compositors without a screen (`SwayTest`, `KWinTest`), which hold every pixel
against what is expected and leave the pictures here; the rows below say what they have shown. Lumo lies above all windows
there, with cut-outs.

| compositor | focus by click | clicks through | focus by keyboard | closing | minimising | Peek | full screen | kept above | panel | menu | dialog | two displays | workspaces | X applications | what is lost | picture |
| --- | --- | --- | --- | --- | --- | --- | --- | --- | --- | --- | --- | --- | --- | --- | --- | --- |
| sway 1.7 | ok | 10 | ok | ok | not offered | ok | ok | not offered | ok | ok | ok | ok | ok | ok | blur and the shake gesture; a dragged window trails its cut-out by a step or two; a dialog beside its owner is covered without the focus; so are notifications, which lie beneath overlays | ![sway](images/window-managers/sway.png) |
| KWin 5.27 | ok | 10 | ok | ok | ok | ok | ok | ok | ok | ok | ok | ok | ok | ok | modifiers of the shake gesture; the strength of the blur, which KWin's own settings decide; a dragged window trails its cut-out by a step or two; round corners of the clear window | ![kwin-wayland](images/window-managers/kwin-wayland.png) |
)";

// To a quarter of the width and height.
Picture reduced(const Picture &picture) {
    constexpr int factor = 4;
    Picture small(picture.width() / factor, picture.height() / factor);
    for (int y = 0; y < small.height(); ++y) {
        for (int x = 0; x < small.width(); ++x) {
            const auto mean = picture.mean({x * factor, y * factor, factor, factor});
            small.at(x, y) = {static_cast<std::uint8_t>(mean.red),
                              static_cast<std::uint8_t>(mean.green),
                              static_cast<std::uint8_t>(mean.blue)};
        }
    }
    return small;
}

} // namespace

ManagersTable::ManagersTable() {
    // Nothing changes the environment of the tester.
    // NOLINTNEXTLINE(concurrency-mt-unsafe)
    if (const char *file = std::getenv("LUMO_MANAGERS_TABLE")) {
        file_ = file;
    }
}

ManagersTable &ManagersTable::shared() {
    static ManagersTable table;
    return table;
}

const std::vector<std::string> &ManagersTable::columns() {
    static const std::vector<std::string> names = {
        "placement",    "focus by click", "clicks through", "focus by keyboard",
        "closing",      "minimising",     "Peek",           "full screen",
        "kept above",   "dock",           "menu",           "dialog",
        "two displays", "corrections",    "idle requests",  "picture"};
    return names;
}

std::string ManagersTable::keepPicture(const std::string &row, const Picture &picture) const {
    const std::filesystem::path name =
        std::filesystem::path("images") / "window-managers" / (row + ".png");
    if (!file_.empty()) {
        std::filesystem::create_directories((file_.parent_path() / name).parent_path());
        reduced(picture).savePng(file_.parent_path() / name);
    }
    return "![" + row + "](" + name.string() + ")";
}

void ManagersTable::set(const std::string &row, const std::string &column,
                        const std::string &cell) {
    if (std::ranges::find(rows_, row) == rows_.end()) {
        rows_.push_back(row);
    }
    cells_[row][column] = cell;
}

void ManagersTable::write() const {
    if (file_.empty()) {
        return;
    }
    std::ofstream stream(file_);
    stream << introduction << "| window manager |";
    for (const auto &column : columns()) {
        stream << ' ' << column << " |";
    }
    stream << "\n| --- |";
    for (std::size_t i = 0; i < columns().size(); ++i) {
        stream << " --- |";
    }
    stream << '\n';
    for (const auto &row : rows_) {
        stream << "| " << row << " |";
        for (const auto &column : columns()) {
            const auto &cells = cells_.at(row);
            const auto cell = cells.find(column);
            stream << ' ' << (cell == cells.end() ? "**failed**" : cell->second) << " |";
        }
        stream << '\n';
    }
    stream << wayland;
}

} // namespace lumo::desktop
