#pragma once

#include "presentation/UserInterface.h"
#include "ui/Binding.h"
#include "ui/SettingsPage.h"

namespace lumo {

class ShortcutsSettingsView final : public SettingsPage {
  public:
    explicit ShortcutsSettingsView(const SettingsModel &model);

  private:
    Bindings bindings_;
};

} // namespace lumo
