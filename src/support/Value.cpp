#include "support/Value.h"

#include <utility>

namespace lumo {

Value::Value(bool value)
    : value_(value) {
}
Value::Value(int value)
    : value_(static_cast<std::int64_t>(value)) {
}
Value::Value(std::int64_t value)
    : value_(value) {
}
Value::Value(std::uint32_t value)
    : value_(static_cast<std::int64_t>(value)) {
}
Value::Value(double value)
    : value_(value) {
}
Value::Value(const char *value)
    : value_(std::string(value)) {
}
Value::Value(std::string value)
    : value_(std::move(value)) {
}
Value::Value(Bytes value)
    : value_(std::move(value)) {
}

std::optional<bool> Value::boolean() const {
    const auto *value = std::get_if<bool>(&value_);
    return value ? std::optional(*value) : std::nullopt;
}

std::optional<std::int64_t> Value::integer() const {
    const auto *value = std::get_if<std::int64_t>(&value_);
    return value ? std::optional(*value) : std::nullopt;
}

std::optional<double> Value::real() const {
    const auto *value = std::get_if<double>(&value_);
    return value ? std::optional(*value) : std::nullopt;
}

const std::string *Value::string() const {
    return std::get_if<std::string>(&value_);
}

const Bytes *Value::data() const {
    return std::get_if<Bytes>(&value_);
}

std::optional<double> Value::number() const {
    if (const auto whole = integer()) {
        return static_cast<double>(*whole);
    }
    return real();
}

bool Value::operator==(const Value &) const = default;

} // namespace lumo
