#include "ui/ValueSlider.h"

#include "ui/Labels.h"
#include "ui/Painting.h"
#include "ui/Text.h"
#include "ui/Theme.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QSignalBlocker>
#include <QStyle>
#include <QStyleOptionSlider>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

namespace lumo {

namespace {

constexpr int sliderWidth = 200;
constexpr int valueWidth = 52;
constexpr int knobSize = 18;
constexpr int grooveHeight = 4;

} // namespace

class ValueSlider::Slider final : public QSlider {
  public:
    explicit Slider(ValueSlider *owner)
        : QSlider(Qt::Horizontal, owner) {
        setFocusPolicy(Qt::StrongFocus);
        setFixedSize(sliderWidth, knobSize + 4);
    }

  protected:
    void wheelEvent(QWheelEvent *event) override { event->ignore(); }

    void paintEvent(QPaintEvent * /*event*/) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const double reach = width() - knobSize;
        double share =
            static_cast<double>(value() - minimum()) / std::max(1, maximum() - minimum());
        if (isRightToLeft()) {
            share = 1 - share;
        }
        const QRectF knob(reach * share, (height() - knobSize) / 2.0, knobSize, knobSize);
        const QRectF groove(2, (height() - grooveHeight) / 2.0, width() - 4, grooveHeight);
        const auto group = isEnabled() ? QPalette::Active : QPalette::Disabled;
        paintRounded(painter, groove, grooveHeight / 2.0, palette().color(role::controlBorder));
        QRectF filled = groove;
        isRightToLeft() ? filled.setLeft(knob.center().x()) : filled.setRight(knob.center().x());
        paintRounded(painter, filled, grooveHeight / 2.0, palette().color(group, role::accent));
        painter.setPen(QPen(palette().color(role::switchedOff), 1));
        painter.setBrush(isSliderDown() ? palette().color(role::pressed) : QColor(Qt::white));
        painter.drawEllipse(knob.adjusted(0.5, 0.5, -0.5, -0.5));
        if (showsFocus(*this)) {
            paintFocusRing(painter, knob, knobSize / 2.0, palette());
        }
    }
};

ValueSlider::ValueSlider(std::string_view name, const SliderRange &range,
                         std::function<std::string(double)> text)
    : range_(range)
    , text_(std::move(text))
    , slider_(new Slider(this))
    , label_(makeLabel({}, TextStyle::body, role::secondaryText)) {
    slider_->setAccessibleName(toQString(name));
    slider_->setRange(0,
                      static_cast<int>(std::lround((range.maximum - range.minimum) / range.step)));
    slider_->setPageStep(std::max(1, slider_->maximum() / 10));
    label_->setMinimumWidth(valueWidth);
    label_->setAlignment(
        QStyle::visualAlignment(layoutDirection(), Qt::AlignRight | Qt::AlignVCenter) |
        Qt::AlignAbsolute);
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(spacing::medium);
    row->addWidget(slider_);
    row->addWidget(label_);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    QObject::connect(slider_, &QSlider::valueChanged, this, [this](int step) {
        // A share of the range, not what the steps add up to: 0.6 is 0.6.
        const double value = range_.minimum + (range_.maximum - range_.minimum) * step /
                                                  std::max(1, slider_->maximum());
        if (onMoved) {
            onMoved(value);
        }
    });
}

int ValueSlider::stepOf(double value) const {
    const double inside = std::clamp(value, range_.minimum, range_.maximum);
    return static_cast<int>(std::lround((inside - range_.minimum) / range_.step));
}

void ValueSlider::moveTo(double value) {
    slider_->setValue(stepOf(value));
}

void ValueSlider::setValue(double value) {
    const QSignalBlocker quiet(slider_);
    value_ = value;
    slider_->setValue(stepOf(value));
    const auto words = toQString(text_(value));
    label_->setText(words);
    slider_->setAccessibleDescription(words);
    slider_->update();
}

} // namespace lumo
