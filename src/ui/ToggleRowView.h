#pragma once

#include "ui/MenuRow.h"

#include <QCheckBox>
#include <optional>
#include <string>
#include <string_view>

namespace lumo {

// One row of the popover with a switch at its end: a title and maybe a subtitle of up to two lines.
// All of the row turns the switch.
class ToggleRowView final : public QCheckBox, public menuRow::Padded {
  public:
    explicit ToggleRowView(std::string_view title);

    void setSubtitle(const std::optional<std::string> &subtitle);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;

  protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    bool hitButton(const QPoint &position) const override { return rect().contains(position); }

  private:
    void paddingChanged() override { updateGeometry(); }
    QStringList subtitleLines(int width) const;
    void updateToolTip();

    QString subtitle_;
};

} // namespace lumo
