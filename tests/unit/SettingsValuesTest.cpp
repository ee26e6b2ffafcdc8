#include "settings/AppRule.h"
#include "settings/CoverLockPreset.h"
#include "settings/EffectMode.h"
#include "settings/MultiScreenMode.h"

#include <gmock/gmock.h>

#include <string>
#include <string_view>
#include <unordered_set>

namespace lumo {
namespace {

Bytes bytes(std::string_view text) {
    return {text.begin(), text.end()};
}

TEST(AppRule, EncodingKeepsTheFourFields) {
    const auto rules = makeRules({{"a.b", "A"}, {"\xc3\xa9", "\"é\""}, {"", ""}});
    EXPECT_EQ(decodeRules(encodeRules(rules).value()), rules);
    EXPECT_EQ(decodeRule(encodeRule(rules[1]).value()), rules[1]);

    const AppRule rule{"1", "2", "3", true};
    const auto json = encodeRule(rule).value();
    EXPECT_EQ(std::string(json.begin(), json.end()),
              R"({"id":"1","bundleID":"2","displayName":"3","isEnabled":true})");
    const std::unordered_set<AppRule> different{rule,
                                                {"0", "2", "3", true},
                                                {"1", "0", "3", true},
                                                {"1", "2", "0", true},
                                                {"1", "2", "3", false}};
    EXPECT_EQ(different.size(), 5U);
    EXPECT_TRUE(different.contains(AppRule(rule)));
}

TEST(AppRule, IncompleteRulesAreRejectedWhole) {
    const std::string good = R"({"id":"1","bundleID":"2","displayName":"3","isEnabled":true})";
    EXPECT_EQ(decodeRules(bytes("[" + good + "," + good + "]")).value().size(), 2U);
    EXPECT_EQ(decodeRules(bytes(" [ ] ")).value().size(), 0U);
    for (const std::string bad :
         {R"({"bundleID":"2","displayName":"3","isEnabled":true})",
          R"({"id":1,"bundleID":"2","displayName":"3","isEnabled":true})",
          R"({"id":"1","bundleID":null,"displayName":"3","isEnabled":true})",
          R"({"id":"1","bundleID":"2","displayName":["3"],"isEnabled":true})",
          R"({"id":"1","bundleID":"2","displayName":"3","isEnabled":1})",
          R"({"id":"1","bundleID":"2","displayName":"3"})", R"("text")", "[]", "\xff"}) {
        EXPECT_EQ(
            decodeRules(bytes(std::string("[").append(good).append(",").append(bad).append("]"))),
            std::nullopt)
            << bad;
        EXPECT_EQ(decodeRule(bytes(bad)), std::nullopt) << bad;
    }
    for (const std::string bad : {"", "{}", "[", "[]]", "null", "[,]"}) {
        EXPECT_EQ(decodeRules(bytes(bad)), std::nullopt) << bad;
    }
    EXPECT_EQ(decodeRules(bytes(std::string(1000000, '['))), std::nullopt);
}

TEST(AppRule, IdentifierIsARandomUUID) {
    const std::string form = "[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}";
    std::unordered_set<std::string> seen;
    for (const auto &rule : makeRules(std::vector<PresetRule>(36))) {
        EXPECT_THAT(rule.id, testing::MatchesRegex(form));
        EXPECT_TRUE(seen.insert(rule.id).second);
        EXPECT_TRUE(rule.isEnabled);
    }
}

TEST(CoverLockPreset, NearestPresetAndItsDetailLine) {
    for (const auto &[seconds, line] : {
             std::pair(-1.0, "Fast (-1000 ms): Lower latency, may switch targets more often."),
             std::pair(-0.0001, "Fast (0 ms): Lower latency, may switch targets more often."),
             std::pair(0.274, "Fast (274 ms): Lower latency, may switch targets more often."),
             std::pair(0.276, "Balanced (276 ms): Balanced responsiveness and stability."),
             std::pair(0.35, "Balanced (350 ms): Balanced responsiveness and stability."),
             std::pair(0.424, "Balanced (424 ms): Balanced responsiveness and stability."),
             std::pair(0.4265, "Stable (427 ms): Most stable target lock, with a bit more lag."),
             std::pair(60.0, "Stable (60000 ms): Most stable target lock, with a bit more lag."),
         }) {
        EXPECT_EQ(coverLockDetail(seconds), line);
    }
    // Equally near as far as doubles can tell.
    EXPECT_EQ(nearestCoverLockPreset(-1e300), CoverLockPreset::fast);
    for (const auto preset : allCoverLockPresets) {
        EXPECT_EQ(nearestCoverLockPreset(duration(preset)), preset);
    }
}

} // namespace
} // namespace lumo
