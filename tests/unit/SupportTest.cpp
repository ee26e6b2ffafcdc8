#include "support/Geometry.h"
#include "support/Published.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

namespace lumo {
namespace {

using testing::ElementsAre;

TEST(Published, NewValueIsAnnouncedBeforeItIsStored) {
    Published<int> number(1);
    std::vector<std::pair<int, int>> received; // argument, stored value at that moment
    const auto subscription =
        number.subscribe([&](int value) { received.emplace_back(value, number.value()); });
    number.set(2);
    number.set(2);
    EXPECT_THAT(received, ElementsAre(std::pair(1, 1), std::pair(2, 1), std::pair(2, 2)));
    EXPECT_EQ(number.value(), 2);
}

TEST(Published, ObserversComeAndGoDuringAnAnnouncement) {
    auto number = std::make_unique<Published<int>>(0);
    std::vector<std::string> received;
    Subscription second;
    Subscription late;
    const auto first = number->subscribeToChanges([&](int) {
        received.emplace_back("first");
        second.reset();
        late = number->subscribeToChanges([&](int) { received.emplace_back("late"); });
    });
    second = number->subscribeToChanges([&](int) { received.emplace_back("second"); });
    const auto third = number->subscribeToChanges([&](int) { received.emplace_back("third"); });
    number->set(1);
    EXPECT_THAT(received, ElementsAre("first", "third"));
    number.reset();
    second.reset(); // outliving the published value is harmless
}

TEST(Signal, EmitWithinAnEmit) {
    Signal<int> signal;
    std::vector<std::string> received;
    Handle second;
    const auto first = signal.subscribe([&](int depth) {
        received.push_back("first " + std::to_string(depth));
        if (depth == 0) {
            signal.emit(1);
            second.reset();
        }
    });
    second =
        signal.subscribe([&](int depth) { received.push_back("second " + std::to_string(depth)); });
    const auto third =
        signal.subscribe([&](int depth) { received.push_back("third " + std::to_string(depth)); });
    signal.emit(0);
    EXPECT_THAT(received, ElementsAre("first 0", "first 1", "second 1", "third 1", "third 0"));
    received.clear();
    signal.emit(2);
    EXPECT_THAT(received, ElementsAre("first 2", "third 2"));
}

TEST(Handle, OneReleaseOnDestructionMoveAndAssignment) {
    int releases = 0;
    const auto release = [&] { ++releases; };
    {
        Handle handle(release);
        Handle moved = std::move(handle);
        EXPECT_FALSE(handle); // NOLINT(bugprone-use-after-move): empty is what is asked for
        EXPECT_EQ(releases, 0);
        moved = Handle(release);
        EXPECT_EQ(releases, 1);
    }
    EXPECT_EQ(releases, 2);
}

TEST(Geometry, IntersectionInsetAndRounding) {
    const Rect display{0, 0, 1920, 1080};
    EXPECT_EQ((Rect{-10, 10, 20.5, 20}).intersection(display), (Rect{0, 10, 10.5, 20}));
    EXPECT_TRUE((Rect{1920, 0, 10, 10}).intersection(display).isEmpty());
    EXPECT_FALSE((Rect{1920, 0, 10, 10}).intersection(display).isNull());
    EXPECT_TRUE((Rect{1921, 0, 10, 10}).intersection(display).isNull());
    EXPECT_TRUE(Rect::null().intersection(display).isNull());
    EXPECT_EQ((Rect{0, 200, 200, 600}).inset(-4, -4), (Rect{-4, 196, 208, 608}));
    EXPECT_TRUE((Rect{0, 0, 4, 4}).inset(3, 0).isNull());
    EXPECT_EQ((Rect{-0.5, 1.25, 2, 2}).integral(), (Rect{-1, 1, 3, 3}));
    EXPECT_EQ(describe({10, -20.5, 300, 0.25}), "{{10, -20.5}, {300, 0.25}}");
}

} // namespace
} // namespace lumo
