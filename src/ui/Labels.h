#pragma once

#include "ui/Theme.h"

#include <QLabel>
#include <QString>
#include <string_view>

namespace lumo {

// Text in one style and colour of the palette. Notes are wrapped, all other text stands on one
// line.
QLabel *makeLabel(std::string_view text, TextStyle style, QPalette::ColorRole color = role::text);
QLabel *makeNote(std::string_view text, TextStyle style = TextStyle::note);

// Text of a few lines at most, which ends in an ellipsis where it does not fit, and then tells all
// of itself in a tool tip.
class ElidedLabel final : public QLabel {
  public:
    explicit ElidedLabel(TextStyle style, QPalette::ColorRole color = role::text,
                         int mostLines = 1);

    void setFullText(const QString &text);

    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return mostLines_ > 1; }
    int heightForWidth(int width) const override;

  protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

  private:
    QStringList lines(int width) const;
    void updateToolTip();

    int mostLines_;
};

// A symbol among widgets. Says nothing to screen readers: the text beside it does.
class SymbolView final : public QWidget {
  public:
    SymbolView(std::string_view name, int size, QPalette::ColorRole color);

    void setSymbol(std::string_view name, QPalette::ColorRole color);

  protected:
    void paintEvent(QPaintEvent *event) override;

  private:
    std::string_view name_;
    QPalette::ColorRole color_;
};

} // namespace lumo
