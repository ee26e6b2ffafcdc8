#include "Look.h"
#include "reference/Grain.h"
#include "wayland/PrivateSway.h"

#include <gmock/gmock.h>

#include <array>
#include <cmath>
#include <csignal>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace lumo::desktop {
namespace {

// A part of a display and how it has to look. Areas are in points of the display.
struct Pane {
    Area area;
    std::string colour;
    bool isClear = true;
};

constexpr Area display = {0, 0, 1280, 720};

class SwayTest : public testing::Test {
  protected:
    explicit SwayTest(const SwayOptions &options = {})
        : sway(options) {}

    // Starts three applications whose floating windows overlap in a row, the first in front, and
    // the real program.
    void show(const Preferences &more = {}) {
        for (auto &[name, window] : windows) {
            window.program =
                sway.startSample(name, window.colour, window.area.width, window.area.height);
            place(name, window.area);
        }
        sway.command("[app_id=Red] focus");
        auto preferences = look.preferences();
        preferences.insert(more.begin(), more.end());
        lumo = sway.startLumo(preferences);
        EXPECT_EQ(wrongWith(threeWithClear("Red")), "");
    }

    void place(const std::string &name, const Area &area) {
        sway.command("[app_id=" + name + "] floating enable, resize set " +
                     std::to_string(area.width) + " " + std::to_string(area.height) +
                     ", move absolute position " + std::to_string(area.x) + " " +
                     std::to_string(area.y));
    }

    // The three windows where they are, that one in front of the others.
    std::vector<Pane> threeWithClear(const std::string &clear) {
        std::erase(order, clear);
        order.push_back(clear);
        std::vector<Pane> panes;
        for (const auto &name : order) {
            panes.push_back({windows[name].area, windows[name].colour, name == clear});
        }
        return panes;
    }

    Colour expectedAt(const Pane &pane, std::uint8_t grain) {
        if (pane.isClear) {
            return Colour::parse(pane.colour);
        }
        auto &known = covered[pane.colour];
        if (known.empty()) {
            for (int each = 0; each < 256; ++each) {
                known.push_back(
                    look.over(Colour::parse(pane.colour), static_cast<std::uint8_t>(each)));
            }
        }
        return known[grain];
    }

    // Holds all pixels of a display against the panes, from the bottom to the top, over sway's own
    // background; empty when nothing is wrong.
    std::string wrongNow(const std::vector<Pane> &panes, const std::string &output, double scale) {
        const auto picture = sway.picture(output);
        const auto grain = reference::grainImage(picture.width(), picture.height());
        const auto pixels = [&](int points) {
            return static_cast<int>(std::lround(points * scale));
        };
        std::vector<Pane> onGrid = {{picture.area(), "#404040", false}};
        for (auto pane : panes) {
            const auto &[x, y, width, height] = pane.area;
            pane.area = {pixels(x), pixels(y), pixels(x + width) - pixels(x),
                         pixels(y + height) - pixels(y)};
            onGrid.push_back(pane);
        }
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                auto pane = onGrid.rbegin();
                while (!pane->area.contains(x, y)) {
                    ++pane;
                }
                const auto index = static_cast<std::size_t>(y * picture.width() + x);
                const auto expected =
                    expectedAt(*pane, grain->pixels[index * grain->bytesPerPixel()]);
                if (distance(picture.at(x, y), expected) > (pane->isClear ? 0 : tolerance)) {
                    return output + " at " + std::to_string(x) + "," + std::to_string(y) + " " +
                           picture.at(x, y).describe() + " instead of " + expected.describe();
                }
            }
        }
        return {};
    }

    std::string wrongWith(const std::vector<Pane> &panes, const std::string &output = "HEADLESS-1",
                          double scale = 1) {
        std::string wrong;
        const double end = now() + 8;
        do {
            wrong = wrongNow(panes, output, scale);
        } while (!wrong.empty() && now() < end);
        return wrong.empty() ? wrong : wrong + '\n' + lumo->report();
    }

    static bool eventually(const std::function<bool()> &condition) {
        const double end = now() + 8;
        while (!condition() && now() < end) {
            pauseBriefly();
        }
        return condition();
    }

    struct Window {
        Area area;
        std::string colour;
        std::unique_ptr<ChildProcess> program = nullptr;
    };

    PrivateSway sway;
    const Look look{"dim", 1};
    std::map<std::string, Window> windows = [] {
        std::map<std::string, Window> all;
        all["Blue"] = {{640, 380, 420, 300}, "#3c64e0"};
        all["Green"] = {{360, 220, 420, 300}, "#3cb450"};
        all["Red"] = {{60, 80, 420, 300}, "#d83c30"};
        return all;
    }();
    std::vector<std::string> order = {"Blue", "Green", "Red"}; // from the bottom to the top
    std::map<std::string, std::vector<Colour>> covered;        // by grain
    std::unique_ptr<ChildProcess> lumo;
};

TEST_F(SwayTest, FocusByClick) {
    show();
    int arrived = 0;
    for (int i = 0; i < 10; ++i) {
        const std::string name =
            std::array{"Green", "Blue", "Red"}[static_cast<std::size_t>(i % 3)];
        const auto &[area, colour, program] = windows[name];
        const auto clicks = [&] {
            return std::ranges::count(program->outputLines(), std::string("click"));
        };
        const auto before = clicks();
        const int inset = i % 2 == 0 ? 30 : area.width - 30;
        const int down = inset == 30 ? area.height - 30 : 30;
        // A corner that no other window covers, whatever the order.
        const Spot spot = name == "Green" ? Spot{area.x + area.width / 2, area.y + 130}
                                          : Spot{area.x + (name == "Red" ? 30 : area.width - 30),
                                                 area.y + (name == "Red" ? 30 : down)};
        sway.hands().click(spot, display);
        arrived += eventually([&] { return clicks() > before; }) ? 1 : 0;
        EXPECT_EQ(wrongWith(threeWithClear(name)), "") << i;
    }
    EXPECT_EQ(arrived, 10);
}

} // namespace
} // namespace lumo::desktop
