#include "platform/wayland/kwin/PlasmaSource.h"

#include "platform/wayland/client/Connection.h"

#include <plasma-virtual-desktop-client-protocol.h>
#include <plasma-window-management-client-protocol.h>

#include <algorithm>
#include <utility>

namespace lumo::wayland::kwin {

namespace {

// From version 12 on the stacking order is also an event with a UUID for each window, by which KWin
// ends the connection when there are more than a hundred of them.
constexpr std::uint32_t managerVersion = 11;

const char *orEmpty(const char *text) {
    return text != nullptr ? text : "";
}

} // namespace

// A window's protocol object. Its destruction by one of its own events is allowed.
struct PlasmaSource::WindowObject {
    PlasmaSource &source;
    std::uint32_t identifier;
    ProtocolPointer<org_kde_plasma_window> object;

    PlasmaWindow &window() const { return source.desktop_.windows.at(identifier); }

    static WindowObject &of(void *data) { return *static_cast<WindowObject *>(data); }

    static PlasmaWindow &change(void *data) {
        auto &self = of(data);
        self.source.isStale_ = true;
        return self.window();
    }

    void listen();
};

// A virtual desktop's.
struct PlasmaSource::SpaceObject {
    PlasmaSource &source;
    std::string identifier;
    ProtocolPointer<org_kde_plasma_virtual_desktop> object;

    void setActive(bool isActive) const {
        source.isStale_ = true;
        if (isActive) {
            source.desktop_.currentDesktops.insert(identifier);
        } else {
            source.desktop_.currentDesktops.erase(identifier);
        }
    }

    void listen();
};

void PlasmaSource::WindowObject::listen() {
    using Object = org_kde_plasma_window;
    static const org_kde_plasma_window_listener listener = {
        .title_changed = [](void *data, Object *,
                            const char *title) { change(data).title = orEmpty(title); },
        .app_id_changed = [](void *data, Object *,
                             const char *name) { change(data).application = orEmpty(name); },
        .state_changed = [](void *data, Object *,
                            std::uint32_t state) { change(data).state = state; },
        .virtual_desktop_changed = [](void *, Object *, std::int32_t) {},
        .themed_icon_name_changed = [](void *, Object *, const char *) {},
        .unmapped = [](void *data, Object *) { of(data).source.removeWindow(of(data).identifier); },
        .initial_state = [](void *data, Object *) { change(data).isComplete = true; },
        .parent_window =
            [](void *data, Object *, Object *parent) {
                change(data).parent =
                    parent != nullptr
                        ? std::optional(of(org_kde_plasma_window_get_user_data(parent)).identifier)
                        : std::nullopt;
            },
        .geometry =
            [](void *data, Object *, std::int32_t x, std::int32_t y, std::uint32_t width,
               std::uint32_t height) {
                change(data).frame = {x, y, static_cast<int>(width), static_cast<int>(height)};
            },
        .icon_changed = [](void *, Object *) {},
        .pid_changed =
            [](void *data, Object *, std::uint32_t process) {
                change(data).process = static_cast<std::int32_t>(process);
            },
        .virtual_desktop_entered = [](void *data, Object *,
                                      const char *place) { change(data).desktops.insert(place); },
        .virtual_desktop_left = [](void *data, Object *,
                                   const char *place) { change(data).desktops.erase(place); },
        .application_menu = [](void *, Object *, const char *, const char *) {},
        .activity_entered = [](void *, Object *, const char *) {},
        .activity_left = [](void *, Object *, const char *) {},
        .resource_name_changed = [](void *, Object *, const char *) {}};
    org_kde_plasma_window_add_listener(object.get(), &listener, this);
}

void PlasmaSource::SpaceObject::listen() {
    using Object = org_kde_plasma_virtual_desktop;
    static const org_kde_plasma_virtual_desktop_listener listener = {
        .desktop_id = [](void *, Object *, const char *) {},
        .name = [](void *, Object *, const char *) {},
        .activated = [](void *data,
                        Object *) { static_cast<SpaceObject *>(data)->setActive(true); },
        .deactivated = [](void *data,
                          Object *) { static_cast<SpaceObject *>(data)->setActive(false); },
        .done = [](void *, Object *) {},
        .removed = [](void *, Object *) {}};
    org_kde_plasma_virtual_desktop_add_listener(object.get(), &listener, this);
}

bool PlasmaSource::isOffered(const Connection &connection) {
    return connection.offers(org_kde_plasma_window_management_interface);
}

PlasmaSource::PlasmaSource(Connection &connection)
    : manager_(connection.bind<org_kde_plasma_window_management>(
          org_kde_plasma_window_management_interface, managerVersion))
    , spaceManager_(connection.bind<org_kde_plasma_virtual_desktop_management>(
          org_kde_plasma_virtual_desktop_management_interface, 1)) {
    followManager();
    if (spaceManager_) {
        followSpaces();
    }
    connection.roundTrip(); // which windows and desktops there are
    connection.roundTrip(); // what is to be known of them
    update();
    dispatches_ = connection.onDispatched([this] { update(); });
}

PlasmaSource::~PlasmaSource() = default;

void PlasmaSource::followManager() {
    using Object = org_kde_plasma_window_management;
    static const org_kde_plasma_window_management_listener listener = {
        .show_desktop_changed =
            [](void *data, Object *, std::uint32_t state) {
                auto &self = *static_cast<PlasmaSource *>(data);
                self.desktop_.showsDesktop =
                    state == ORG_KDE_PLASMA_WINDOW_MANAGEMENT_SHOW_DESKTOP_ENABLED;
                self.isStale_ = true;
            },
        .window =
            [](void *data, Object *, std::uint32_t identifier) {
                static_cast<PlasmaSource *>(data)->addWindow(identifier);
            },
        .stacking_order_changed =
            [](void *data, Object *, wl_array *identifiers) {
                auto &self = *static_cast<PlasmaSource *>(data);
                const auto *first = static_cast<const std::uint32_t *>(identifiers->data);
                self.desktop_.stacking.assign(first, first + identifiers->size / sizeof *first);
                self.isStale_ = true;
            },
        .stacking_order_uuid_changed = [](void *, Object *, const char *) {},
        .window_with_uuid = [](void *, Object *, std::uint32_t, const char *) {}};
    org_kde_plasma_window_management_add_listener(manager_.get(), &listener, this);
}

void PlasmaSource::followSpaces() {
    using Object = org_kde_plasma_virtual_desktop_management;
    static const org_kde_plasma_virtual_desktop_management_listener listener = {
        .desktop_created =
            [](void *data, Object *, const char *identifier, std::uint32_t) {
                static_cast<PlasmaSource *>(data)->addSpace(identifier);
            },
        .desktop_removed =
            [](void *data, Object *, const char *identifier) {
                auto &self = *static_cast<PlasmaSource *>(data);
                self.spaces_.erase(identifier);
                self.desktop_.currentDesktops.erase(identifier);
                self.isStale_ = true;
            },
        .done = [](void *, Object *) {},
        .rows = [](void *, Object *, std::uint32_t) {}};
    org_kde_plasma_virtual_desktop_management_add_listener(spaceManager_.get(), &listener, this);
}

void PlasmaSource::addWindow(std::uint32_t identifier) {
    if (windows_.contains(identifier)) {
        return;
    }
    desktop_.windows[identifier] = {};
    auto &added = windows_[identifier];
    added = std::make_unique<WindowObject>(
        WindowObject{*this, identifier,
                     ProtocolPointer<org_kde_plasma_window>(
                         org_kde_plasma_window_management_get_window(manager_.get(), identifier))});
    added->listen();
}

void PlasmaSource::removeWindow(std::uint32_t identifier) {
    desktop_.windows.erase(identifier);
    windows_.erase(identifier);
    isStale_ = true;
}

void PlasmaSource::addSpace(const std::string &identifier) {
    auto &added = spaces_[identifier];
    added = std::make_unique<SpaceObject>(
        SpaceObject{*this, identifier,
                    ProtocolPointer<org_kde_plasma_virtual_desktop>(
                        org_kde_plasma_virtual_desktop_management_get_virtual_desktop(
                            spaceManager_.get(), identifier.c_str()))});
    added->listen();
}

void PlasmaSource::setFacts(const DesktopFacts &facts) {
    if (std::exchange(desktop_.facts, facts) != facts) {
        isStale_ = true;
        update();
    }
}

Handle PlasmaSource::onChange(std::function<void()> observer) {
    return changed_.subscribe(std::move(observer));
}

void PlasmaSource::activate(std::uint32_t window) {
    const auto found = windows_.find(window);
    if (found != windows_.end()) {
        org_kde_plasma_window_set_state(found->second->object.get(),
                                        ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE,
                                        ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE);
    }
}

void PlasmaSource::update() {
    if (!std::exchange(isStale_, false)) {
        return;
    }
    auto state = stateOf(desktop_);
    if (state != state_) {
        state_ = std::move(state);
        changed_.emit();
    }
}

} // namespace lumo::wayland::kwin
