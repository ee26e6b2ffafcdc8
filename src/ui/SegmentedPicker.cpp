#include "ui/SegmentedPicker.h"

#include "ui/Painting.h"
#include "ui/Text.h"
#include "ui/Theme.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QSignalBlocker>

namespace lumo {

class SegmentedPicker::Segment final : public QRadioButton {
  public:
    explicit Segment(const QString &title)
        : QRadioButton(title) {
        setFont(fontOf(TextStyle::bodyMedium));
        setFocusPolicy(Qt::StrongFocus);
        setAttribute(Qt::WA_Hover);
        setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    }

    QSize sizeHint() const override {
        return {fontMetrics().horizontalAdvance(text()) + 28, fontMetrics().height() + 8};
    }
    QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    bool hitButton(const QPoint &position) const override { return rect().contains(position); }

    void paintEvent(QPaintEvent * /*event*/) override {
        QPainter painter(this);
        const auto group = isEnabled() ? QPalette::Active : QPalette::Disabled;
        if (isChecked()) {
            paintRounded(painter, rect(), corner::control - 2,
                         palette().color(group, role::accent));
        } else if (underMouse()) {
            paintRounded(painter, rect(), corner::control - 2, palette().color(role::hovered));
        }
        painter.setPen(palette().color(group, isChecked() ? role::textOnAccent : role::text));
        painter.setFont(font());
        paintLine(painter, rect(), Qt::AlignCenter, layoutDirection(), text());
        if (showsFocus(*this)) {
            paintFocusRing(painter, rect(), corner::control - 2, palette());
            paintRounded(painter, QRectF(rect()).adjusted(2, 2, -2, -2), corner::control - 3,
                         Qt::transparent, palette().color(role::card));
        }
    }
};

SegmentedPicker::SegmentedPicker(std::string_view name,
                                 const std::vector<std::string_view> &titles) {
    setAccessibleName(toQString(name));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(3, 3, 3, 3);
    row->setSpacing(spacing::tight);
    for (const auto title : titles) {
        auto *segment = new Segment(toQString(title));
        const auto index = segments_.size();
        QObject::connect(segment, &QRadioButton::toggled, this, [this, index](bool isOn) {
            if (isOn && onChosen) {
                onChosen(index);
            }
        });
        row->addWidget(segment);
        segments_.push_back(segment);
    }
}

void SegmentedPicker::setChosen(std::size_t index) {
    for (auto *segment : segments_) {
        const QSignalBlocker quiet(segment);
        const bool isChosen = segment == segments_.at(index);
        segment->setChecked(isChosen);
        // The Tab key stops at the group once, at the segment that is chosen.
        segment->setFocusPolicy(isChosen ? Qt::StrongFocus : Qt::ClickFocus);
        segment->update();
    }
}

void SegmentedPicker::paintEvent(QPaintEvent * /*event*/) {
    QPainter painter(this);
    paintRounded(painter, rect(), corner::control, palette().color(role::control),
                 palette().color(role::controlBorder));
}

} // namespace lumo
