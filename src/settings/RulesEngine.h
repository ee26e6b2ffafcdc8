#pragma once

namespace lumo {

class SettingsStore;

// Stands for the rule lists of the settings. The lists are kept and edited only: which windows
// receive the effect does not depend on them.
class RulesEngine {
  public:
    explicit RulesEngine(SettingsStore &settingsStore)
        : settingsStore_(settingsStore) {}

    SettingsStore &settingsStore() const { return settingsStore_; }

  private:
    SettingsStore &settingsStore_;
};

} // namespace lumo
