#pragma once

#include "presentation/UserInterface.h"
#include "ui/Binding.h"
#include "ui/SettingsPage.h"

namespace lumo {

class GeneralSettingsView final : public SettingsPage {
  public:
    explicit GeneralSettingsView(const SettingsModel &model);

  private:
    Bindings bindings_;
    Subscription loginItemRefusal_;
};

} // namespace lumo
