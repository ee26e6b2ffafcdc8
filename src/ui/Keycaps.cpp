#include "ui/Keycaps.h"

#include "ui/Painting.h"
#include "ui/Theme.h"

#include <QPainter>
#include <algorithm>
#include <numeric>

namespace lumo {

namespace {

constexpr int horizontalPadding = 6;
constexpr int verticalPadding = 3;
constexpr int separatorPadding = 2; // on either side
constexpr double edge = 1;          // by which a cap stands out below

} // namespace

Keycaps::Keycaps() {
    setFont(fontOf(TextStyle::caption));
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void Keycaps::setKeys(const QStringList &keys, const QString &separator) {
    keys_ = keys;
    separator_ = separator;
    setText(keys.join(separator));
    updateGeometry();
}

int Keycaps::capWidth(const QString &key) const {
    return std::max(fontMetrics().height() + 2 * verticalPadding,
                    fontMetrics().horizontalAdvance(key) + 2 * horizontalPadding);
}

int Keycaps::separatorWidth() const {
    return fontMetrics().horizontalAdvance(separator_) + 2 * separatorPadding;
}

QSize Keycaps::sizeHint() const {
    const auto separators = static_cast<int>(std::max<qsizetype>(keys_.size() - 1, 0));
    const int width =
        std::accumulate(keys_.begin(), keys_.end(), separators * separatorWidth(),
                        [this](int sum, const QString &key) { return sum + capWidth(key); });
    return {width, fontMetrics().height() + 2 * verticalPadding};
}

QSize Keycaps::minimumSizeHint() const {
    return {fontMetrics().averageCharWidth() * 4, sizeHint().height()};
}

void Keycaps::paintEvent(QPaintEvent * /*event*/) {
    QPainter painter(this);
    painter.setFont(font());
    painter.setPen(palette().color(role::secondaryText));
    if (width() < sizeHint().width()) {
        paintLine(painter, rect(), Qt::AlignRight | Qt::AlignVCenter, Qt::LeftToRight, text());
        return;
    }
    int at = 0;
    for (const auto &key : keys_) {
        if (at > 0) {
            painter.drawText(QRect(at, 0, separatorWidth(), height()), Qt::AlignCenter, separator_);
            at += separatorWidth();
        }
        const QRectF cap(at, 0, capWidth(key), height());
        const auto top = cap.adjusted(0, 0, 0, -edge);
        paintRounded(painter, cap, corner::small, palette().color(role::controlBorder));
        paintRounded(painter, top, corner::small, palette().color(role::control),
                     palette().color(role::controlBorder));
        painter.setPen(palette().color(role::text));
        painter.drawText(top, Qt::AlignCenter, key);
        painter.setPen(palette().color(role::secondaryText));
        at += capWidth(key);
    }
}

} // namespace lumo
