#pragma once

#include <QString>

class QPainter;
class QKeyEvent;
class QRect;
class QWidget;

namespace lumo {

// What the rows of the popover have in common.
namespace menuRow {

inline constexpr int horizontalPadding = 12;
inline constexpr int verticalPadding = 8;

// In points, of a row with or without a subtitle.
int height(bool hasSubtitle);

void paintHighlight(QPainter &painter, const QWidget &row, bool isDown);

// The title over the subtitle, if any, in an area that starts at the row's first padding and has
// this width.
void paintTexts(QPainter &painter, const QWidget &row, int width, const QString &title,
                const QString &subtitle);

// Whether both texts fit this width.
bool textsFit(int width, const QString &title, const QString &subtitle);

// Keys by which one goes from row to row; they are the menu's, not the row's.
bool movesBetweenRows(const QKeyEvent &event);

} // namespace menuRow

} // namespace lumo
