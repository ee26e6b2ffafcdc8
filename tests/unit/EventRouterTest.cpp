#include "platform/x11/server/EventRouter.h"

#include "platform/x11/server/EventKinds.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace lumo::x11 {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint8_t sent = 0x80;

// As libxcb hands events out: with the full sequence number after the 32 bytes of the protocol.
template <class Event>
struct Delivered {
    union {
        xcb_generic_event_t generic{};
        Event event;
    };
    explicit Delivered(std::uint8_t responseType) { generic.response_type = responseType; }
};

class EventRouterTest : public testing::Test {
  protected:
    // Routes a notice of a window's end.
    void destroy(xcb_window_t window, std::uint8_t mark = 0) {
        Delivered<xcb_destroy_notify_event_t> notice(XCB_DESTROY_NOTIFY | mark);
        notice.event.event = 1;
        notice.event.window = window;
        router.route(notice.generic);
    }

    // A handler that notes its name.
    auto note(const std::string &name) {
        return [this, name](const auto &) { notes.push_back(name); };
    }

    std::vector<std::string> takeNotes() { return std::exchange(notes, {}); }

    EventRouter router;
    std::vector<std::string> notes;
};

TEST_F(EventRouterTest, DeliversByKindAndWindow) {
    const auto one = router.on(event::destroyNotify, 10, note("10"));
    const auto any = router.on(event::destroyNotify, note("any"));
    auto again = router.on(event::destroyNotify, 10, note("10 again"));
    const auto other = router.on(event::unmapNotify, note("unmapped"));
    destroy(10);
    EXPECT_THAT(takeNotes(), ElementsAre("any", "10", "10 again"));
    destroy(1);
    EXPECT_THAT(takeNotes(), ElementsAre("any")) << "where it was selected does not matter";
    again.reset();
    destroy(10);
    EXPECT_THAT(takeNotes(), ElementsAre("any", "10"));
}

TEST_F(EventRouterTest, HandlersComeAndGoWhileAnEventIsDelivered) {
    Handle first;
    Handle later;
    first = router.on(event::destroyNotify, 10, [&](const auto &) {
        notes.emplace_back("first");
        first.reset();
        later = router.on(event::destroyNotify, 10, note("later"));
    });
    destroy(10);
    EXPECT_THAT(takeNotes(), ElementsAre("first"));
    destroy(10);
    EXPECT_THAT(takeNotes(), ElementsAre("later"));
}

TEST_F(EventRouterTest, SentEventsSayNothingAboutTheServer) {
    std::vector<Handle> all;
    all.push_back(router.on(event::destroyNotify, note("destroyed")));
    all.push_back(router.on(event::destroyNotify, 10, note("10")));
    all.push_back(router.on(event::configureNotify, note("configured")));
    all.push_back(router.on(event::keyPress, note("key")));
    all.push_back(router.on(event::selectionNotify, note("selection")));
    all.push_back(router.on(event::clientMessage, 0, note("message")));
    all.push_back(router.on(event::expose, 0, note("expose")));
    all.push_back(router.on(event::buttonRelease, 0, note("button")));
    router.addExtension(EventSource::xfixes, 87);
    destroy(10, sent);
    for (const int type : {XCB_CONFIGURE_NOTIFY, XCB_KEY_PRESS, 87}) {
        router.route(
            Delivered<xcb_generic_event_t>(static_cast<std::uint8_t>(type | sent)).generic);
        EXPECT_THAT(takeNotes(), IsEmpty()) << type;
        router.route(Delivered<xcb_generic_event_t>(static_cast<std::uint8_t>(type)).generic);
        EXPECT_EQ(takeNotes().size(), 1U) << type;
    }
    for (const int type : {XCB_CLIENT_MESSAGE, XCB_EXPOSE, XCB_BUTTON_RELEASE}) {
        router.route(
            Delivered<xcb_generic_event_t>(static_cast<std::uint8_t>(type | sent)).generic);
    }
    EXPECT_THAT(takeNotes(), ElementsAre("message", "expose", "button"));
}

} // namespace
} // namespace lumo::x11
