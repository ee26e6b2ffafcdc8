#pragma once

#include <QIcon>
#include <QRectF>

class QPainter;

namespace lumo {

// The program's picture, for title bars and lists of windows; the same as the one that packages
// install.
QIcon programIcon();

// Draws it over the whole of a square, without the room that it leaves around itself.
void paintProgramIcon(QPainter &painter, const QRectF &square);

} // namespace lumo
