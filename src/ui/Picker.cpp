#include "ui/Picker.h"

#include "ui/ListRow.h"
#include "ui/Painting.h"
#include "ui/Symbols.h"
#include "ui/Text.h"
#include "ui/Theme.h"

#include <QAbstractItemView>
#include <QPainter>
#include <QSignalBlocker>
#include <QStyle>
#include <QWheelEvent>

namespace lumo {

namespace {

constexpr int pickerWidth = 220;
constexpr int arrowSize = 14;
constexpr int visibleRows = 12;

} // namespace

Picker::Picker(std::string_view name) {
    setAccessibleName(toQString(name));
    setFont(fontOf(TextStyle::body));
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
    setMaxVisibleItems(visibleRows);
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    setItemDelegate(new ListRow(this));
    QObject::connect(this, &QComboBox::activated, this, [this](int index) {
        if (index >= 0 && onChosen) {
            onChosen(static_cast<std::size_t>(index));
        }
    });
}

void Picker::setChoices(const std::vector<std::string> &titles, int chosen) {
    if (titles == titles_ && chosen == currentIndex()) {
        return;
    }
    const QSignalBlocker quiet(this);
    if (titles != titles_) {
        titles_ = titles;
        QStringList texts;
        for (const auto &title : titles) {
            texts.append(toQString(title));
        }
        clear();
        addItems(texts);
    }
    setCurrentIndex(chosen);
    update();
}

QSize Picker::sizeHint() const {
    return {pickerWidth, fontMetrics().height() + 12};
}

// Turning the wheel over a page scrolls the page, whatever lies under the pointer.
void Picker::wheelEvent(QWheelEvent *event) {
    event->ignore();
}

void Picker::paintEvent(QPaintEvent * /*event*/) {
    QPainter painter(this);
    paintRounded(painter, rect(), corner::control,
                 palette().color(underMouse() ? role::hovered : role::control),
                 palette().color(role::controlBorder));
    const QRect arrow(width() - spacing::large - arrowSize, (height() - arrowSize) / 2, arrowSize,
                      arrowSize);
    paintSymbol(painter, symbol::openPicker, QStyle::visualRect(layoutDirection(), rect(), arrow),
                palette().color(role::secondaryText));
    const QRect area =
        QStyle::visualRect(layoutDirection(), rect(),
                           rect().adjusted(spacing::large, 0, -2 * spacing::large - arrowSize, 0));
    painter.setPen(palette().color(role::text));
    painter.setFont(font());
    const auto line = fontMetrics().elidedText(currentText(), Qt::ElideRight, area.width());
    paintLine(painter, area, Qt::AlignLeft | Qt::AlignVCenter, layoutDirection(), currentText());
    setToolTip(line == currentText() ? QString() : currentText());
    if (showsFocus(*this)) {
        paintFocusRing(painter, rect(), corner::control, palette());
    }
}

} // namespace lumo
