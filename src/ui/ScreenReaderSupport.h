#pragma once

namespace lumo {

// Tells screen readers what the toolkit can't find out about what is ours by itself: that the
// popover is one of the windows, that the segments of a picker belong together, and what the
// positions of a slider stand for. In force as long as it lives, which is once at a time.
class ScreenReaderSupport {
  public:
    ScreenReaderSupport();
    ~ScreenReaderSupport();
    ScreenReaderSupport(const ScreenReaderSupport &) = delete;
    ScreenReaderSupport &operator=(const ScreenReaderSupport &) = delete;
};

} // namespace lumo
