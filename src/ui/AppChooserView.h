#pragma once

#include "platform/Workspace.h"

#include <QDialog>
#include <functional>
#include <string>
#include <vector>

class QLabel;
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
    void keyPressEvent(QKeyEvent *event) override;

  private:
    QWidget *makeTypedRow();
    void search(const QString &text);
    void chooseFirst();
    void choose(const QModelIndex &index);
    void judgeTyped(const QString &text);
    void chooseTyped();

    QLineEdit *search_;
    QListView *list_;
    QLabel *nothingFound_;
    QLineEdit *identifier_;
    QLabel *judgement_; // on what was typed
    QPushButton *add_;
    QStandardItemModel *items_;
    QSortFilterProxyModel *found_;
};

} // namespace lumo
