#include "presentation/RuleList.h"

#include "presentation/CoverAppChoice.h"
#include "presentation/Text.h"
#include "settings/SettingsStore.h"

#include <algorithm>
#include <set>

namespace lumo {

namespace {

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    const auto first = text.find_first_not_of(blanks);
    return first == std::string_view::npos
               ? std::string_view()
               : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

} // namespace

bool isBundleIdentifier(std::string_view text) {
    const auto identifier = trimmed(text);
    return !identifier.empty() && std::ranges::none_of(identifier, [](char character) {
        const auto code = static_cast<unsigned char>(character);
        return code <= ' ' || code == 0x7f || character == '/';
    });
}

Setting<std::vector<AppRule>> &rulesInForce(SettingsStore &settings) {
    return settings.useWhitelistMode.value() ? settings.whitelist : settings.blacklist;
}

std::vector<AppRule> RuleList::matching(std::string_view search) const {
    const auto wanted = lowercased(trimmed(search));
    auto rules = rules_.value();
    std::erase_if(rules, [&wanted](const AppRule &rule) {
        return lowercased(rule.displayName).find(wanted) == std::wstring::npos &&
               lowercased(rule.bundleID).find(wanted) == std::wstring::npos;
    });
    return rules;
}

std::optional<std::string> RuleList::add(std::string_view bundleID, std::string_view displayName) {
    const std::string identifier(trimmed(bundleID));
    const std::string name(trimmed(displayName));
    if (identifier.empty()) {
        return std::nullopt;
    }
    auto rules = rules_.value();
    auto rule = std::ranges::find(rules, identifier, &AppRule::bundleID);
    if (rule != rules.end()) {
        rule->isEnabled = true;
    } else {
        rule = rules.insert(rule, {makeUUID(), identifier, name.empty() ? identifier : name, true});
    }
    auto id = rule->id;
    rules_.set(std::move(rules));
    return id;
}

void RuleList::remove(std::string_view id) {
    auto rules = rules_.value();
    if (std::erase_if(rules, [id](const AppRule &rule) { return rule.id == id; }) > 0) {
        rules_.set(std::move(rules));
    }
}

void RuleList::setEnabled(std::string_view id, bool isEnabled) {
    auto rules = rules_.value();
    const auto rule = std::ranges::find(rules, id, &AppRule::id);
    if (rule != rules.end()) {
        rule->isEnabled = isEnabled;
        rules_.set(std::move(rules));
    }
}

std::vector<InstalledApplication> ruleCandidates(const Workspace &workspace,
                                                 const std::vector<AppRule> &rules) {
    std::set<std::string> known;
    for (const auto &rule : rules) {
        known.insert(rule.bundleID);
    }
    std::vector<InstalledApplication> candidates;
    for (const auto &running : workspace.runningApplications()) {
        if (running.activationPolicy == ActivationPolicy::regular && running.bundleIdentifier &&
            known.insert(*running.bundleIdentifier).second) {
            candidates.push_back({*running.bundleIdentifier,
                                  running.localizedName.value_or(*running.bundleIdentifier)});
        }
    }
    for (auto &installed : workspace.installedApplications()) {
        if (known.insert(installed.bundleIdentifier).second) {
            candidates.push_back(std::move(installed));
        }
    }
    std::ranges::sort(candidates, comesBefore, &InstalledApplication::localizedName);
    return candidates;
}

} // namespace lumo
