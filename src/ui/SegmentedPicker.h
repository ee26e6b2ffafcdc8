#pragma once

#include <QRadioButton>
#include <QWidget>
#include <functional>
#include <string_view>
#include <vector>

namespace lumo {

// A few choices side by side, one of which is chosen. For the keyboard and for screen readers it is
// a group of radio buttons.
class SegmentedPicker final : public QWidget {
  public:
    // The name is the picker's, for screen readers.
    SegmentedPicker(std::string_view name, const std::vector<std::string_view> &titles);

    // Chooses without a call of onChosen.
    void setChosen(std::size_t index);

    // The user chose.
    std::function<void(std::size_t)> onChosen;

  protected:
    void paintEvent(QPaintEvent *event) override;

  private:
    class Segment;

    std::vector<Segment *> segments_;
};

} // namespace lumo
