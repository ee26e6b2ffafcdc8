#pragma once

#include <QScrollArea>
#include <QVBoxLayout>
#include <string_view>

namespace lumo {

class Card;

// A page of the settings window: a title and cards below each other, which scroll where they do not
// fit.
class SettingsPage : public QScrollArea {
  protected:
    explicit SettingsPage(std::string_view title);

    Card *addCard();
    // The heading of the next card.
    void addHeading(std::string_view text);
    void add(QWidget *widget);
    // At the end of the page.
    void addFooter(QWidget *widget);

  private:
    QVBoxLayout *column_;
};

} // namespace lumo
