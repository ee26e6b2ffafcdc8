#pragma once

#include <QLabel>
#include <QVBoxLayout>
#include <QWidget>
#include <string_view>

namespace lumo {

class Switch;

// A raised panel whose rows are separated by hairlines.
class Card final : public QWidget {
  public:
    Card();

    // Takes the row, which brings its own margins, and puts it below the others. A hidden row takes
    // its line with it.
    void addRow(QWidget *row);

  protected:
    void paintEvent(QPaintEvent *event) override;

  private:
    QVBoxLayout *rows_;
};

// A title with a note below it at the start of a row, and controls at its end. The card or its
// layout takes it.
class SettingsRow final : public QWidget {
  public:
    // An empty note is left out.
    SettingsRow(std::string_view title, std::string_view note, QWidget *control);

    void setNote(std::string_view note);

    // A further line below the note, over the whole width of the row.
    void addLine(QWidget *line);

  protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

  private:
    Switch *switch_; // null where the control is another
    QVBoxLayout *lines_;
    QLabel *note_;
};

// Lines of text and controls that belong together, as one row of a card.
QWidget *makeStack(std::initializer_list<QWidget *> lines);

// Widgets side by side from the start.
QWidget *makeRow(std::initializer_list<QWidget *> widgets);

} // namespace lumo
