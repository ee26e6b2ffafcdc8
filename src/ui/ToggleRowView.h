#pragma once

#include <QCheckBox>
#include <optional>
#include <string>
#include <string_view>

namespace lumo {

// One row of the popover with a switch at its end: a title and maybe a subtitle. All of the row
// turns the switch.
class ToggleRowView final : public QCheckBox {
  public:
    explicit ToggleRowView(std::string_view title);

    void setSubtitle(const std::optional<std::string> &subtitle);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    bool hitButton(const QPoint &position) const override { return rect().contains(position); }

  private:
    int textWidth() const;
    void updateToolTip();

    QString subtitle_;
};

} // namespace lumo
