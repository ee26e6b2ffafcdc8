#pragma once

#include <QWidget>
#include <functional>
#include <string>

namespace lumo {

// A text for the user, with a button to dismiss it.
class MessageView final : public QWidget {
  public:
    MessageView(const std::string &title, const std::string &text, std::function<void()> onDismiss);

  protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

  private:
    std::function<void()> onDismiss_;
};

} // namespace lumo
