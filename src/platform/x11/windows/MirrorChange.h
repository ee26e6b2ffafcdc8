#pragma once

#include <cstdint>
#include <utility>

namespace lumo::x11 {

// What changed since the last announcement. The mirror gathers a batch of events before it
// announces.
struct MirrorChange {
    bool stacking = false;   // order, or the set of windows
    bool appearance = false; // geometry, mapping, shape, opacity: what would be seen differently
    bool properties = false; // titles, owners, stacking layers
    bool activeWindow = false;
    bool currentDesktop = false;
    bool windowManager = false; // came, went, was replaced, understands other hints
    bool wallpaper = false;     // the root window's pixmap property

    bool operator==(const MirrorChange &) const = default;
};

// Gathers changes until they are announced, and counts them.
class ChangeRecord {
  public:
    void note(bool MirrorChange::*what) {
        gathered_.*what = true;
        ++revision_;
        if (what != &MirrorChange::appearance) {
            ++identityRevision_;
        }
    }

    const MirrorChange &gathered() const { return gathered_; }
    MirrorChange take() { return std::exchange(gathered_, {}); }

    // A number that is another one after each change.
    std::uint64_t revision() const { return revision_; }

    // The same for changes of anything but what MirrorChange::appearance covers.
    std::uint64_t identityRevision() const { return identityRevision_; }

  private:
    MirrorChange gathered_;
    std::uint64_t revision_ = 1;
    std::uint64_t identityRevision_ = 1;
};

} // namespace lumo::x11
