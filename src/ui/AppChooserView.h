#pragma once

#include "platform/Workspace.h"

#include <QDialog>
#include <functional>
#include <string>
#include <vector>

class QLineEdit;
class QListView;
class QPushButton;
class QSortFilterProxyModel;
class QStandardItemModel;

namespace lumo {

// Lets the user choose an application from a list that can be searched, or type its identifier.
class AppChooserView final : public QDialog {
  public:
    explicit AppChooserView(QWidget *window);

    // The user has chosen. The name is empty for an identifier that was typed.
    std::function<void(const std::string &bundleID, const std::string &name)> onChosen;

    void offer(const std::vector<InstalledApplication> &applications);

  protected:
    void paintEvent(QPaintEvent *event) override;

  private:
    void choose(const QModelIndex &index);
    void chooseTyped();

    QLineEdit *search_;
    QListView *list_;
    QLineEdit *identifier_;
    QPushButton *add_;
    QStandardItemModel *items_;
    QSortFilterProxyModel *found_;
};

} // namespace lumo
