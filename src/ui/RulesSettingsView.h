#pragma once

#include "presentation/CoverAppChoice.h"
#include "presentation/UserInterface.h"
#include "ui/Binding.h"
#include "ui/SettingsPage.h"

#include <vector>

namespace lumo {

class ElidedLabel;
class Picker;

class RulesSettingsView final : public SettingsPage {
  public:
    // The view of useWhitelistMode.
    enum class RuleListMode { whitelist, blacklist };

    explicit RulesSettingsView(const SettingsModel &model);

  private:
    void addPrivacyCover();
    void addRuleLists();
    QWidget *makeConflictHint();
    QWidget *makeCoverAppStates();
    QWidget *makeCoverAppButtons();
    void refreshAvailableApps();
    void showCoverApp();

    SettingsModel model_;
    std::vector<CoverAppChoice> availableApps_;
    Picker *coverApp_ = nullptr;
    ElidedLabel *currentCoverApp_ = nullptr;
    Bindings bindings_;
};

} // namespace lumo
