#pragma once

#include "ui/MenuRow.h"

#include <QPushButton>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace lumo {

// One row of the popover that can be clicked: a title, maybe a subtitle below it, and maybe a
// shortcut at its end. All of the row is its button. Disable it as any widget.
class MenuItemView final : public QPushButton, public menuRow::Padded {
  public:
    MenuItemView(std::string_view title, std::function<void()> action);

    void setTitle(const std::string &title);
    void setSubtitle(const std::optional<std::string> &subtitle);
    void setShortcut(const std::optional<std::string> &shortcut);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

  private:
    void paddingChanged() override { updateGeometry(); }
    void change(const QString &title, const QString &subtitle, const QString &shortcut);
    void textsChanged();
    int textWidth() const;
    int shortcutWidth() const;

    QString subtitle_;
    QString shortcut_;
};

} // namespace lumo
