#pragma once

#include "presentation/StatusMenu.h"

#include <QWidget>
#include <vector>

class QListView;
class QStandardItemModel;

namespace lumo {

// The popover's page on which the Cover App is chosen from the running applications, or cleared.
class CoverAppsView final : public QWidget {
  public:
    // The menu outlives the view.
    explicit CoverAppsView(StatusMenu &menu);

    // Shows what the menu offers now.
    void refresh();

    // The page was opened anew.
    void startAtTop();

  private:
    QWidget *makeList();
    void choose(int row);

    StatusMenu &menu_;
    QListView *list_;
    QStandardItemModel *items_; // "None", then the applications
    std::vector<CoverAppChoice> shownApps_;
};

} // namespace lumo
