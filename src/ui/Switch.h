#pragma once

#include <QCheckBox>
#include <QVariantAnimation>

class QPainter;
class QPalette;
class QRectF;

namespace lumo {

// Draws a switch: its track, and the knob at a position from 0, off, to 1, on, as read from the
// left.
void paintSwitch(QPainter &painter, const QRectF &area, double position, double onness,
                 const QPalette &palette, bool isEnabled);

// A switch, without a text beside it: give it an accessible name.
class Switch final : public QCheckBox {
  public:
    static constexpr QSize trackSize{38, 22};

    Switch();

    QSize sizeHint() const override { return trackSize; }
    QSize minimumSizeHint() const override { return trackSize; }

  protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    bool hitButton(const QPoint &position) const override { return rect().contains(position); }
    void checkStateSet() override;
    void nextCheckState() override;

  private:
    void moveKnob();

    QVariantAnimation knob_;
};

} // namespace lumo
