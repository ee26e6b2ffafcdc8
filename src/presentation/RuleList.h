#pragma once

#include "platform/Workspace.h"
#include "settings/AppRule.h"
#include "settings/Setting.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumo {

class SettingsStore;

// Whether the user may have meant this as an application's bundle identifier: blanks around it
// aside, it is not empty and has no blanks, slashes or control characters.
bool isBundleIdentifier(std::string_view text);

// The list of rules that the settings say is in force.
Setting<std::vector<AppRule>> &rulesInForce(SettingsStore &settings);

// What the user does to a list of rules. Rules are told apart by their identifiers; one that is not
// there (any more) changes nothing.
class RuleList {
  public:
    using Rules = Setting<std::vector<AppRule>>;

    // The setting outlives the list.
    explicit RuleList(Rules &rules)
        : rules_(rules) {}

    // Those whose name or bundle identifier contains the text, whatever its case; all for none.
    std::vector<AppRule> matching(std::string_view search) const;

    // Adds a rule for the application, switched on, and returns the rule's identifier. The
    // name is the bundle identifier where there is none; blanks around both are dropped. An
    // application that has a rule has it switched on instead. Absent when there is no bundle
    // identifier.
    std::optional<std::string> add(std::string_view bundleID, std::string_view displayName);

    void remove(std::string_view id);
    void setEnabled(std::string_view id, bool isEnabled);

  private:
    Rules &rules_;
};

// The applications to offer for a new rule: those that are running with windows of their own and
// those that are installed, without those that have a rule; by name.
std::vector<InstalledApplication> ruleCandidates(const Workspace &workspace,
                                                 const std::vector<AppRule> &rules);

} // namespace lumo
