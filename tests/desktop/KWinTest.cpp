#include "Look.h"
#include "Panes.h"
#include "wayland/PrivateKWin.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace lumo::desktop {
namespace {

constexpr Area display = {0, 0, 1280, 720};

class KWinTest : public testing::Test {
  protected:
    // Starts three applications whose windows overlap in a row, the first in front, and the real
    // program.
    void show(const KWinOptions &options = {}, const Preferences &more = {}) {
        kwin = std::make_unique<PrivateKWin>(options);
        for (auto &[name, window] : windows) {
            window.program =
                kwin->startSample(name, window.colour, window.area.width, window.area.height);
            place(name, window.area);
        }
        auto preferences = look.preferences();
        preferences.insert(more.begin(), more.end());
        lumo = kwin->startLumo(preferences);
        EXPECT_EQ(wrongWith(clear("Red")), "");
    }

    void place(const std::string &name, const Area &area) {
        windows[name].area = area;
        act(name, "w.frameGeometry = {x: " + std::to_string(area.x) +
                      ", y: " + std::to_string(area.y) + ", width: " + std::to_string(area.width) +
                      ", height: " + std::to_string(area.height) + "}");
    }

    void act(const std::string &name, const std::string &code) {
        kwin->script("each('" + name + "', function (w) { " + code + "; });");
    }

    // The three windows where they are, that one in front of the others.
    std::vector<Pane> clear(const std::string &name) {
        if (std::erase(order, name) > 0) {
            order.push_back(name);
        }
        std::vector<Pane> panes;
        for (const auto &each : order) {
            panes.push_back({windows[each].area, windows[each].colour, each == name});
        }
        return panes;
    }

    std::vector<Pane> withoutEffect() {
        auto panes = clear("Red");
        panes.insert(panes.begin(), {display, "#000000"});
        std::ranges::for_each(panes, [](Pane &pane) { pane.isClear = true; });
        return panes;
    }

    std::string wrongWith(const std::vector<Pane> &expected,
                          const std::string &output = "Virtual-0", double scale = 1) {
        std::string wrong;
        const double end = now() + 8;
        do {
            wrong = expectation.wrongIn(kwin->picture(output), expected, scale);
        } while (!wrong.empty() && now() < end);
        return wrong.empty() ? wrong : output + " at " + wrong + '\n' + lumo->report();
    }

    static bool eventually(const std::function<bool()> &condition) {
        const double end = now() + 8;
        while (!condition() && now() < end) {
            pauseBriefly();
        }
        return condition();
    }

    long said(const std::string &name, const std::string &line) {
        return std::ranges::count(windows[name].program->outputLines(), line);
    }

    struct Window {
        Area area;
        std::string colour;
        std::unique_ptr<ChildProcess> program = nullptr;
    };

    const Look look{"dim", 1};
    Panes expectation{look, "#000000"};
    std::unique_ptr<PrivateKWin> kwin;
    std::map<std::string, Window> windows = [] {
        std::map<std::string, Window> all;
        all["Blue"] = {{640, 380, 420, 300}, "#3c64e0"};
        all["Green"] = {{360, 220, 420, 300}, "#3cb450"};
        all["Red"] = {{60, 80, 420, 300}, "#d83c30"};
        return all;
    }();
    std::vector<std::string> order = {"Blue", "Green", "Red"}; // from the bottom to the top
    std::unique_ptr<ChildProcess> lumo;
};

TEST_F(KWinTest, FocusByClickAndKeyboard) {
    show();
    int arrived = 0;
    for (std::size_t i = 0; i < 10; ++i) {
        const std::string name = std::array{"Green", "Blue", "Red"}[i % 3];
        const auto before = said(name, "click");
        // Where no other window covers it, whatever the order.
        const std::map<std::string, Spot> spots = {
            {"Red", {90, 110}}, {"Green", {570, 350}}, {"Blue", {1000, 600}}};
        kwin->click(spots.at(name));
        arrived += eventually([&] { return said(name, "click") > before; }) ? 1 : 0;
        EXPECT_EQ(wrongWith(clear(name)), "") << i;
    }
    EXPECT_EQ(arrived, 10);
}

} // namespace
} // namespace lumo::desktop
