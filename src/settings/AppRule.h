#pragma once

#include "platform/Vocabulary.h"
#include "support/Value.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace lumo {

// One application in a rule list. Two rules for the same application are different rules as long as
// their identifiers differ.
struct AppRule {
    std::string id; // a UUID, see makeUUID()
    std::string bundleID;
    std::string displayName;
    bool isEnabled = true;

    bool operator==(const AppRule &) const = default;
};

// Rules for these applications, switched on, with identifiers of their own.
std::vector<AppRule> makeRules(const std::vector<PresetRule> &presets);

// A random UUID as 36 characters, letters in upper case.
std::string makeUUID();

// JSON text: an object with the keys "id", "bundleID", "displayName" and "isEnabled", and an array
// of such objects. Encoding fails, giving nothing, when a string is not UTF-8. Decoding fails as a
// whole when any key is missing or any value has the wrong type; further keys are ignored.
std::optional<Bytes> encodeRule(const AppRule &rule);
std::optional<AppRule> decodeRule(const Bytes &json);
std::optional<Bytes> encodeRules(const std::vector<AppRule> &rules);
std::optional<std::vector<AppRule>> decodeRules(const Bytes &json);

} // namespace lumo

template <>
struct std::hash<lumo::AppRule> {
    std::size_t operator()(const lumo::AppRule &rule) const noexcept;
};
