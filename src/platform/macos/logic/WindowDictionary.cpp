#include "platform/macos/logic/WindowDictionary.h"

#include "platform/macos/logic/NativeNumber.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <utility>

namespace lumo::macos {

namespace {

std::optional<Value> entry(const FieldReader &fields, WindowField field) {
    return fields(static_cast<std::size_t>(field));
}

template <class Integer>
std::optional<Integer> integerIn(const std::optional<Value> &value) {
    const auto number = value ? cast(*value, ValueType::integer) : std::nullopt;
    const auto whole = number ? number->integer() : std::nullopt;
    return whole && std::in_range<Integer>(*whole) ? std::optional(static_cast<Integer>(*whole))
                                                   : std::nullopt;
}

std::optional<double> realIn(const std::optional<Value> &value) {
    const auto number = value ? cast(*value, ValueType::real) : std::nullopt;
    return number ? number->real() : std::nullopt;
}

std::optional<bool> booleanIn(const std::optional<Value> &value) {
    const auto truth = value ? cast(*value, ValueType::boolean) : std::nullopt;
    return truth ? truth->boolean() : std::nullopt;
}

std::optional<std::string> textIn(const std::optional<Value> &value) {
    const auto *text = value ? value->string() : nullptr;
    return text != nullptr ? std::optional(*text) : std::nullopt;
}

std::optional<Rect> rectFrom(const FieldReader &fields) {
    std::array<double, boundsKeys.size()> sides{};
    for (std::size_t field = 0; field < sides.size(); ++field) {
        if (const auto value = fields(field)) {
            const auto side = realIn(value);
            if (!side) {
                return std::nullopt;
            }
            sides[field] = *side;
        }
    }
    const auto [x, y, width, height] = sides;
    return Rect{std::min(x, x + width), std::min(y, y + height), std::fabs(width),
                std::fabs(height)};
}

} // namespace

WindowRecord windowRecord(const FieldReader &fields, const FieldReader *bounds) {
    const auto layer = entry(fields, WindowField::layer);
    const auto alpha = entry(fields, WindowField::alpha);
    WindowRecord record{.number = integerIn<std::uint32_t>(entry(fields, WindowField::number)),
                        .ownerProcess =
                            integerIn<std::int32_t>(entry(fields, WindowField::ownerPID)),
                        .ownerName = textIn(entry(fields, WindowField::ownerName)),
                        .layer = integerIn<std::int64_t>(layer),
                        .bounds = bounds != nullptr ? rectFrom(*bounds) : std::nullopt,
                        .isOnScreen = booleanIn(entry(fields, WindowField::isOnscreen)),
                        .title = textIn(entry(fields, WindowField::name)),
                        .alpha = alpha ? realIn(alpha).value_or(0) : 1};
    if (layer && !record.layer) {
        record.alpha = 0;
    }
    return record;
}

} // namespace lumo::macos
