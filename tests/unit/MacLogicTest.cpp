#include "ScriptedMainLoop.h"
#include "platform/macos/logic/FilterTable.h"
#include "platform/macos/logic/LayerDifference.h"
#include "platform/macos/logic/LocalMonitors.h"
#include "platform/macos/logic/NativeNumber.h"
#include "platform/macos/logic/OverrideClaims.h"
#include "platform/macos/logic/ScreenList.h"
#include "platform/macos/logic/StageManager.h"
#include "platform/macos/logic/TimerPolicy.h"
#include "platform/macos/logic/WindowDictionary.h"
#include "platform/macos/logic/WindowOrder.h"

#include <gmock/gmock.h>

#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace lumo::macos {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

TEST(NativeNumberTest, NumbersKeepTheirType) {
    struct Case {
        const char *encoding = "";
        bool isBoolean = false;
        Value expected = 0;
    };
    NativeNumber number{.signedInteger = 1, .unsignedInteger = 1, .floatingPoint = 1};
    for (const auto &[encoding, isBoolean, expected] : {
             Case{"c", true, true},
             Case{"c", false, 1},
             Case{"i", false, 1},
             Case{"q", false, 1},
             Case{"Q", false, 1},
             Case{"f", false, 1.0},
             Case{"d", false, 1.0},
         }) {
        number.kind = kindOfNumber(encoding, isBoolean);
        EXPECT_EQ(valueOf(number), expected) << encoding;
    }
    const NativeNumber huge{.kind = kindOfNumber("Q", false),
                            .unsignedInteger = std::numeric_limits<std::uint64_t>::max()};
    EXPECT_EQ(valueOf(huge).real(), 0x1p64);
}

TEST(NativeNumberTest, CastsKeepTheNumberOrRefuse) {
    const auto infinity = std::numeric_limits<double>::infinity();
    EXPECT_THAT(cast(7.0, ValueType::integer), Optional(Value(7)));
    EXPECT_THAT(cast(true, ValueType::integer), Optional(Value(1)));
    EXPECT_THAT(cast(-0x1p63, ValueType::integer),
                Optional(Value(std::numeric_limits<std::int64_t>::min())));
    for (const double lost : {7.5, 0x1p63, infinity, -infinity, std::nan("")}) {
        EXPECT_EQ(cast(lost, ValueType::integer), std::nullopt) << lost;
    }
    EXPECT_THAT(cast(1, ValueType::boolean), Optional(Value(true)));
    EXPECT_THAT(cast(0.0, ValueType::boolean), Optional(Value(false)));
    EXPECT_EQ(cast(2, ValueType::boolean), std::nullopt);
    EXPECT_THAT(cast(3, ValueType::real), Optional(Value(3.0)));
    EXPECT_EQ(cast("3", ValueType::real), std::nullopt);
    EXPECT_EQ(cast(3, ValueType::string), std::nullopt);
}

// A dictionary of the window server, with what it holds by key.
struct NativeWindow {
    using Entries = std::map<std::string_view, Value>;

    Entries entries = {{"kCGWindowNumber", 41},          {"kCGWindowOwnerPID", 7},
                       {"kCGWindowOwnerName", "Editor"}, {"kCGWindowLayer", 0},
                       {"kCGWindowIsOnscreen", true},    {"kCGWindowName", "Report"},
                       {"kCGWindowAlpha", 1.0},          {"kCGWindowStoreType", 1}};
    std::optional<Entries> bounds =
        Entries{{"X", 10.0}, {"Y", 20.5}, {"Width", 300.0}, {"Height", 200.0}};

    WindowRecord record() const {
        const FieldReader fields = [this](std::size_t field) {
            return look(entries, windowKeys.at(field));
        };
        const FieldReader sides = [this](std::size_t field) {
            return look(*bounds, boundsKeys.at(field));
        };
        return windowRecord(fields, bounds ? &sides : nullptr);
    }

  private:
    static std::optional<Value> look(const Entries &dictionary, std::string_view key) {
        const auto found = dictionary.find(key);
        return found != dictionary.end() ? std::optional(found->second) : std::nullopt;
    }
};

const WindowRecord described{.number = 41,
                             .ownerProcess = 7,
                             .ownerName = "Editor",
                             .layer = 0,
                             .bounds = Rect{10, 20.5, 300, 200},
                             .isOnScreen = true,
                             .title = "Report",
                             .alpha = 1};

TEST(WindowDictionaryTest, NumbersOfEveryType) {
    EXPECT_EQ(NativeWindow().record(), described);
    NativeWindow window;
    window.entries.at("kCGWindowNumber") = 41.0;
    window.entries.at("kCGWindowLayer") = 0.0;
    window.entries.at("kCGWindowIsOnscreen") = 1;
    window.entries.at("kCGWindowAlpha") = true;
    window.bounds->at("X") = 10;
    EXPECT_EQ(window.record(), described);
}

TEST(WindowDictionaryTest, MissingAndMistypedEntriesAreAbsent) {
    struct Case {
        std::string_view key;
        std::optional<Value> value; // absent: the entry is
        void (*change)(WindowRecord &);
    };
    const auto noNumber = [](WindowRecord &record) { record.number.reset(); };
    const auto noOwner = [](WindowRecord &record) { record.ownerProcess.reset(); };
    const auto noOwnerName = [](WindowRecord &record) { record.ownerName.reset(); };
    const auto noFlag = [](WindowRecord &record) { record.isOnScreen.reset(); };
    const auto noTitle = [](WindowRecord &record) { record.title.reset(); };
    const auto invisible = [](WindowRecord &record) { record.alpha = 0; };
    for (const auto &[key, value, change] : {
             Case{"kCGWindowNumber", {}, noNumber},
             Case{"kCGWindowNumber", "41", noNumber},
             Case{"kCGWindowNumber", -1, noNumber},
             Case{"kCGWindowNumber", std::int64_t{1} << 32, noNumber},
             Case{"kCGWindowOwnerPID", {}, noOwner},
             Case{"kCGWindowOwnerPID", std::int64_t{1} << 31, noOwner},
             Case{"kCGWindowOwnerName", {}, noOwnerName},
             Case{"kCGWindowOwnerName", 7, noOwnerName},
             Case{"kCGWindowLayer", {}, [](WindowRecord &record) { record.layer.reset(); }},
             Case{"kCGWindowLayer", 2.5,
                  [](WindowRecord &record) {
                      record.layer.reset();
                      record.alpha = 0;
                  }},
             Case{"kCGWindowIsOnscreen", {}, noFlag},
             Case{"kCGWindowIsOnscreen", 2, noFlag},
             Case{"kCGWindowName", {}, noTitle},
             Case{"kCGWindowName", 7, noTitle},
             Case{"kCGWindowAlpha", {}, [](WindowRecord &) {}},
             Case{"kCGWindowAlpha", "1", invisible},
             Case{"kCGWindowAlpha", 0, invisible},
         }) {
        NativeWindow window;
        window.entries.erase(key);
        if (value) {
            window.entries.emplace(key, *value);
        }
        auto expected = described;
        change(expected);
        EXPECT_EQ(window.record(), expected) << key;
    }
}

TEST(WindowDictionaryTest, BoundsMayLackSidesButHoldNumbersOnly) {
    struct Case {
        std::optional<NativeWindow::Entries> bounds;
        std::optional<Rect> expected;
    };
    for (const auto &[bounds, expected] : {
             Case{{}, {}},
             Case{NativeWindow::Entries{}, Rect{}},
             Case{{{{"X", 10}, {"Y", 20}}}, Rect{10, 20, 0, 0}},
             Case{{{{"X", 10}, {"Width", -4}, {"Depth", "1"}}}, Rect{6, 0, 4, 0}},
             Case{{{{"X", "10"}, {"Y", 20}, {"Width", 300}, {"Height", 200}}}, {}},
         }) {
        NativeWindow window;
        window.bounds = bounds;
        EXPECT_EQ(window.record().bounds, expected);
    }
}

class LayerDifferenceTest : public testing::Test {
  protected:
    LayerDifferenceTest() {
        Layer backdrop;
        backdrop.kind = Layer::Kind::backdrop;
        tree.bounds = {0, 0, 100, 100};
        tree.layers = {backdrop, Layer{}};
    }
    LayerTreeChange after(const std::function<void(LayerTree &)> &change) const {
        LayerTree next = tree;
        change(next);
        return difference(&tree, next);
    }

    LayerTree tree;
};

TEST_F(LayerDifferenceTest, FirstTreeIsAllNew) {
    const auto first = difference(nullptr, tree);
    EXPECT_TRUE(first.bounds && first.viewAlpha && first.layers[0].isNew && first.layers[1].isNew);
    EXPECT_TRUE(first.layers[0].backdropScale);
    EXPECT_FALSE(first.layers[1].backdropScale) << "no backdrop";
    EXPECT_FALSE(first.layers[0].filters) << "an empty list would take a layer's filters away";
    EXPECT_EQ(first.mask, MaskChange::none);
    EXPECT_FALSE(difference(&tree, tree).any());
}

TEST_F(LayerDifferenceTest, EachChangeAloneOnItsOwnLayer) {
    struct Case {
        std::function<void(Layer &)> change;
        LayerChange expected;
    };
    for (const auto &example : {
             Case{[](Layer &layer) { layer.frame.x = 1; }, {.frame = true}},
             Case{[](Layer &layer) { layer.opacity = 0; }, {.opacity = true}},
             Case{[](Layer &layer) { layer.backgroundColor = Color::black(); },
                  {.backgroundColor = true}},
             Case{[](Layer &layer) { layer.masksToBounds = true; }, {.masksToBounds = true}},
             Case{[](Layer &layer) { layer.contents = std::make_shared<Image>(); },
                  {.contents = true}},
             Case{[](Layer &layer) { layer.contentsScale = 2; }, {.contentsScale = true}},
             Case{[](Layer &layer) { layer.magnificationFilter = Sampling::nearest; },
                  {.samplingFilters = true}},
             Case{[](Layer &layer) { layer.blendMode = BlendMode::softLight; },
                  {.blendMode = true}},
             Case{[](Layer &layer) {
                      layer.filters = {{Filter::Type::gaussianBlur, 1}};
                  },
                  {.filters = true}},
             Case{[](Layer &layer) { layer.backdropScale = 2; }, {.backdropScale = true}},
         }) {
        const auto changed = after([&](LayerTree &next) { example.change(next.layers[0]); });
        EXPECT_EQ(changed.layers[0], example.expected);
        EXPECT_FALSE(changed.layers[1].any() || changed.bounds || changed.viewAlpha);
        EXPECT_TRUE(changed.any());
    }
}

TEST_F(LayerDifferenceTest, OtherKindsOfLayersAndMasks) {
    EXPECT_TRUE(
        after([](LayerTree &next) { next.layers[0].kind = Layer::Kind::plain; }).layers[0].isNew);
    EXPECT_TRUE(after([](LayerTree &next) { next.layers.pop_back(); }).removesLayers);
    const EvenOddMask mask{.frame = tree.bounds, .rectangles = {tree.bounds}};
    EXPECT_EQ(after([&](LayerTree &next) { next.mask = mask; }).mask, MaskChange::set);
    tree.mask = mask;
    EXPECT_EQ(after([](LayerTree &) {}).mask, MaskChange::none);
    EXPECT_EQ(after([](LayerTree &next) { next.mask->rectangles.clear(); }).mask, MaskChange::set);
    EXPECT_EQ(after([](LayerTree &next) { next.mask.reset(); }).mask, MaskChange::remove);
}

// Each window as its number; those of 100 and more are in another band.
WindowRecords fromFrontToBack(std::initializer_list<int> numbers) {
    WindowRecords records;
    for (const int number : numbers) {
        records.push_back(
            {.number = static_cast<std::uint32_t>(number), .layer = number >= 100 ? 25 : 0});
    }
    return records;
}

TEST(WindowOrderTest, OverlaysMayShareAPlace) {
    const std::set<std::uint32_t> overlays{8, 9};
    const auto records = fromFrontToBack({100, 1, 8, 9, 101, 2});
    EXPECT_TRUE(liesBelow(records, overlays, 8, 1));
    EXPECT_TRUE(liesBelow(records, overlays, 9, 1));
    EXPECT_FALSE(liesBelow(records, overlays, 9, 2)) << "above it";
    EXPECT_FALSE(liesBelow(fromFrontToBack({1, 2, 8}), overlays, 8, 1)) << "another lies between";
    EXPECT_FALSE(liesBelow(fromFrontToBack({1, 2}), overlays, 8, 1)) << "not on screen";
    EXPECT_TRUE(liesBelow(records, overlays, 8, 7)) << "the other is not on screen";
    EXPECT_TRUE(liesInFront(fromFrontToBack({100, 9, 101, 8, 1}), overlays, 8));
    EXPECT_FALSE(liesInFront(records, overlays, 8));
    auto owned = fromFrontToBack({100, 8, 1, 9, 2, 3, 4});
    for (auto &record : owned) {
        record.ownerProcess = record.number == 3 ? 70 : 71;
    }
    EXPECT_EQ(lowestInFront(owned, overlays, 71), 2);
    EXPECT_EQ(lowestInFront(owned, overlays, 70), std::nullopt);
}

TEST(MacTablesTest, NamesAndOrderOfLayerSettings) {
    using enum Filter::Type;
    const std::vector<std::pair<std::string_view, std::vector<NativeSetting>>> expected = {
        {"gaussianBlur", {{"inputRadius", 24.0}, {"inputNormalizeEdges", true}}},
        {"colorBrightness", {{"inputAmount", 24.0}}},
        {"colorSaturate", {{"inputAmount", 24.0}}},
        {"colorContrast", {{"inputAmount", 24.0}}}};
    const std::array types{gaussianBlur, brightness, saturation, contrast};
    for (std::size_t index = 0; index < types.size(); ++index) {
        const auto [type, parameters] = nativeFilter({types.at(index), 24});
        EXPECT_EQ(std::pair(type, parameters), expected.at(index));
    }
    EXPECT_STREQ(compositingFilterName(BlendMode::overlay), "overlayBlendMode");
    EXPECT_STREQ(compositingFilterName(BlendMode::softLight), "softLightBlendMode");
    EXPECT_EQ(compositingFilterName(BlendMode::normal), nullptr);
}

TEST(StageManagerTest, FirstPreferenceWithATruth) {
    struct Case {
        std::map<std::string_view, Value> preferences;
        std::optional<bool> expected;
    };
    for (const auto &[preferences, expected] : {
             Case{{}, {}},
             Case{{{"GloballyEnabled", true}, {"StageManagerEnabled", false}}, true},
             Case{{{"GloballyEnabled", false}, {"StageManagerEnabled", true}}, false},
             Case{{{"StageManagerEnabled", 0.5}, {"EnableStandardClickToShowDesktop", 1}}, false},
             Case{{{"GloballyEnabled", "yes"},
                   {"StageManagerEnabled", "yes"},
                   {"EnableStandardClickToShowDesktop", -1}},
                  true},
             Case{{{"GloballyEnabled", "yes"}, {"Enabled", true}}, {}},
         }) {
        EXPECT_EQ(stageManagerSetting([&](std::string_view key) {
                      const auto found = preferences.find(key);
                      return found != preferences.end() ? std::optional(found->second)
                                                        : std::nullopt;
                  }),
                  expected);
    }
    EXPECT_TRUE(isStageManager("WindowManager", std::nullopt));
    EXPECT_TRUE(isStageManager("Window Manager", "com.apple.WindowManager"));
    EXPECT_FALSE(isStageManager("windowmanager", "com.apple.windowmanager"));
}

TEST(MacTablesTest, OnlyLeisurelyTimersMayBeLate) {
    EXPECT_EQ(timerPolicy(1.0 / 60, true), (TimerPolicy{1.0 / 60, 0}));
    EXPECT_EQ(timerPolicy(2, false), (TimerPolicy{2, 0}));
    EXPECT_EQ(timerPolicy(2, true), (TimerPolicy{2, 0.2}));
    for (const double odd : {0.0, -1.0, std::nan("")}) {
        EXPECT_EQ(timerPolicy(odd, false), (TimerPolicy{0.0001, 0})) << odd;
    }
}

TEST(LocalMonitorsTest, TheFirstToSwallowAPressKeepsItsRepeats) {
    constexpr auto keys = eventMask(EventType::keyDown);
    LocalMonitors monitors;
    std::vector<std::string> received;
    const auto monitor = [&](EventMask mask, std::string name, std::uint16_t swallowed) {
        return monitors.add(mask, [&received, name, swallowed](const InputEvent &event) {
            received.push_back(name);
            return event.keyCode == swallowed;
        });
    };
    const auto emergencyStop = monitor(keys, "emergency stop", 2);
    const auto pointer = monitor(pointerMotionMask, "pointer", 0);
    auto firstRecorder = monitor(keys, "first recorder", 40);
    const auto secondRecorder = monitor(keys, "second recorder", 40);
    struct Case {
        std::uint16_t keyCode = 0;
        bool isSwallowed = false;
        std::vector<std::string> recipients;
    };
    for (const auto &[keyCode, isSwallowed, recipients] : {
             Case{2, true, {"emergency stop"}},
             Case{40, true, {"emergency stop", "first recorder"}},
             Case{41, false, {"emergency stop", "first recorder", "second recorder"}},
         }) {
        const InputEvent event{.type = EventType::keyDown, .keyCode = keyCode};
        EXPECT_EQ(monitors.send(event, false), isSwallowed) << keyCode;
        EXPECT_EQ(monitors.send(event, true), isSwallowed) << "held: " << keyCode;
        EXPECT_EQ(std::exchange(received, {}), recipients) << keyCode;
    }
    firstRecorder.reset();
    EXPECT_TRUE(monitors.send({.type = EventType::keyDown, .keyCode = 40}, false));
    EXPECT_THAT(received, ElementsAre("emergency stop", "second recorder"));
}

TEST(ScreenListTest, AReplacedListStaysAsItIsInItsTurn) {
    test::ScriptedMainLoop mainLoop(0);
    ScreenList list(mainLoop);
    const Screen builtIn{.number = 1, .frame = {0, 0, 1440, 900}, .backingScaleFactor = 2};
    const Screen external{.number = 2, .frame = {1440, 0, 1920, 1080}};
    const auto &first = list.update({builtIn, external});
    EXPECT_EQ(&list.update({builtIn, external}), &first) << "nothing has changed";
    const auto &second = list.update({builtIn});
    EXPECT_THAT(list.update({}), IsEmpty());
    EXPECT_THAT(first, ElementsAre(builtIn, external));
    EXPECT_THAT(second, ElementsAre(builtIn));
    mainLoop.runPosted();
    EXPECT_THAT(list.update({external}), ElementsAre(external));
}

TEST(OverrideClaimsTest, MethodThatOverridesNothingIsNamed) {
    const std::vector<OverrideClaim> claims{{"Window", "close", ""},
                                            {"Window", "clothe", ""},
                                            {"Window", "open", ""},
                                            {"Delegate", "didOpem:", "Opening"}};
    const auto broken = brokenClaims(
        claims, [](const auto &claim) { return claim.selector != "open"; },
        [](const auto &claim) { return claim.selector == "close"; });
    EXPECT_THAT(broken, ElementsAre("-[Window clothe] overrides nothing of its superclass",
                                    "-[Window open] is not implemented",
                                    "-[Delegate didOpem:] overrides nothing of Opening"));
}

} // namespace
} // namespace lumo::macos
