#pragma once

#include <QObject>
#include <QPointF>
#include <optional>

class QWidget;

namespace lumo {

// Has the user move a window by the background of its view, as by its title bar. The view owns it.
class WindowMover final : public QObject {
  public:
    explicit WindowMover(QWidget &view);

  protected:
    bool eventFilter(QObject *view, QEvent *event) override;

  private:
    QWidget &view_;
    std::optional<QPointF> pressedAt_;
};

} // namespace lumo
