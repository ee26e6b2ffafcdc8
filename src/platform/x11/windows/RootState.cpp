#include "platform/x11/windows/RootState.h"

#include "platform/x11/server/Connection.h"
#include "platform/x11/server/EventKinds.h"
#include "platform/x11/windows/MirrorChange.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>
#include <utility>

namespace lumo::x11 {

namespace {

// The properties that are watched, in the order of their names below.
enum RootProperty : unsigned {
    activeWindowIndex,
    currentDesktopIndex,
    supportingCheckIndex,
    supportedIndex,
    clientListIndex,
    wallpaperIndex,
    setWallpaperIndex,
};

constexpr auto names = std::to_array<std::string_view>({
    "_NET_ACTIVE_WINDOW",
    "_NET_CURRENT_DESKTOP",
    "_NET_SUPPORTING_WM_CHECK",
    "_NET_SUPPORTED",
    "_NET_CLIENT_LIST",
    "_XROOTPMAP_ID",
    "ESETROOT_PMAP_ID",
});
static_assert(names.size() == setWallpaperIndex + 1);

constexpr std::uint32_t wallpaperBits = 1U << wallpaperIndex | 1U << setWallpaperIndex;
constexpr std::uint32_t readBits = (1U << names.size()) - 1 - wallpaperBits;

// Beside the properties: the owner of the compositing managers' selection.
constexpr std::uint32_t compositorBit = 1U << names.size();

// Longer lists are cut.
constexpr std::uint32_t longestRootProperty = 65536;

} // namespace

RootState::RootState(Connection &connection, Note note)
    : connection_(connection)
    , note_(std::move(note))
    , utf8String_(connection.atom("UTF8_STRING"))
    , managerNameAtom_(connection.atom("_NET_WM_NAME"))
    , replies_(connection)
    , rootEvents_(
          connection.events().on(event::propertyNotify, connection.root(),
                                 [this](const auto &property) { handleProperty(property.atom); }))
    , compositorSelection_(connection, [this](xcb_window_t) { reads_.want(compositorBit); }) {
    connection.internAtoms(names);
    for (const auto name : names) {
        atoms_.push_back(connection.atom(name));
    }
    reads_.want(readBits);
    if (connection.extensions().xfixes) { // without it the reading would go stale
        reads_.want(compositorBit);
    }
}

void RootState::requestCompositor() {
    replies_.add<xcb_get_selection_owner_reply_t>(
        compositorSelection_.requestOwner(), [this](const auto *reply) {
            reads_.finished(compositorBit);
            const auto before = management();
            compositor_ = reply != nullptr ? reply->owner : XCB_NONE;
            if (management() != before) {
                note_(&MirrorChange::appearance);
            }
        });
}

Management RootState::management() const {
    if (!isWindowManagerRunning()) {
        return Management::none;
    }
    const auto clientBits = ~connection_.setup().resource_id_mask;
    const bool isCompositing =
        compositor_ != XCB_NONE && ((compositor_ ^ managerWindow_) & clientBits) == 0;
    return isCompositing ? Management::compositing : Management::plain;
}

void RootState::handleProperty(xcb_atom_t property) {
    const auto found = std::find(atoms_.begin(), atoms_.end(), property);
    if (found == atoms_.end()) {
        return;
    }
    const auto bit = 1U << static_cast<unsigned>(found - atoms_.begin());
    if ((bit & wallpaperBits) != 0) {
        note_(&MirrorChange::wallpaper);
    } else {
        reads_.want(bit);
    }
}

void RootState::requestReads() {
    const auto now = reads_.begin();
    for (unsigned index = 0; index < names.size(); ++index) {
        if ((now & 1U << index) == 0) {
            continue;
        }
        replies_.add<xcb_get_property_reply_t>(
            xcb_get_property(connection_, 0, connection_.root(), atoms_[index],
                             XCB_GET_PROPERTY_TYPE_ANY, 0, longestRootProperty),
            [this, index](const auto *reply) {
                reads_.finished(1U << index);
                apply(index, reply);
            });
    }
    if ((now & compositorBit) != 0) {
        requestCompositor();
    }
}

bool RootState::isSettled() const {
    return reads_.isIdle() && replies_.isEmpty();
}

bool RootState::namesActiveWindow() const {
    return activeWindow() || supports(atoms_[activeWindowIndex]);
}

std::optional<xcb_window_t> RootState::activeWindow() const {
    return isWindowManagerRunning() ? activeWindow_ : std::nullopt;
}

bool RootState::supports(xcb_atom_t hint) const {
    return isWindowManagerRunning() &&
           std::binary_search(supported_.begin(), supported_.end(), hint);
}

void RootState::apply(unsigned index, const xcb_get_property_reply_t *reply) {
    switch (index) {
    case activeWindowIndex: {
        auto active = value32(reply);
        if (active == XCB_NONE) {
            active.reset();
        }
        if (std::exchange(activeWindow_, active) != active) {
            note_(&MirrorChange::activeWindow);
        }
        break;
    }
    case currentDesktopIndex: {
        const auto desktop = value32(reply);
        if (std::exchange(currentDesktop_, desktop) != desktop) {
            note_(&MirrorChange::currentDesktop);
        }
        break;
    }
    case supportingCheckIndex:
        applyManagerCandidate(value32(reply).value_or(XCB_NONE));
        break;
    case supportedIndex: {
        const auto atoms = values32(reply);
        std::vector<xcb_atom_t> supported(atoms.begin(), atoms.end());
        std::sort(supported.begin(), supported.end());
        if (std::exchange(supported_, supported) != supported && isWindowManagerRunning()) {
            note_(&MirrorChange::windowManager);
        }
        break;
    }
    case clientListIndex: {
        const auto windows = values32(reply);
        clients_.assign(windows.begin(), windows.end());
        break;
    }
    default:
        break;
    }
}

void RootState::applyManagerCandidate(xcb_window_t candidate) {
    managerCandidate_ = candidate;
    candidateEvents_ = {};
    if (candidate == XCB_NONE) {
        setManager(XCB_NONE, {});
        return;
    }
    if (!connection_.isOwn(candidate)) {
        const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
        xcb_change_window_attributes(connection_, candidate, XCB_CW_EVENT_MASK, &mask);
    }
    auto &events = connection_.events();
    candidateEvents_ = {events.on(event::propertyNotify, candidate,
                                  [this](const auto &property) {
                                      if (property.atom == managerNameAtom_ ||
                                          property.atom == atoms_[supportingCheckIndex]) {
                                          reads_.want(1U << supportingCheckIndex);
                                      }
                                  }),
                        // What a manager leaves behind in the root's properties is no longer true.
                        events.on(event::destroyNotify, candidate,
                                  [this](const auto &) { applyManagerCandidate(XCB_NONE); })};
    readManager();
}

void RootState::readManager() {
    const auto candidate = managerCandidate_;
    const auto isConfirmed = std::make_shared<bool>(false);
    replies_.add<xcb_get_property_reply_t>(xcb_get_property(connection_, 0, candidate,
                                                            atoms_[supportingCheckIndex],
                                                            XCB_GET_PROPERTY_TYPE_ANY, 0, 1),
                                           [candidate, isConfirmed](const auto *reply) {
                                               *isConfirmed = value32(reply) == candidate;
                                           });
    replies_.add<xcb_get_property_reply_t>(
        xcb_get_property(connection_, 0, candidate, managerNameAtom_, XCB_GET_PROPERTY_TYPE_ANY, 0,
                         64),
        [this, candidate, isConfirmed](const auto *reply) {
            if (candidate != managerCandidate_) {
                return;
            }
            // The property may have outlived its manager, and the window's number may be in use
            // for something else by now; hence the confirmation.
            if (*isConfirmed) {
                setManager(candidate, text(reply, utf8String_).value_or(""));
            } else {
                setManager(XCB_NONE, {});
            }
        });
}

void RootState::setManager(xcb_window_t window, const std::string &name) {
    if (window == managerWindow_ && name == managerName_) {
        return;
    }
    managerWindow_ = window;
    managerName_ = name;
    note_(&MirrorChange::windowManager);
    if (activeWindow_) {
        note_(&MirrorChange::activeWindow);
    }
}

} // namespace lumo::x11
