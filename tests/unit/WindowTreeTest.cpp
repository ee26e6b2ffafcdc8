#include "platform/x11/windows/WindowTree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

namespace lumo::x11 {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr xcb_window_t root = 1;
constexpr std::uint32_t own = 0x600000;
constexpr xcb_window_t a = 0x200001;
constexpr xcb_window_t b = 0x200002;
constexpr xcb_window_t c = 0x200003;
constexpr xcb_window_t frame = 0x400001; // of a window manager

// A tree that is told of events and gets its wanted reads from the facts of the test.
class WindowTreeTest : public testing::Test {
  protected:
    void create(xcb_window_t window, xcb_window_t parent = root) {
        xcb_create_notify_event_t event{};
        event.parent = parent;
        event.window = window;
        event.width = 100;
        event.height = 50;
        event.border_width = 2;
        tree.handle(event);
    }

    void destroy(xcb_window_t window) {
        xcb_destroy_notify_event_t event{};
        event.window = window;
        tree.handle(event);
    }

    void reparent(xcb_window_t window, xcb_window_t parent) {
        xcb_reparent_notify_event_t event{};
        event.window = window;
        event.parent = parent;
        tree.handle(event);
    }

    void configure(xcb_window_t window, xcb_window_t sibling, xcb_window_t selected = root) {
        xcb_configure_notify_event_t event{};
        event.event = selected;
        event.window = window;
        event.above_sibling = sibling;
        event.width = 120;
        event.height = 50;
        event.border_width = 2;
        tree.handle(event);
    }

    void serve(const WindowTree::Read &read) {
        for (std::uint32_t part = 1; part != 0; part <<= 1U) {
            if ((read.parts & part) != 0) {
                tree.finish(read, part, [&](WindowFacts &known) {
                    if ((part & windowPart::facts) != 0) {
                        known = facts[read.window];
                    } else if (part == windowPart::inset) {
                        tree.applyInset(read, {10, 20, 80, 20});
                    }
                });
            }
        }
    }

    void serveAll() {
        while (!tree.isSettled()) {
            for (const auto &read : tree.takeWanted().reads) {
                serve(read);
            }
        }
    }

    // A frame with a managed window inside, as a window manager makes it.
    void makeFramed(xcb_window_t client) {
        facts[client].managerState = 1;
        create(frame);
        create(client);
        reparent(client, frame);
        serveAll();
    }

    std::uint32_t partsWanted(const WindowTree::Wanted &wanted, xcb_window_t window) {
        std::uint32_t parts = 0;
        for (const auto &read : wanted.reads) {
            parts |= read.window == window ? read.parts : 0U;
        }
        return parts;
    }

    WindowTree tree{{.root = root, .clientBits = 0xffe00000, .ownClient = own}};
    std::map<xcb_window_t, WindowFacts> facts;
};

TEST_F(WindowTreeTest, ChangesOfTheStackingOrder) {
    for (const auto window : {a, b, c}) {
        create(window);
    }
    create(xcb_window_t{2});
    EXPECT_THAT(tree.stacking(), ElementsAre(a, b, c)) << "not what the server makes for itself";
    EXPECT_TRUE(tree.changes().take().stacking);
    configure(b, a);
    EXPECT_FALSE(tree.changes().take().stacking) << "where it was";
    tree.setChildren({b, frame, 2});
    EXPECT_THAT(tree.stacking(), ElementsAre(b, frame));
    EXPECT_EQ(tree.find(a), nullptr);
}

TEST_F(WindowTreeTest, DescribesTheClientOfAFrame) {
    facts[a].netName = "Title";
    makeFramed(a);
    const auto *window = tree.find(a);
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(window, tree.find(frame));
    EXPECT_EQ(window->client, a);
    EXPECT_EQ(window->title, "Title");
    EXPECT_EQ(window->geometry, (drawing::PixelRect{0, 0, 104, 54}));
    EXPECT_TRUE(window->isDescribed);
    EXPECT_TRUE(window->isManaged);

    configure(frame, XCB_NONE);
    const auto wanted = tree.takeWanted();
    EXPECT_EQ(partsWanted(wanted, a), windowPart::inset) << "another size, another place inside";
    EXPECT_EQ(partsWanted(wanted, frame), 0U);

    destroy(a);
    EXPECT_EQ(window->client, frame);
    EXPECT_FALSE(window->isManaged);
}

TEST_F(WindowTreeTest, ChoosesAmongTheClientsOfAFrame) {
    facts[b].managerState = 1;
    makeFramed(a);
    for (const auto window : {b, c}) {
        create(window);
        reparent(window, frame);
    }
    serveAll();
    const auto client = [this] { return tree.find(frame)->client; };
    EXPECT_EQ(client(), a) << "as before; c is not managed";
    tree.setActiveWindow(b);
    EXPECT_EQ(client(), b);
    tree.setActiveWindow(std::nullopt);
    EXPECT_EQ(client(), b) << "as before";
    tree.claimFrameOf(c);
    tree.setActiveWindow(a);
    EXPECT_EQ(client(), c);
    EXPECT_TRUE(tree.find(frame)->isOwn);
    destroy(c);
    EXPECT_EQ(client(), a);
    EXPECT_FALSE(tree.find(frame)->isOwn);
}

TEST_F(WindowTreeTest, UnframedWindowsAreManagedWhileAWindowManagerRuns) {
    facts[a].managerState = 1;
    create(a);
    create(own + 1);
    tree.setManagement(Management::plain);
    serveAll();
    EXPECT_TRUE(tree.find(a)->isManaged);
    EXPECT_TRUE(tree.find(own + 1)->isOwn);
    tree.setManagement(Management::none);
    EXPECT_FALSE(tree.find(a)->isManaged);
}

TEST_F(WindowTreeTest, OneReadPerPartAtATime) {
    create(a);
    create(own + 1);
    const auto first = tree.takeWanted();
    EXPECT_THAT(first.propertyAndStructureEvents, ElementsAre(a)) << "those of ours are selected";
    EXPECT_THAT(first.shapeEvents, ElementsAre(a, own + 1));
    ASSERT_EQ(first.reads.size(), 2U);
    EXPECT_EQ(partsWanted(first, a), windowPart::facts | windowPart::structure);
    tree.want(a, 1);
    EXPECT_THAT(tree.takeWanted().reads, IsEmpty()) << "the part is being read";
    EXPECT_FALSE(tree.isSettled());
    tree.want(b, 1);

    facts[a].netName = "Old";
    serve(first.reads[0]);
    EXPECT_EQ(tree.find(a)->title, "Old");
    const auto second = tree.takeWanted();
    ASSERT_EQ(partsWanted(second, a), 1U) << "it changed while it was being read";

    destroy(a);
    create(a); // another window that got the same number
    serve(second.reads[0]);
    EXPECT_EQ(tree.find(a)->title, std::nullopt);
    EXPECT_EQ(partsWanted(tree.takeWanted(), a), windowPart::facts | windowPart::structure);
}

TEST_F(WindowTreeTest, SearchesTheTopOfWindowsDeepInside) {
    create(frame);
    tree.takeWanted();
    tree.adopt(a);
    auto wanted = tree.takeWanted();
    EXPECT_THAT(wanted.propertyAndStructureEvents, ElementsAre(a));
    ASSERT_EQ(wanted.searches.size(), 1U);
    EXPECT_EQ(wanted.searches[0].ancestor, a);
    xcb_query_tree_reply_t reply{};
    reply.parent = b; // which is inside the frame
    tree.applyParent(wanted.searches[0], &reply);
    wanted = tree.takeWanted();
    ASSERT_EQ(wanted.searches.size(), 1U);
    EXPECT_EQ(wanted.searches[0].ancestor, b);
    const auto outdated = wanted.searches[0];

    reparent(a, c);
    reply.parent = frame;
    tree.applyParent(outdated, &reply);
    EXPECT_EQ(tree.find(a), nullptr) << "it has another parent by now";
    wanted = tree.takeWanted();
    ASSERT_EQ(wanted.searches.size(), 1U);
    EXPECT_EQ(wanted.searches[0].ancestor, c);
    tree.applyParent(wanted.searches[0], &reply);
    wanted = tree.takeWanted();
    ASSERT_EQ(wanted.searches.size(), 1U);
    EXPECT_EQ(wanted.searches[0].ancestor, frame);
    reply.parent = root;
    tree.applyParent(wanted.searches[0], &reply);
    EXPECT_EQ(tree.find(a), tree.find(frame));

    tree.adopt(b);
    tree.applyParent(tree.takeWanted().searches.at(0), nullptr);
    EXPECT_FALSE(tree.contains(b)) << "gone before its events were selected";
}

// Which facts make what of a window; the frame is another window where there is an inset.
TEST(WindowDescription, FollowsFromTheFacts) {
    using Type = WindowFacts::Type;
    using Minimization = MirrorWindow::Minimization;
    struct Expected {
        StackingLayer layer = StackingLayer::normal;
        bool isManaged = true;
        bool isInTaskbars = true;
        Minimization minimization = Minimization::none;
    };
    struct Case {
        const char *name;
        WindowFacts facts;
        Expected expected = {};
        bool isOverrideRedirect = false;
        bool isOwn = false;
    };
    constexpr Expected unmanaged = {.isManaged = false, .isInTaskbars = false};
    constexpr auto outsideTaskbars = [](StackingLayer layer) {
        return Expected{.layer = layer, .isInTaskbars = false};
    };
    const std::vector<Case> cases = {
        {"plain", {.managerState = 1}},
        {"withdrawn", {.managerState = 0}, unmanaged},
        {"not in task bars",
         {.skipsTaskbar = true, .managerState = 1},
         outsideTaskbars(StackingLayer::normal)},
        {"desktop",
         {.type = Type::desktop, .isAbove = true, .managerState = 1},
         outsideTaskbars(StackingLayer::desktop)},
        {"dock", {.type = Type::dock, .managerState = 1}, outsideTaskbars(StackingLayer::above)},
        {"dock kept below",
         {.type = Type::dock, .isBelow = true, .managerState = 1},
         outsideTaskbars(StackingLayer::below)},
        {"kept above", {.isAbove = true, .managerState = 1}, {.layer = StackingLayer::above}},
        {"unmanaged",
         {},
         {.layer = StackingLayer::floating, .isManaged = false, .isInTaskbars = false},
         true},
        {"an overlay", {.type = Type::floating}, unmanaged, true, true},
        {"managed in an override-redirect frame", {.managerState = 1}, {}, true},
        {"hidden or rolled up",
         {.isHidden = true, .managerState = 1},
         {.minimization = Minimization::likely}},
        {"iconic alone", {.managerState = 3}, {.minimization = Minimization::likely}},
        {"minimised",
         {.isHidden = true, .managerState = 3},
         {.minimization = Minimization::certain}},
    };
    for (const auto &each : cases) {
        SCOPED_TRACE(each.name);
        const auto window = describe({.frame = a, .isOverrideRedirect = each.isOverrideRedirect},
                                     {.client = a,
                                      .frameFacts = each.facts,
                                      .clientFacts = each.facts,
                                      .isOwn = each.isOwn});
        EXPECT_EQ(window.stackingLayer, each.expected.layer);
        EXPECT_EQ(window.isManaged, each.expected.isManaged);
        EXPECT_EQ(window.isInTaskbars, each.expected.isInTaskbars);
        EXPECT_EQ(window.minimization, each.expected.minimization);
    }
}

TEST(WindowDescription, KnowsWhatOfAFrameIsInvisible) {
    const WindowFacts frameFacts{.opacity = 0x80000000};
    WindowFacts client{.opacity = 0xffffffff, .decorations = Edges{1, 1, 20, 1}};
    MirrorWindow window{.frame = frame, .geometry = {100, 100, 234, 154}, .borderWidth = 2};
    auto management = Management::plain;
    const auto edgesWith = [&](std::optional<drawing::PixelRect> inset) {
        window = describe(window, {.client = a,
                                   .frameFacts = frameFacts,
                                   .clientFacts = client,
                                   .clientInFrame = inset,
                                   .management = management});
        return window.invisibleEdges;
    };
    EXPECT_EQ(edgesWith(std::nullopt), Edges());
    EXPECT_NEAR(window.opacity, 0.5, 1e-6) << "the frame's before the client's";
    const Edges wide{9, 9, 4, 9};
    EXPECT_EQ(edgesWith(drawing::PixelRect{10, 24, 210, 116}), wide);
    EXPECT_EQ(window.visibleArea(), (drawing::PixelRect{109, 104, 216, 141}));
    EXPECT_EQ(edgesWith(drawing::PixelRect{10, 24, 110, 116}), wide)
        << "half of a resize says nothing";
    client.shadows = {1, 2, 3, 4};
    EXPECT_EQ(edgesWith(drawing::PixelRect{1, 20, 228, 129}), client.shadows);
    EXPECT_EQ(edgesWith(drawing::PixelRect{0, 0, 230, 150}), client.shadows) << "no room for them";
    management = Management::compositing;
    client.shadows = {};
    EXPECT_EQ(edgesWith(drawing::PixelRect{0, 0, 230, 150}), (Edges{-1, -1, -20, -1}))
        << "around it";
    EXPECT_EQ(window.visibleArea(), (drawing::PixelRect{99, 80, 236, 175}));
    client.shadows = {200, 200, 0, 0};
    edgesWith(std::nullopt);
    EXPECT_EQ(window.visibleArea(), window.geometry) << "nonsense";
}

} // namespace
} // namespace lumo::x11
