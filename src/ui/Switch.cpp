#include "ui/Switch.h"

#include "ui/Painting.h"
#include "ui/Theme.h"

#include <QKeyEvent>
#include <QPainter>
#include <QStyle>

namespace lumo {

namespace {

QColor mixed(const QColor &from, const QColor &to, double share) {
    const auto mix = [share](float a, float b) { return a + (b - a) * static_cast<float>(share); };
    return QColor::fromRgbF(mix(from.redF(), to.redF()), mix(from.greenF(), to.greenF()),
                            mix(from.blueF(), to.blueF()), mix(from.alphaF(), to.alphaF()));
}

} // namespace

void paintSwitch(QPainter &painter, const QRectF &area, double position, double onness,
                 const QPalette &palette, bool isEnabled) {
    const auto group = isEnabled ? QPalette::Active : QPalette::Disabled;
    const double radius = area.height() / 2;
    paintRounded(
        painter, area, radius,
        mixed(palette.color(group, role::switchedOff), palette.color(group, role::accent), onness));
    constexpr double margin = 2.5;
    const double knob = area.height() - 2 * margin;
    const double travel = area.width() - 2 * margin - knob;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::white);
    painter.drawEllipse(
        QRectF(area.x() + margin + travel * position, area.y() + margin, knob, knob));
    painter.restore();
}

Switch::Switch() {
    constexpr int duration = 130; // milliseconds
    knob_.setDuration(duration);
    knob_.setStartValue(0.0);
    knob_.setEndValue(0.0);
    knob_.setEasingCurve(QEasingCurve::OutCubic);
    QObject::connect(&knob_, &QVariantAnimation::valueChanged, this, [this] { update(); });
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void Switch::checkStateSet() {
    QCheckBox::checkStateSet();
    moveKnob();
}

void Switch::nextCheckState() {
    QCheckBox::nextCheckState();
    moveKnob();
}

// Slides while it can be seen, and jumps otherwise.
void Switch::moveKnob() {
    const double target = isChecked() ? 1 : 0;
    const double start = knob_.currentValue().toDouble();
    knob_.stop();
    knob_.setStartValue(isVisible() ? start : target);
    knob_.setEndValue(target);
    if (isVisible() && start != target) {
        knob_.start();
    } else {
        knob_.setCurrentTime(knob_.duration());
        update();
    }
}

void Switch::keyPressEvent(QKeyEvent *event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        click();
    } else {
        QCheckBox::keyPressEvent(event);
    }
}

void Switch::paintEvent(QPaintEvent * /*event*/) {
    QPainter painter(this);
    const QRectF area = QStyle::alignedRect(layoutDirection(), Qt::AlignCenter, trackSize, rect());
    const double onness = knob_.currentValue().toDouble();
    const double position = isRightToLeft() ? 1 - onness : onness;
    paintSwitch(painter, area, position, onness, palette(), isEnabled());
    if (showsFocus(*this)) {
        // Light on the accent colour, hence a gap between the two.
        paintFocusRing(painter, area, area.height() / 2, palette());
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(palette().color(role::card), 1));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(area.adjusted(2.5, 2.5, -2.5, -2.5), area.height() / 2,
                                area.height() / 2);
    }
}

} // namespace lumo
