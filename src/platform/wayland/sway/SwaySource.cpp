#include "platform/wayland/sway/SwaySource.h"

#include "platform/freedesktop/GlibMainLoop.h"
#include "platform/wayland/client/InputActivity.h"
#include "platform/wayland/sway/SwayTree.h"

#include <algorithm>
#include <utility>

namespace lumo::wayland::sway {

namespace {

// Whether a window that is in both lies elsewhere or has another size.
bool hasMoved(const DesktopState &before, const DesktopState &now) {
    return std::ranges::any_of(now.windows, [&](const DesktopWindow &window) {
        const auto *known = before.find(window.identifier);
        return known != nullptr && known->frame != window.frame;
    });
}

} // namespace

std::unique_ptr<SwaySource> SwaySource::open(SwayConnection &connection, InputActivity &input,
                                             freedesktop::GlibMainLoop &mainLoop) {
    const auto tree = connection.ask(MessageType::getTree);
    auto state = tree ? desktopOf(*tree) : std::nullopt;
    if (!state) {
        return nullptr;
    }
    std::unique_ptr<SwaySource> source(new SwaySource(connection, input, mainLoop));
    source->adopt(std::move(*state), Reason::event);
    source->schedule();
    return source;
}

SwaySource::SwaySource(SwayConnection &connection, InputActivity &input,
                       freedesktop::GlibMainLoop &mainLoop)
    : connection_(connection)
    , mainLoop_(mainLoop)
    , events_{connection.onEvent([this](const auto &event) { handle(event); }),
              input.onChange([this, &input] {
                  pace_.noteInput(input.isActive());
                  ask(Reason::clock);
              })} {
    pace_.noteInput(input.isActive());
}

Handle SwaySource::onChange(std::function<void()> observer) {
    return changed_.subscribe(std::move(observer));
}

void SwaySource::activate(std::uint32_t window) {
    connection_.run("[con_id=" + std::to_string(window) + "] focus");
}

// A binding may have moved or resized something, which nothing else tells of.
void SwaySource::handle(const Message &event) {
    if (event.type == MessageType::windowEvent || event.type == MessageType::workspaceEvent ||
        event.type == MessageType::bindingEvent) {
        ask(Reason::event);
    }
}

void SwaySource::ask(Reason reason) {
    if (asking_ != Asking::none) {
        asking_ = Asking::again;
        return;
    }
    asking_ = Asking::once;
    nextQuestion_.reset();
    connection_.request(
        MessageType::getTree, {},
        lifetime_.guard([this, reason, askedAt = mainLoop_.now()](const std::string &tree) {
            pace_.noteAnswer(mainLoop_.now() - askedAt);
            const bool isOld = std::exchange(asking_, Asking::none) == Asking::again;
            take(tree, reason);
            if (isOld) {
                ask(Reason::event);
            }
        }));
}

void SwaySource::take(const std::string &tree, Reason reason) {
    if (std::exchange(tree_, tree) != tree) {
        if (auto state = desktopOf(tree)) {
            adopt(std::move(*state), reason);
        }
    }
    schedule();
}

void SwaySource::followXwayland(const DesktopState &state) {
    if (std::ranges::none_of(state.windows, &DesktopWindow::isXwayland)) {
        unmanaged_.reset();
    } else if (!unmanaged_) {
        unmanaged_.emplace(connection_.process(), mainLoop_,
                           [this] { adopt(state_, Reason::event); });
    }
}

void SwaySource::adopt(DesktopState state, Reason reason) {
    followXwayland(state);
    state.unmanagedAreas = unmanaged_ ? unmanaged_->areas() : std::vector<drawing::PixelRect>();
    if (state == state_) {
        return;
    }
    if (reason == Reason::clock && hasMoved(state_, state)) {
        pace_.noteMotion(mainLoop_.now());
    }
    state_ = std::move(state);
    pace_.noteMovable(movableOf(state_));
    changed_.emit();
}

void SwaySource::schedule() {
    nextQuestion_.reset();
    if (const auto interval = pace_.interval(mainLoop_.now())) {
        nextQuestion_ = mainLoop_.after(*interval, [this] { ask(Reason::clock); });
    }
}

} // namespace lumo::wayland::sway
