#include "platform/macos/logic/FilterTable.h"
#include "platform/macos/logic/LayerDifference.h"
#include "platform/macos/logic/NativeNumber.h"
#include "platform/macos/logic/OverrideClaims.h"
#include "platform/macos/logic/TimerPolicy.h"
#include "platform/macos/logic/WindowFlags.h"
#include "platform/macos/logic/WindowOrder.h"
#include "platform/macos/logic/WindowRecord.h"
#include "windows/WindowDescriptor.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <map>

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
class NativeWindow {
  public:
    std::map<std::string_view, Value> entries;
    std::optional<std::map<std::string_view, Value>> bounds = std::map<std::string_view, Value>{};

    Dictionary record() const {
        const FieldReader fields = [this](std::size_t field) {
            return look(entries, windowFields.at(field).key);
        };
        const FieldReader sides = [this](std::size_t field) {
            return look(*bounds, boundsFields.at(field).key);
        };
        return windowRecord(fields, bounds ? &sides : nullptr);
    }

  private:
    static std::optional<Value> look(const std::map<std::string_view, Value> &dictionary,
                                     std::string_view key) {
        const auto found = dictionary.find(key);
        return found != dictionary.end() ? std::optional(found->second) : std::nullopt;
    }
};

TEST(WindowRecordTest, WhatTheServerKeepsAsOtherNumbersIsDescribedAllTheSame) {
    NativeWindow window;
    window.entries = {{windowKey::number, 41.0},        {windowKey::ownerPID, 7},
                      {windowKey::ownerName, "Editor"}, {windowKey::layer, 0},
                      {windowKey::isOnscreen, 1},       {windowKey::alpha, 1},
                      {"kCGWindowStoreType", 1}};
    window.bounds = {{boundsKey::x, 10}, {boundsKey::y, 20.5}, {boundsKey::width, 300}};
    const auto record = window.record();
    const auto described = WindowDescriptor::from(record, 0, std::nullopt);
    ASSERT_TRUE(described);
    EXPECT_EQ(described->windowID, 41U);
    EXPECT_EQ(described->bounds, (Rect{10, 20.5, 300, 0}));
    EXPECT_TRUE(described->isOnScreen);
    EXPECT_EQ(described->name, std::nullopt);
    EXPECT_EQ(record.find(windowKey::alpha)->real(), 1.0);
    EXPECT_EQ(record.find("kCGWindowStoreType"), nullptr);
}

TEST(WindowRecordTest, WhatIsIllTypedStaysSoAndWhatIsMissingMissing) {
    NativeWindow window;
    window.entries = {{windowKey::number, "41"}, {windowKey::layer, 2.5}};
    EXPECT_EQ(window.record().find(windowKey::number)->unsigned32(), std::nullopt);
    EXPECT_EQ(window.record().find(windowKey::layer)->integer(), std::nullopt);
    EXPECT_EQ(window.record().find(windowKey::ownerPID), nullptr);
    EXPECT_THAT(window.record().find(windowKey::bounds)->dictionary()->entries(), IsEmpty());
    window.bounds.reset();
    EXPECT_EQ(window.record().find(windowKey::bounds), nullptr);
}

class LayerDifferenceTest : public testing::Test {
  protected:
    LayerDifferenceTest() {
        Layer backdrop;
        backdrop.kind = Layer::Kind::backdrop;
        backdrop.options = {{"windowServerAware", true}, {"scale", 2.0}, {"bleedAmount", 0.0}};
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
    EXPECT_THAT(first.layers[0].options, ElementsAre(0, 1, 2));
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
             Case{[](Layer &layer) { layer.compositingFilter = "softLightBlendMode"; },
                  {.compositingFilter = true}},
             Case{[](Layer &layer) {
                      layer.filters = {{filterType::gaussianBlur, {}}};
                  },
                  {.filters = true}},
             Case{[](Layer &layer) { layer.options.set("scale", 1.0); }, {.options = {1}}},
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
            {{windowKey::number, number}, {windowKey::layer, number >= 100 ? 25 : 0}});
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
}

TEST(MacTablesTest, FlagsOfThePlatform) {
    EXPECT_EQ(styleMask::overlay, 0x8080U);
    EXPECT_EQ(styleMask::guidance, 32771U);
    EXPECT_EQ(styleMask::settings, 7U);
    EXPECT_EQ(collectionBehavior::overlay, 13U);
    EXPECT_EQ(windowListOption::everyday, 17U);
    EXPECT_EQ(autoresizing::both, 18U);
}

TEST(MacTablesTest, OnlyKnownFiltersAndParametersAreSet) {
    const std::vector<Filter> wanted{
        {filterType::gaussianBlur,
         {{filterKey::inputRadius, 24.0}, {"inputFog", 1}, {filterKey::inputNormalizeEdges, true}}},
        {"colorSparkle", {{filterKey::inputAmount, 1.0}}},
        {filterType::colorContrast, {{filterKey::inputAmount, 1.0}}}};
    const std::vector<Filter> known{
        {filterType::gaussianBlur,
         {{filterKey::inputRadius, 24.0}, {filterKey::inputNormalizeEdges, true}}},
        {filterType::colorContrast, {{filterKey::inputAmount, 1.0}}}};
    EXPECT_EQ(knownFilters(wanted), known);
    EXPECT_TRUE(isCompositingFilter("overlayBlendMode"));
    EXPECT_FALSE(isCompositingFilter(""));
}

TEST(MacTablesTest, OnlyLeisurelyTimersMayBeLate) {
    EXPECT_EQ(timerPolicy(1.0 / 60, true), (TimerPolicy{1.0 / 60, 0}));
    EXPECT_EQ(timerPolicy(2, false), (TimerPolicy{2, 0}));
    EXPECT_EQ(timerPolicy(2, true), (TimerPolicy{2, 0.2}));
    for (const double odd : {0.0, -1.0, std::nan("")}) {
        EXPECT_EQ(timerPolicy(odd, false), (TimerPolicy{0.0001, 0})) << odd;
    }
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
