#include "platform/x11/windows/MirrorWindow.h"

#include <unistd.h>
#include <xcb/xcb_icccm.h>

#include <algorithm>

namespace lumo::x11 {

namespace {

// What of a frame lies beyond what its window manager and its client say they show.
Edges invisibleEdgesOf(const MirrorWindow &window, const DescriptionSources &sources) {
    constexpr int widest = 64; // anything else is a resize of which only a half has happened
    auto edges = sources.clientFacts.shadows;
    const auto &shown = sources.clientFacts.decorations;
    if (!shown || !sources.clientInFrame) {
        return edges;
    }
    const int borders = 2 * window.borderWidth;
    const drawing::PixelRect room = {0, 0, window.geometry.width - borders,
                                     window.geometry.height - borders};
    const auto &inner = *sources.clientInFrame;
    // A window manager that composites may draw decorations around a frame without room for them.
    if (sources.management == Management::compositing && inner == room) {
        return {edges.left - shown->left, edges.right - shown->right, edges.top - shown->top,
                edges.bottom - shown->bottom};
    }
    const Edges frame = {
        std::max(inner.x - shown->left, 0), std::max(room.width - inner.maxX() - shown->right, 0),
        std::max(inner.y - shown->top, 0), std::max(room.height - inner.maxY() - shown->bottom, 0)};
    if (std::max({frame.left, frame.right, frame.top, frame.bottom}) > widest) {
        return window.invisibleEdges;
    }
    edges.left += frame.left;
    edges.right += frame.right;
    edges.top += frame.top;
    edges.bottom += frame.bottom;
    return edges;
}

// One of the two marks alone may also stand for a window of which the title bar is left.
MirrorWindow::Minimization minimizationOf(const WindowFacts &facts) {
    const bool isIconic = facts.managerState == XCB_ICCCM_WM_STATE_ICONIC;
    if (facts.isHidden && isIconic) {
        return MirrorWindow::Minimization::certain;
    }
    return facts.isHidden || isIconic ? MirrorWindow::Minimization::likely
                                      : MirrorWindow::Minimization::none;
}

} // namespace

drawing::PixelRect MirrorWindow::visibleArea() const {
    const auto &edges = invisibleEdges;
    const drawing::PixelRect area = {geometry.x + edges.left, geometry.y + edges.top,
                                     geometry.width - edges.left - edges.right,
                                     geometry.height - edges.top - edges.bottom};
    return area.width > 0 && area.height > 0 ? area : geometry;
}

bool MirrorWindow::isOfThisProgram() const {
    return !isOwn && processIdentifier == getpid();
}

MirrorWindow describe(const MirrorWindow &window, const DescriptionSources &sources) {
    const auto &facts = sources.clientFacts;
    MirrorWindow next = window;
    next.client = sources.client;
    next.isDescribed = sources.isComplete;
    next.isOwn = sources.isOwn;
    // The mark stays on windows that a killed window manager leaves behind.
    next.isManaged =
        facts.isManaged() && (next.client != next.frame || sources.management != Management::none);
    next.minimization = minimizationOf(facts);
    next.type = facts.type;
    // What is made on this connection are overlays, ordered among ordinary windows.
    next.stackingLayer = next.isOwn
                             ? StackingLayer::normal
                             : stackingLayerOf(facts, next.isOverrideRedirect && !next.isManaged);
    next.isInTaskbars = next.isManaged && !facts.skipsTaskbar &&
                        facts.type != WindowFacts::Type::dock &&
                        facts.type != WindowFacts::Type::desktop;
    next.invisibleEdges = invisibleEdgesOf(window, sources);
    next.transientFor = facts.transientFor;
    const auto opacity = sources.frameFacts.opacity ? sources.frameFacts.opacity : facts.opacity;
    next.opacity = opacity.value_or(0xffffffff) / static_cast<double>(0xffffffff);
    next.processIdentifier = sources.processIdentifier;
    next.instanceName = facts.instanceName;
    next.className = facts.className;
    next.title = facts.title();
    next.desktop = facts.desktop;
    return next;
}

} // namespace lumo::x11
