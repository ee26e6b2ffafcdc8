#pragma once

#include "presentation/UserInterface.h"
#include "ui/Binding.h"
#include "ui/SettingsPage.h"

namespace lumo {

class AppearanceSettingsView final : public SettingsPage {
  public:
    explicit AppearanceSettingsView(const SettingsModel &model);

  private:
    Bindings bindings_;
};

} // namespace lumo
