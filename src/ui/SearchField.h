#pragma once

#include <QLineEdit>
#include <string_view>

namespace lumo {

// A text field with a magnifying glass.
class SearchField final : public QLineEdit {
  public:
    explicit SearchField(std::string_view placeholder);

  protected:
    void paintEvent(QPaintEvent *event) override;
};

// A plain text field in the same look.
QLineEdit *makeTextField(std::string_view placeholder);

} // namespace lumo
