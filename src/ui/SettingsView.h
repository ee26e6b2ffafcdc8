#pragma once

#include "presentation/UserInterface.h"
#include "support/Handle.h"

#include <QWidget>
#include <array>

class QListWidget;
class QStackedWidget;

namespace lumo {

// The content of the settings window: the sidebar of pages and the page that it selects. A page is
// made when it is first selected.
class SettingsView final : public QWidget {
  public:
    static constexpr QSize contentSize{800, 540};
    static constexpr int sidebarWidth = 170;

    explicit SettingsView(SettingsModel model);

  protected:
    void paintEvent(QPaintEvent *event) override;

  private:
    QWidget *makeSidebar();
    void select(SettingsTab tab);
    QWidget *makePage(SettingsTab tab);

    SettingsModel model_;
    QListWidget *sidebar_;
    QStackedWidget *pages_;
    std::array<QWidget *, allSettingsTabs.size()> made_{}; // null until selected
    Subscription selection_;
};

} // namespace lumo
