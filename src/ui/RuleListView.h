#pragma once

#include "platform/Platform.h"
#include "presentation/RuleList.h"
#include "support/Handle.h"
#include "ui/Binding.h"

#include <QPointer>
#include <QWidget>
#include <vector>

class QLabel;
class QLineEdit;
class QListView;
class QStandardItemModel;

namespace lumo {

class AppChooserView;

// The rules of the list in force: searched, switched, added to and removed from.
class RuleListView final : public QWidget {
  public:
    RuleListView(const Platform &platform, SettingsStore &settings);
    ~RuleListView() override;

  private:
    class List;

    void refresh();
    void showRules(const std::vector<AppRule> &rules);
    void toggle(const QModelIndex &index);
    void remove(const QModelIndex &index);
    void removeCurrent();
    void chooseApp();
    void addRule(const std::string &bundleID, const std::string &name);

    Platform platform_;
    SettingsStore &settings_;
    QLineEdit *search_;
    List *list_;
    QStandardItemModel *items_;
    QLabel *emptyNote_;
    QPointer<AppChooserView> chooser_;
    bool isOutdated_ = true; // the list, by the settings it shows
    Bindings bindings_;
};

} // namespace lumo
