#include "OverlayDesktop.h"
#include "desktop/SampleApplication.h"
#include "reference/EffectLook.h"
#include "reference/ReferenceRenderer.h"

#include <gmock/gmock.h>

#include <array>
#include <functional>
#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace lumo::x11 {
namespace {

using desktop::Area;
using desktop::Colour;
using desktop::Compositor;
using desktop::Picture;
using desktop::SampleApplication;
using reference::EffectLook;

constexpr int displayWidth = 700;
constexpr int displayHeight = 460;

// Everything that blurs badly: checks and lines as fine as pixels, strokes as of text, saturated
// colours side by side, and bright and dark at the very edges.
Picture testCard(int width, int height) {
    constexpr std::array<Colour, 6> colours = {
        {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {0, 255, 255}, {255, 0, 255}, {255, 255, 0}}};
    const Colour black{0, 0, 0};
    const Colour white{255, 255, 255};
    Picture card(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const auto column = static_cast<std::size_t>(x * 6 / width);
            Colour colour = white;
            if (y < height / 4) {
                const int size = 1 << column;
                colour = (x / size + y / size) % 2 == 0 ? black : white;
            } else if (y < height / 2) {
                colour = colours[column];
            } else if (y < 3 * height / 4) {
                const bool isStroke = y % 14 < 9 && (x % 7 < 2 || y % 14 == 4) && x % 60 < 50;
                colour = isStroke ? black : Colour{250, 248, 240};
            } else {
                colour = x % 3 == 0 || (x / 40) % 2 == 0 ? Colour{10, 20, 60} : white;
            }
            card.at(x, y) = colour;
        }
    }
    for (int x = 0; x < width; ++x) {
        for (int y = 0; y < 3; ++y) {
            card.at(x, y) = card.at(x, height - 1 - y) = (x / 90) % 2 == 0 ? white : black;
        }
    }
    return card;
}

struct Stage {
    std::string name;
    double scale;
    Compositor compositor;

    friend std::ostream &operator<<(std::ostream &stream, const Stage &stage) {
        return stream << stage.name;
    }
};

// The pictures of the overlays on a real server, by each of the renderers, held against the
// formulas at full resolution.
class BlurPictures : public testing::TestWithParam<Stage>, protected OverlayDesktop {
  protected:
    BlurPictures()
        : OverlayDesktop(
              {.width = displayWidth, .height = displayHeight, .compositor = GetParam().compositor},
              GetParam().scale) {
        session.setWallpaper(testCard(displayWidth, displayHeight));
        const auto window = session.openWindow(testCard(200, 150));
        EXPECT_TRUE(session.eventually([&] { return session.isViewable(window); }));
        session.move(window, displayWidth - 170, 120);
        beneath_ = session.stillPicture();
    }

    LayerTree blurTree(double radius) const {
        LayerTree tree;
        tree.bounds = frame();
        tree.layers = {reference::blurLayer(tree.bounds, radius, scale)};
        return tree;
    }

    // What is not as like the expected picture as said; empty when nothing is.
    std::string wrongIn(const Picture &shown, const Picture &expected,
                        const std::map<std::string, Area> &parts, double decibels) {
        std::string wrong;
        for (const auto &[name, part] : parts) {
            const double ratio = peakSignalToNoiseRatio(shown, expected, part);
            RecordProperty("decibels_" + name, std::to_string(ratio));
            if (ratio < decibels) {
                wrong += name + " " + std::to_string(ratio) + " dB; ";
            }
        }
        return wrong;
    }

    // The display and strips along its edges.
    std::map<std::string, Area> displayAndEdges() const {
        return {{"all", wholeArea()},
                {"left", {0, 0, strip, height}},
                {"right", {width - strip, 0, strip, height}},
                {"top", {0, 0, width, strip}},
                {"bottom", {0, height - strip, width, strip}}};
    }

    // The strips around an area.
    static std::map<std::string, Area> around(const Area &area) {
        return {{"beside", {area.x - strip, area.y, strip, area.height}},
                {"behind", {area.right(), area.y, strip, area.height}},
                {"above", {area.x, area.y - strip, area.width, strip}},
                {"below", {area.x, area.bottom(), area.width, strip}}};
    }

    static constexpr int strip = 24;
    Picture beneath_;
};

constexpr std::array renderers = {"cpu", "gl"};

TEST_P(BlurPictures, GaussianAtEachRadius) {
    for (const double radius : {24.0, 29.0, 34.0}) {
        const auto tree = blurTree(radius);
        const Picture expected = reference::render(beneath_, tree, scale);
        for (const std::string renderer : renderers) {
            useRenderer(renderer);
            const auto overlay = overlays->makeWindow(frame());
            overlay->commit(tree);
            overlay->orderFront();
            std::string wrong;
            EXPECT_TRUE(eventually([&] {
                wrong = wrongIn(session.picture(), expected, displayAndEdges(), 40);
                return wrong.empty();
            })) << renderer
                << " at " << radius << ": " << wrong;
        }
    }
    EXPECT_EQ(lines, std::vector<std::string>());
}

// A bright clear window and a bright menu on top of everything leave no trace in the blur around
// them, and nothing of the effect is in them or in a cut-out.
TEST_P(BlurPictures, WholeStackAroundWhatStaysClear) {
    const SampleApplication application(
        desktop, "Clear",
        {{.area = {180, 140, 220, 150}, .colour = "#ffffff"},
         {.area = {470, 330, 120, 90}, .colour = "#ffff00", .overrideRedirect = true}});
    const Picture plain = session.stillPicture();
    const Area clear = session.frameAreaOf(application.window(0));
    const Area menu = session.areaOf(application.window(1));
    const Area cutOut{20, 40, 100, 80};
    for (const double intensity : {0.0, 0.6, 1.0}) {
        auto tree =
            EffectLook{.effectMode = "softBlur", .intensity = intensity, .liveBackdrop = true}.tree(
                width, height, scale);
        tree.mask = EvenOddMask{tree.bounds,
                                {tree.bounds,
                                 {cutOut.x / scale, (height - cutOut.bottom()) / scale,
                                  cutOut.width / scale, cutOut.height / scale}}};
        Picture expected = reference::render(beneath_, tree, scale);
        for (const Area &area : {clear, menu}) {
            expected.paste(plain.part(area), {area.x, area.y});
        }
        for (const std::string renderer : renderers) {
            useRenderer(renderer);
            const auto overlay = overlays->makeWindow(frame());
            overlay->commit(tree);
            overlay->orderBelow(application.window(0));
            std::string wrong;
            EXPECT_TRUE(eventually([&] {
                const Picture shown = session.picture();
                wrong = wrongIn(shown, expected, displayAndEdges(), 38) +
                        wrongIn(shown, expected, around(clear), 38) +
                        wrongIn(shown, expected, around(menu), 38);
                for (const Area &area : {clear, menu, cutOut}) {
                    wrong += shown.differenceFrom(expected, area);
                }
                return wrong.empty();
            })) << renderer
                << " at " << intensity << ": " << wrong;
        }
    }
    EXPECT_EQ(lines, std::vector<std::string>());
}

class LostBlurPictures : public BlurPictures {};

TEST_P(LostBlurPictures, ProcessorDrawsUntilOpenGlIsBack) {
    const auto tree = blurTree(24);
    const Picture expected = reference::render(beneath_, tree, scale);
    useRenderer("gl");
    const auto overlay = overlays->makeWindow(frame());
    overlay->commit(tree);
    overlay->orderFront();
    const auto isRight = [&] {
        return peakSignalToNoiseRatio(session.picture(), expected, wholeArea()) >= 40;
    };
    ASSERT_TRUE(eventually(isRight));
    ASSERT_EQ(lines, std::vector<std::string>());

    session.killLastClient(); // that of the thread that draws
    const SampleApplication application(desktop, "New", {{.area = {60, 60, 120, 90}}});
    EXPECT_TRUE(eventually([&] { return !lines.empty(); }));
    session.close(application.window());
    EXPECT_TRUE(eventually(isRight));
    EXPECT_THAT(lines, testing::ElementsAre("[Lumo] Live blur by OpenGL does not work: going on "
                                            "with the processor"));

    // Which is tried when something like this happens.
    desktop.startCompositor(Compositor::picomXrender);
    EXPECT_TRUE(eventually([&] { return lines.size() > 1; }));
    EXPECT_EQ(lines.back(), "[Lumo] Live blur by OpenGL works again");
    EXPECT_TRUE(eventually(isRight));
}

INSTANTIATE_TEST_SUITE_P(Stages, BlurPictures,
                         testing::Values(Stage{"AtOne", 1, Compositor::none},
                                         Stage{"AtTwo", 2, Compositor::none},
                                         Stage{"UnderXrender", 1, Compositor::picomXrender}),
                         [](const auto &stage) { return stage.param.name; });

INSTANTIATE_TEST_SUITE_P(Stages, LostBlurPictures,
                         testing::Values(Stage{"AtOne", 1, Compositor::none}),
                         [](const auto &stage) { return stage.param.name; });

} // namespace
} // namespace lumo::x11
