#pragma once

#include "presentation/UserInterface.h"
#include "ui/Binding.h"
#include "ui/SettingsPage.h"

namespace lumo {

class ShortcutsSettingsView final : public SettingsPage {
  public:
    explicit ShortcutsSettingsView(const SettingsModel &model);

  protected:
    void showEvent(QShowEvent *event) override;

  private:
    ShortcutManager &shortcuts_;
    Bindings bindings_;
    std::vector<Subscription> takenShortcuts_;
};

} // namespace lumo
