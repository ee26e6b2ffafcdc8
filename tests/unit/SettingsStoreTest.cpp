#include "settings/SettingsStore.h"

#include "ScriptedDesktop.h"
#include "platform/Platform.h"
#include "platform/UserDefaults.h"

#include <gmock/gmock.h>

#include <limits>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace lumo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Stored = std::map<std::string, Value, std::less<>>;

class SettingsStoreTest : public testing::Test {
  protected:
    // The store that a new run of the program would have.
    SettingsStore &restart() {
        store_ = std::make_unique<SettingsStore>(desktop.platform());
        return *store_;
    }

    // What a store writes when every setting is assigned the value it has.
    Stored allWritten() {
        desktop.defaults.clear();
        for (auto *setting : restart().settings()) {
            setting->setAgain();
        }
        return std::exchange(desktop.defaults, {});
    }

    test::ScriptedDesktop desktop{100};
    std::unique_ptr<SettingsStore> store_;
};

Value textOfRules(const std::vector<AppRule> &rules) {
    return encodeRules(rules).value();
}

// Keys and types are a promise to every file that has ever been written.
TEST_F(SettingsStoreTest, EachDefaultUnderItsKeyWithItsType) {
    const auto written = allWritten();
    const Stored expected{
        {"isEnabled", false},
        {"effectMode", "softBlur"},
        {"effectIntensity", 0.6},
        {"blurFreeMode", false},
        {"transitionSpeed", 0.15},
        {"launchAtLogin", false},
        {"pauseInFullscreen", false},
        {"mouseShakeToggleEnabled", true},
        {"whitelist", textOfRules(store_->whitelist.defaultValue())},
        {"blacklist", textOfRules(store_->blacklist.defaultValue())},
        {"useWhitelistMode", false},
        {"privacyCoverEnabled", false},
        {"privacyCoverBringForwardOnStart", true},
        {"privacyCoverKeepAbove", false},
        {"privacyCoverAutoAssignOnEnable", true},
        {"coverWindowLockDuration", 0.35},
        {"multiScreenMode", "perScreen"},
        {"peekDuration", 2.0},
        {"toggleShortcutKey", 49},
        {"toggleShortcutEnabled", true},
        {"toggleShortcutModifiers", 4096},
        {"turnOnShortcutKey", 9},
        {"turnOnShortcutEnabled", true},
        {"turnOnShortcutModifiers", 6144},
        {"turnOffShortcutKey", 45},
        {"turnOffShortcutEnabled", true},
        {"turnOffShortcutModifiers", 6144},
        {"peekShortcutKey", 48},
        {"peekShortcutEnabled", true},
        {"peekShortcutModifiers", 3072},
        {"coverSetShortcutKey", 8},
        {"coverSetShortcutEnabled", true},
        {"coverSetShortcutModifiers", 3072},
        {"shakeSensitivity", 0.85},
        {"shakeToggleActionEnabled", true},
        {"shakeToReveal", true},
        {"shakePeekModifier", "Shift"},
        {"shakeToggleModifier", "None"},
    };
    EXPECT_EQ(written, expected);
    // Besides: two texts that are absent at first, and one value that others write.
    EXPECT_EQ(restart().settings().size(), expected.size() + 3);
    EXPECT_EQ(restart().privacyCoverBundleID.value(), std::nullopt);
    EXPECT_EQ(restart().privacyCoverDisplayName.value(), std::nullopt);
    EXPECT_FALSE(restart().hasCompletedOnboarding.value());
    EXPECT_THAT(desktop.defaults, IsEmpty()) << "loading writes nothing";
}

TEST_F(SettingsStoreTest, AnnouncementComesBeforeStoring) {
    auto &store = restart();
    store.privacyCoverBundleID.set("org.example.Editor");
    store.privacyCoverDisplayName.set("Editor");
    desktop.defaults.clear();
    std::vector<std::string> received;
    const auto willChange =
        store.willChange.subscribe([&] { received.emplace_back("will change"); });
    for (auto *setting : store.settings()) {
        received.clear();
        const auto subscription = setting->subscribeToAssignments([&] {
            received.emplace_back(setting->key());
            EXPECT_FALSE(desktop.defaults.contains(setting->key()));
        });
        setting->setAgain();
        EXPECT_THAT(received, ElementsAre("will change", setting->key()));
        EXPECT_EQ(desktop.defaults.contains(setting->key()),
                  setting->key() != "hasCompletedOnboarding")
            << setting->key();
    }
}

TEST_F(SettingsStoreTest, OtherTypesCountAsMissing) {
    auto types = allWritten();
    types.emplace("privacyCoverBundleID", "text");
    types.emplace("privacyCoverDisplayName", "text");
    types.emplace("hasCompletedOnboarding", true);
    const std::vector<Value> candidates{true, 1, 1.5, "tint", Bytes{'[', ']'}};
    const auto sameType = [](const Value &a, const Value &b) {
        if (a.real() && b.integer()) {
            return true;
        }
        return a.boolean().has_value() == b.boolean().has_value() &&
               a.integer().has_value() == b.integer().has_value() &&
               a.real().has_value() == b.real().has_value() &&
               (a.string() != nullptr) == (b.string() != nullptr) &&
               (a.data() != nullptr) == (b.data() != nullptr);
    };
    for (const auto &candidate : candidates) {
        desktop.defaults.clear();
        for (const auto &[key, value] : types) {
            if (!sameType(value, candidate)) {
                desktop.defaults.emplace(key, candidate);
            }
        }
        for (const auto *setting : restart().settings()) {
            EXPECT_TRUE(setting->isDefault()) << setting->key();
        }
    }
    desktop.defaults = {{"peekDuration", 3}};
    EXPECT_EQ(restart().peekDuration.value(), 3.0) << "a whole number may stand for a real one";
}

TEST_F(SettingsStoreTest, MeaninglessValuesCountAsMissing) {
    auto broken = restart().blacklist.defaultValue();
    auto json = encodeRules(broken).value();
    std::string text(json.begin(), json.end());
    const auto second = text.find("\"isEnabled\"", text.find("\"isEnabled\"") + 1);
    text.replace(second, 11, "\"enabled\"");
    desktop.defaults = {
        {"effectMode", "blur"},
        {"multiScreenMode", "Global"},
        {"effectIntensity", std::numeric_limits<double>::quiet_NaN()},
        {"peekDuration", std::numeric_limits<double>::infinity()},
        {"blacklist", Bytes(text.begin(), text.end())},
        {"whitelist", Bytes{'n', 'o', 'n', 's', 'e', 'n', 's', 'e'}},
    };
    for (const auto *setting : restart().settings()) {
        EXPECT_TRUE(setting->isDefault()) << setting->key();
    }
}

TEST_F(SettingsStoreTest, ValuesOutliveTheRun) {
    const std::vector<AppRule> rules{{makeUUID(), "org.example.Editor", "Editor \u00fc", false},
                                     {makeUUID(), "org.example.Editor", "Editor \u00fc", false}};
    auto &store = restart();
    store.effectMode.set(EffectMode::tint);
    store.multiScreenMode.set(MultiScreenMode::global);
    store.effectIntensity.set(0.1 + 0.2);
    store.toggleShortcutKey.set(12);
    store.shakePeekModifier.set("Option");
    store_->whitelist.set(rules);
    store_->blacklist.set({});
    store.privacyCoverBundleID.set("org.example.Editor");
    store.privacyCoverDisplayName.set("Editor");
    store.hasCompletedOnboarding.set(true);

    auto &next = restart();
    EXPECT_EQ(next.effectMode.value(), EffectMode::tint);
    EXPECT_EQ(next.multiScreenMode.value(), MultiScreenMode::global);
    EXPECT_EQ(next.effectIntensity.value(), 0.1 + 0.2);
    EXPECT_EQ(next.toggleShortcutKey.value(), 12);
    EXPECT_EQ(next.shakePeekModifier.value(), "Option");
    EXPECT_EQ(next.whitelist.value(), rules) << "same application, different rules";
    EXPECT_THAT(next.blacklist.value(), IsEmpty());
    EXPECT_EQ(next.privacyCoverBundleID.value(), "org.example.Editor");
    EXPECT_FALSE(next.hasCompletedOnboarding.value()) << "written by others only";

    next.privacyCoverBundleID.set(std::nullopt);
    EXPECT_FALSE(desktop.defaults.contains("privacyCoverBundleID"));
    desktop.defaults.insert_or_assign("hasCompletedOnboarding", true);
    // Rules that can't be encoded leave what is stored alone.
    next.whitelist.set({{"id", "bundle", "\xff", true}});
    auto &last = restart();
    EXPECT_EQ(last.privacyCoverBundleID.value(), std::nullopt);
    EXPECT_EQ(last.privacyCoverDisplayName.value(), "Editor");
    EXPECT_TRUE(last.hasCompletedOnboarding.value());
    EXPECT_EQ(last.whitelist.value(), rules);
}

TEST_F(SettingsStoreTest, ChangesByOthersAreAnnouncedAndNotWritten) {
    auto &store = restart();
    store.peekDuration.set(3);
    desktop.defaults.insert_or_assign("peekDuration", 4.0); // nobody tells of this one
    std::vector<std::string> received;
    const auto mode = store.effectMode.subscribeToChanges(
        [&](EffectMode next) { received.emplace_back(rawValue(next)); });
    const auto end = store.didReload.subscribe([&] {
        received.emplace_back(store.effectMode.value() == EffectMode::tint ? "stored"
                                                                           : "too early");
    });
    const Stored changed{{"effectMode", "tint"}, {"effectIntensity", "no number"}, {"other", 1}};
    desktop.changeDefaults(changed);
    EXPECT_THAT(received, ElementsAre("tint", "stored"));
    EXPECT_EQ(store.effectIntensity.value(), 0.6);
    EXPECT_EQ(store.peekDuration.value(), 3);
    EXPECT_EQ(desktop.defaults.at("effectIntensity"), Value("no number"));
}

TEST_F(SettingsStoreTest, OldPeekShortcutIsReplaced) {
    desktop.defaults = {{"peekShortcutKey", 45}, {"peekShortcutModifiers", 6144}};
    restart();
    const Stored replaced{{"peekShortcutKey", 48}, {"peekShortcutModifiers", 3072}};
    EXPECT_EQ(desktop.defaults, replaced);
    for (const auto &other : {Stored{{"peekShortcutKey", 45}, {"peekShortcutModifiers", 4096}},
                              Stored{{"peekShortcutKey", 44}, {"peekShortcutModifiers", 6144}}}) {
        desktop.defaults = other;
        restart();
        EXPECT_EQ(desktop.defaults, other);
    }
}

} // namespace
} // namespace lumo
