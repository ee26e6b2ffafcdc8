#pragma once

#include <QString>
#include <QStringList>

class QPainter;
class QKeyEvent;
class QRect;
class QWidget;

// What the rows of the popover have in common.
namespace lumo::menuRow {

inline constexpr int horizontalPadding = 12;
inline constexpr int verticalPadding = 8; // where there is room
inline constexpr int leastVerticalPadding = 3;
inline constexpr int highlightInset = 5; // of the highlight from the sides

// In points, of a row with this many lines below its title.
int height(int subtitleLines, int padding = verticalPadding);

// What a row is besides its widget: it can do with less padding above and below its texts.
class Padded {
  public:
    virtual ~Padded() = default;

    int padding() const { return padding_; }
    void setPadding(int padding) {
        if (padding != padding_) {
            padding_ = padding;
            paddingChanged();
        }
    }

  protected:
    virtual void paddingChanged() = 0;

  private:
    int padding_ = verticalPadding;
};

void paintHighlight(QPainter &painter, const QWidget &row, bool isDown);

// The title over the lines of the subtitle, from the row's first padding on. What is wider than it
// may be ends in an ellipsis.
void paintTexts(QPainter &painter, const QWidget &row, int titleWidth, const QString &title,
                const QStringList &subtitle, int subtitleWidth);

// Keys by which one goes from row to row; they are the menu's, not the row's.
bool movesBetweenRows(const QKeyEvent &event);

} // namespace lumo::menuRow
