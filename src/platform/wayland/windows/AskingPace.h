#pragma once

#include <optional>

namespace lumo::wayland {

// How often a compositor that does not announce where windows move has to be asked: sixty times a
// second while one moves, ten times while the user's hand may move one, seldom while only a client
// itself could, and never while nothing can move; less often where an answer takes long. Times are
// seconds on one clock.
class AskingPace {
  public:
    // What could move without an announcement.
    enum class Movable {
        nothing,    // a window fills every display
        tiledEdges, // only where tiled windows meet
        windows,
    };

    static constexpr double whileMoving = 1.0 / 60;
    static constexpr double whileActive = 0.1;
    static constexpr double whileIdle = 1;

    // The last answer has taken so long, which the compositor does nothing else in.
    void noteAnswer(double seconds) { lastAnswer_ = seconds; }

    void noteInput(bool isActive) { isInputActive_ = isActive; }
    void noteMovable(Movable movable) { movable_ = movable; }

    // A window was somewhere else than before, without an announcement.
    void noteMotion(double now) { movedAt_ = now; }

    // Seconds until the next question; absent when none is needed until something is announced.
    std::optional<double> interval(double now) const;

  private:
    double lastAnswer_ = 0;
    bool isInputActive_ = true;
    Movable movable_ = Movable::nothing;
    std::optional<double> movedAt_;
};

} // namespace lumo::wayland
