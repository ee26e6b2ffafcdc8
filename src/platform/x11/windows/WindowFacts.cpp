#include "platform/x11/windows/WindowFacts.h"

#include "platform/x11/server/Connection.h"
#include "platform/x11/server/PropertyReply.h"

#include <algorithm>
#include <string_view>

namespace lumo::x11 {

namespace {

// In the order of WindowProperties' indices.
enum WindowProperty : unsigned {
    netNameIndex,
    nameIndex,
    classIndex,
    processIndex,
    opacityIndex,
    typeIndex,
    stateIndex,
    managerIndex,
    desktopIndex,
    shadowsIndex,
    decorationsIndex,
    transientIndex,
};

constexpr auto propertyNames = std::to_array<std::string_view>({
    "_NET_WM_NAME",
    "WM_NAME",
    "WM_CLASS",
    "_NET_WM_PID",
    "_NET_WM_WINDOW_OPACITY",
    "_NET_WM_WINDOW_TYPE",
    "_NET_WM_STATE",
    "WM_STATE",
    "_NET_WM_DESKTOP",
    "_GTK_FRAME_EXTENTS",
    "_NET_FRAME_EXTENTS",
    "WM_TRANSIENT_FOR",
});
static_assert(propertyNames.size() == WindowProperties::count);

constexpr std::array<std::string_view, 6> stateNames = {
    "_NET_WM_STATE_ABOVE",  "_NET_WM_STATE_STAYS_ON_TOP", "_NET_WM_STATE_BELOW",
    "_NET_WM_STATE_HIDDEN", "_NET_WM_STATE_SKIP_TASKBAR", "UTF8_STRING",
};

constexpr std::array<std::pair<std::string_view, WindowFacts::Type>, 14> knownTypes = {{
    {"_NET_WM_WINDOW_TYPE_DESKTOP", WindowFacts::Type::desktop},
    {"_NET_WM_WINDOW_TYPE_DOCK", WindowFacts::Type::dock},
    {"_NET_WM_WINDOW_TYPE_MENU", WindowFacts::Type::floating},
    {"_NET_WM_WINDOW_TYPE_DROPDOWN_MENU", WindowFacts::Type::floating},
    {"_NET_WM_WINDOW_TYPE_POPUP_MENU", WindowFacts::Type::floating},
    {"_NET_WM_WINDOW_TYPE_TOOLTIP", WindowFacts::Type::floating},
    {"_NET_WM_WINDOW_TYPE_NOTIFICATION", WindowFacts::Type::floating},
    {"_NET_WM_WINDOW_TYPE_COMBO", WindowFacts::Type::floating},
    {"_NET_WM_WINDOW_TYPE_DND", WindowFacts::Type::floating},
    {"_NET_WM_WINDOW_TYPE_NORMAL", WindowFacts::Type::normal},
    {"_NET_WM_WINDOW_TYPE_TOOLBAR", WindowFacts::Type::normal},
    {"_NET_WM_WINDOW_TYPE_UTILITY", WindowFacts::Type::normal},
    {"_NET_WM_WINDOW_TYPE_SPLASH", WindowFacts::Type::normal},
    {"_NET_WM_WINDOW_TYPE_DIALOG", WindowFacts::Type::normal},
}};

// Longer titles are cut; in units of four bytes, as are all lengths of property requests.
constexpr std::uint32_t longestProperty = 1024;

bool contains(std::span<const xcb_atom_t> atoms, xcb_atom_t atom) {
    return std::find(atoms.begin(), atoms.end(), atom) != atoms.end();
}

// Edges as the property lists them; absent when it holds nonsense.
std::optional<Edges> edgesOf(std::span<const std::uint32_t> values) {
    constexpr std::uint32_t widest = 1000;
    if (values.size() < 4 || *std::max_element(values.begin(), values.end()) > widest) {
        return std::nullopt;
    }
    return Edges{static_cast<int>(values[0]), static_cast<int>(values[1]),
                 static_cast<int>(values[2]), static_cast<int>(values[3])};
}

} // namespace

std::optional<std::string> WindowFacts::title() const {
    return netName ? netName : name;
}

std::int32_t WindowFacts::processIdentifier() const {
    return connectedProcess != 0 ? connectedProcess : statedProcess;
}

StackingLayer stackingLayerOf(const WindowFacts &facts, bool isLeftAlone) {
    using Type = WindowFacts::Type;
    if (facts.type == Type::desktop) {
        return StackingLayer::desktop;
    }
    if (facts.type == Type::floating || isLeftAlone) {
        return StackingLayer::floating;
    }
    if (facts.isBelow) {
        return StackingLayer::below;
    }
    return facts.type == Type::dock || facts.isAbove ? StackingLayer::above : StackingLayer::normal;
}

WindowProperties::WindowProperties(Connection &connection)
    : connection_(connection) {
    connection.internAtoms(propertyNames);
    connection.internAtoms(stateNames);
    std::vector<std::string_view> typeNames;
    typeNames.reserve(knownTypes.size());
    for (const auto &[typeName, type] : knownTypes) {
        typeNames.push_back(typeName);
    }
    connection.internAtoms(typeNames);

    for (unsigned i = 0; i < count; ++i) {
        atoms_[i] = connection.atom(propertyNames[i]);
    }
    for (const auto &[typeName, type] : knownTypes) {
        types_.emplace_back(connection.atom(typeName), type);
    }
    utf8String_ = connection.atom("UTF8_STRING");
    stateAbove_ = connection.atom("_NET_WM_STATE_ABOVE");
    stateStaysOnTop_ = connection.atom("_NET_WM_STATE_STAYS_ON_TOP");
    stateBelow_ = connection.atom("_NET_WM_STATE_BELOW");
    stateHidden_ = connection.atom("_NET_WM_STATE_HIDDEN");
    stateSkipTaskbar_ = connection.atom("_NET_WM_STATE_SKIP_TASKBAR");
}

std::optional<unsigned> WindowProperties::indexOf(xcb_atom_t property) const {
    const auto found = std::find(atoms_.begin(), atoms_.end(), property);
    if (found == atoms_.end()) {
        return std::nullopt;
    }
    return static_cast<unsigned>(found - atoms_.begin());
}

unsigned WindowProperties::managerStateIndex() {
    return managerIndex;
}

xcb_get_property_cookie_t WindowProperties::request(xcb_window_t window, unsigned index) const {
    return xcb_get_property(connection_, 0, window, atoms_[index], XCB_GET_PROPERTY_TYPE_ANY, 0,
                            longestProperty);
}

void WindowProperties::apply(WindowFacts &facts, unsigned index,
                             const xcb_get_property_reply_t *reply) const {
    switch (index) {
    case netNameIndex:
        facts.netName = text(reply, utf8String_);
        break;
    case nameIndex:
        facts.name = text(reply, utf8String_);
        break;
    case classIndex: {
        const auto both = bytes(reply);
        const auto first = both.find('\0');
        facts.instanceName = utf8(both.substr(0, first), false);
        const auto rest =
            first == std::string_view::npos ? std::string_view() : both.substr(first + 1);
        facts.className = utf8(rest.substr(0, rest.find('\0')), false);
        break;
    }
    case processIndex:
        facts.statedProcess = static_cast<std::int32_t>(value32(reply).value_or(0));
        break;
    case opacityIndex:
        facts.opacity = value32(reply);
        break;
    case typeIndex:
        facts.type = typeOf(reply);
        break;
    case stateIndex:
        applyState(facts, reply);
        break;
    case managerIndex:
        facts.managerState = value32(reply);
        break;
    case desktopIndex:
        facts.desktop = value32(reply);
        break;
    case shadowsIndex:
        facts.shadows = edgesOf(values32(reply)).value_or(Edges());
        break;
    case decorationsIndex:
        facts.decorations = edgesOf(values32(reply));
        break;
    case transientIndex:
        facts.transientFor = value32(reply);
        if (facts.transientFor == XCB_NONE) {
            facts.transientFor.reset();
        }
        break;
    default:
        break;
    }
}

WindowFacts::Type WindowProperties::typeOf(const xcb_get_property_reply_t *reply) const {
    // A window lists its types by preference; the first that is known counts.
    for (const auto atom : values32(reply)) {
        const auto known = std::find_if(types_.begin(), types_.end(),
                                        [atom](const auto &entry) { return entry.first == atom; });
        if (known != types_.end()) {
            return known->second;
        }
    }
    return WindowFacts::Type::normal;
}

void WindowProperties::applyState(WindowFacts &facts, const xcb_get_property_reply_t *reply) const {
    const auto states = values32(reply);
    facts.isAbove = contains(states, stateAbove_) || contains(states, stateStaysOnTop_);
    facts.isBelow = contains(states, stateBelow_);
    facts.isHidden = contains(states, stateHidden_);
    facts.skipsTaskbar = contains(states, stateSkipTaskbar_);
}

} // namespace lumo::x11
