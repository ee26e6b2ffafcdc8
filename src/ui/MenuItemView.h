#pragma once

#include "ui/MenuRow.h"
#include "ui/Theme.h"

#include <QPushButton>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace lumo {

// One row of the popover that can be clicked: a title, maybe a subtitle below it, and maybe a
// shortcut at its end, in smaller letters where the title leaves little room. All of the row is its
// button. Disable it as any widget.
class MenuItemView final : public QPushButton, public menuRow::Padded {
  public:
    MenuItemView(std::string_view title, std::function<void()> action);

    void setTitle(const std::string &title);
    // Wraps to no more lines than that, and ends in an ellipsis where they do not suffice.
    void setSubtitle(const std::optional<std::string> &subtitle, int mostLines = 1);
    void setShortcut(const std::optional<std::string> &shortcut);

    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
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
    QStringList subtitleLines(int width) const;
    TextStyle shortcutStyle() const;

    QString subtitle_;
    int mostSubtitleLines_ = 1;
    QString shortcut_;
};

} // namespace lumo
