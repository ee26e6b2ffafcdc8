#include "overlay/ReferenceWindow.h"

#include <gmock/gmock.h>

#include <vector>

namespace lumo {
namespace {

constexpr std::int32_t editor = 1;
constexpr std::int32_t browser = 2;
constexpr Rect laptop{0, 0, 1440, 900};

// Windows front to back, numbered from 1. Their bounds have y down from the laptop's top.
class Candidates {
  public:
    Candidates &add(std::int32_t owner, const Rect &bounds, std::optional<std::string> name = {}) {
        const auto number = static_cast<std::uint32_t>(windows_.size() + 1);
        auto &window = windows_.emplace_back();
        window.id = window.windowID = number;
        window.ownerPID = owner;
        window.bundleID = owner == editor ? "org.example.Editor" : "org.example.Web";
        window.zOrder = number;
        window.bounds = bounds;
        window.area = bounds.area();
        window.name = std::move(name);
        return *this;
    }

    Candidates &atOrder(std::int64_t zOrder) {
        windows_.back().zOrder = zOrder;
        return *this;
    }

    CandidateWindows list() const {
        CandidateWindows pointers;
        for (const auto &window : windows_) {
            pointers.push_back(&window);
        }
        return pointers;
    }

  private:
    std::vector<WindowDescriptor> windows_;
};

std::optional<std::uint32_t> numberOf(const std::optional<ScreenCandidate> &candidate) {
    return candidate ? std::optional(candidate->window->windowID) : std::nullopt;
}

std::optional<std::uint32_t> onLaptop(const Candidates &candidates) {
    return numberOf(frontmostWindowOnScreen(candidates.list(), laptop, laptop.height));
}

std::optional<std::uint32_t> coverOnLaptop(const Candidates &candidates) {
    return numberOf(frontmostCoverWindowOnScreen(candidates.list(), "org.example.Editor", laptop,
                                                 laptop.height));
}

TEST(EffectiveFrontWindow, WindowToWorkInElseTheLargest) {
    const Rect large{0, 0, 800, 600};
    const Rect small{0, 0, 299, 200};
    struct Case {
        const char *what = nullptr;
        Candidates candidates;
        std::optional<std::uint32_t> frontWindowID;
        std::optional<std::int32_t> frontPID;
        std::optional<std::uint32_t> expected;
    };
    const std::vector<Case> cases = {
        {"the focused window", Candidates().add(browser, large).add(editor, large), 2, editor, 2},
        {"a focused window that is no candidate", Candidates().add(editor, large), 9, editor, 1},
        {"a focused window that is too small", Candidates().add(editor, small).add(editor, large),
         1, editor, 2},
        {"a focused window of exactly 300 x 200",
         Candidates().add(editor, {0, 0, 300, 200}).add(editor, large), 1, editor, 1},
        {"a dialog in front of its document",
         Candidates().add(editor, large, "Save dialog").add(editor, large, "Report"), 1, editor, 2},
        {"only a dialog and a smaller window",
         Candidates().add(editor, small).add(editor, large, "Save dialog"), 2, editor, 2},
        {"equally large ones", Candidates().add(editor, small).add(editor, small), 9, editor, 1},
        {"another application's windows only", Candidates().add(browser, large), 9, editor, {}},
        {"no front process", Candidates().add(browser, large), {}, {}, {}},
        {"no window at all", Candidates(), 1, editor, {}},
    };
    for (const auto &[what, candidates, frontWindowID, frontPID, expected] : cases) {
        EXPECT_EQ(effectiveFrontWindow(false, frontWindowID, candidates.list(), frontPID), expected)
            << what;
    }
    const auto both = Candidates().add(browser, large).add(editor, large);
    EXPECT_EQ(effectiveFrontWindow(true, 2, both.list(), browser), 1U)
        << "Lumo's own window never counts as focused";
}

TEST(ReferenceWindow, FrontmostThatTakesEnoughOfTheScreen) {
    const Rect large{100, 100, 800, 600};
    struct Case {
        const char *what = nullptr;
        Candidates candidates;
        std::optional<std::uint32_t> expected;
    };
    const std::vector<Case> cases = {
        {"nothing", Candidates(), {}},
        {"the frontmost of two", Candidates().add(editor, large).add(browser, large), 1},
        {"the frontmost by order, not by place in the list",
         Candidates().add(editor, large).atOrder(5).add(browser, large).atOrder(2), 2},
        {"the earlier one of the same order",
         Candidates().add(editor, large).atOrder(3).add(browser, large).atOrder(3), 1},
        {"a palette before the document",
         Candidates().add(editor, large, "Tool Palette Panel").add(editor, large), 2},
        {"a small window before a large one",
         Candidates().add(editor, {0, 0, 299, 700}).add(browser, large), 2},
        {"only small ones: the frontmost of them",
         Candidates().add(editor, {0, 0, 200, 150}).add(browser, {0, 0, 250, 190}), 1},
        {"too little of a large one",
         Candidates().add(editor, {1440 - 279, 0, 800, 600}).add(browser, large), 2},
        {"just enough of a large one",
         Candidates().add(editor, {1440 - 280, 0, 800, 600}).add(browser, large), 1},
        {"just enough of it in height",
         Candidates().add(editor, {0, 900 - 180, 800, 600}).add(browser, large), 1},
        {"too little of it in height",
         Candidates().add(editor, {0, 900 - 179, 800, 600}).add(browser, large), 2},
        {"fewer than 16000 square points", Candidates().add(editor, {0, 0, 1000, 15.9}), {}},
        {"16000 square points", Candidates().add(editor, {0, 0, 1000, 16}), 1},
        {"beside the screen", Candidates().add(editor, {1440, 0, 800, 600}), {}},
    };
    for (const auto &[what, candidates, expected] : cases) {
        EXPECT_EQ(onLaptop(candidates), expected) << what;
    }

    const Candidates partly = Candidates().add(editor, {-100.5, 0, 800, 600});
    const auto choice = frontmostWindowOnScreen(partly.list(), laptop, laptop.height).value();
    EXPECT_EQ(choice.local, (Rect{0, 300, 700, 600})) << "rounded outwards, y up";
    EXPECT_DOUBLE_EQ(choice.coverage, 699.5 * 600 / (1440 * 900));
}

TEST(ReferenceWindow, LargerScreenNeedsMore) {
    const Rect cinema{0, 0, 3840, 2160}; // 614.4 x 345.6 must be visible
    for (const auto &[size, expected] :
         {std::pair(Size{615, 346}, 1U), {Size{614, 346}, 2U}, {Size{615, 345}, 2U}}) {
        const auto candidates = Candidates()
                                    .add(editor, {0, 0, size.width, size.height})
                                    .add(browser, {0, 0, 2000, 2000});
        EXPECT_EQ(numberOf(frontmostWindowOnScreen(candidates.list(), cinema, cinema.height)),
                  expected)
            << size.width << " x " << size.height;
    }
}

TEST(CoverWindow, FrontmostAlsoWhenLittleIsVisible) {
    const Rect large{100, 100, 800, 600};
    EXPECT_EQ(coverOnLaptop(Candidates().add(browser, large)), std::nullopt);
    EXPECT_EQ(coverOnLaptop(Candidates().add(browser, large).add(editor, large)), 2U);
    EXPECT_EQ(coverOnLaptop(Candidates().add(editor, large, "Inspector panel").add(editor, large)),
              2U);
    EXPECT_EQ(coverOnLaptop(Candidates().add(editor, {1430, 0, 800, 1200}).add(editor, large)), 2U)
        << "9000 square points are too few";
    EXPECT_EQ(coverOnLaptop(Candidates().add(editor, {1420, 0, 800, 1200}).add(editor, large)), 1U)
        << "18000 are enough, with no least width on the screen";
    EXPECT_EQ(coverOnLaptop(Candidates().add(editor, {0, 0, 120, 100})), 1U);
    EXPECT_EQ(coverOnLaptop(Candidates().add(editor, {0, 0, 119.9, 100})), std::nullopt);
}

} // namespace
} // namespace lumo
