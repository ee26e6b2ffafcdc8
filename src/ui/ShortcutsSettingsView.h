#pragma once

#include "presentation/UserInterface.h"
#include "ui/Binding.h"
#include "ui/SettingsPage.h"

namespace lumo {

class SettingsRow;
class ShortcutRecorderView;

class ShortcutsSettingsView final : public SettingsPage {
  public:
    explicit ShortcutsSettingsView(const SettingsModel &model);

  protected:
    void showEvent(QShowEvent *event) override;

  private:
    struct ShortcutRow;

    SettingsRow *makeShortcutRow(const ShortcutRow &row, const Platform &platform);
    void endOtherRecordings(const ShortcutRecorderView &recorder);

    ShortcutManager &shortcuts_;
    Bindings bindings_;
    std::vector<ShortcutRecorderView *> recorders_; // of which one records at a time
    std::vector<Subscription> subscriptions_;
};

} // namespace lumo
