#pragma once

#include <QColor>
#include <QRectF>

class QPainter;
class QPalette;
class QWidget;

namespace lumo {

// True while the widget has the focus and the user works with the keyboard.
bool showsFocus(const QWidget &widget);

// The ring around what has the focus, drawn inside of the area.
void paintFocusRing(QPainter &painter, const QRectF &area, double radius, const QPalette &palette);

// A filled shape with round corners and a hairline of one device pixel or more inside its edge.
void paintRounded(QPainter &painter, const QRectF &area, double radius, const QColor &fill,
                  const QColor &border = Qt::transparent);

} // namespace lumo
