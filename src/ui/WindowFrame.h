#pragma once

#include <QList>
#include <QWidget>
#include <functional>

namespace lumo {

// The widget and, after it, the dialogs of its that are shown: what is in front of it comes last.
QList<QWidget *> withDialogs(QWidget &widget);

// A window with a title bar around a view, in the middle of the screen that the user works on. Its
// content has the view's size, or what of it fits the screen.
class WindowFrame final : public QWidget {
  public:
    // Takes the view.
    WindowFrame(const QString &title, QWidget *view, bool isMiniaturizable);

    // The user closes the window. May destroy it.
    std::function<void()> onWillClose;

    void makeKeyAndOrderFront();

  protected:
    void closeEvent(QCloseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

  private:
    void adoptScale();
};

} // namespace lumo
