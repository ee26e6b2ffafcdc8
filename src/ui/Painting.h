#pragma once

#include <QColor>
#include <QFlags>
#include <QRectF>
#include <QStringList>
#include <Qt>

class QFont;
class QPainter;
class QPalette;
class QRect;
class QString;
class QWidget;

namespace lumo {

// True while the widget has the focus and the user works with the keyboard.
bool showsFocus(const QWidget &widget);

// The ring around what has the focus, drawn inside of the area.
void paintFocusRing(QPainter &painter, const QRectF &area, double radius, const QPalette &palette);

// A filled shape with round corners and a hairline of one device pixel or more inside its edge.
void paintRounded(QPainter &painter, const QRectF &area, double radius, const QColor &fill,
                  const QColor &border = Qt::transparent);

// One line of text in the painter's font and pen, with an ellipsis where it does not fit. The
// alignment is that of a layout from left to right and is mirrored for the other direction; the
// text itself runs as its script does.
void paintLine(QPainter &painter, const QRect &area, Qt::Alignment alignment,
               Qt::LayoutDirection direction, const QString &text);

// The text in as many lines of this width as it takes, at most so many; the last ends in an
// ellipsis where that is not all.
QStringList wrappedLines(const QString &text, const QFont &font, int width, int mostLines);

} // namespace lumo
