#include "support/Value.h"

#include <algorithm>
#include <limits>

namespace lumo {

Dictionary::Dictionary() = default;
Dictionary::Dictionary(std::initializer_list<Entry> entries) {
    entries_.reserve(entries.size());
    for (const auto &[key, value] : entries) {
        set(key, value);
    }
}
Dictionary::~Dictionary() = default;
Dictionary::Dictionary(const Dictionary &) = default;
Dictionary::Dictionary(Dictionary &&) noexcept = default;
Dictionary &Dictionary::operator=(const Dictionary &) = default;
Dictionary &Dictionary::operator=(Dictionary &&) noexcept = default;

void Dictionary::set(std::string_view key, Value value) {
    for (auto &[existing, stored] : entries_) {
        if (existing == key) {
            stored = std::move(value);
            return;
        }
    }
    entries_.emplace_back(key, std::move(value));
}

void Dictionary::erase(std::string_view key) {
    std::erase_if(entries_, [key](const Entry &entry) { return entry.first == key; });
}

const Value *Dictionary::find(std::string_view key) const {
    for (const auto &[existing, value] : entries_) {
        // Keys are constants, so the same key is nearly always the same characters in memory.
        if (existing.size() == key.size() && (existing.data() == key.data() || existing == key)) {
            return &value;
        }
    }
    return nullptr;
}

bool Dictionary::operator==(const Dictionary &) const = default;

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
Value::Value(Dictionary value)
    : value_(std::move(value)) {
}

std::optional<bool> Value::boolean() const {
    const auto *value = std::get_if<bool>(&value_);
    return value != nullptr ? std::optional(*value) : std::nullopt;
}

std::optional<std::int64_t> Value::integer() const {
    const auto *value = std::get_if<std::int64_t>(&value_);
    return value != nullptr ? std::optional(*value) : std::nullopt;
}

std::optional<double> Value::real() const {
    const auto *value = std::get_if<double>(&value_);
    return value != nullptr ? std::optional(*value) : std::nullopt;
}

const std::string *Value::string() const {
    return std::get_if<std::string>(&value_);
}

const Bytes *Value::data() const {
    return std::get_if<Bytes>(&value_);
}

const Dictionary *Value::dictionary() const {
    return std::get_if<Dictionary>(&value_);
}

namespace {

template <class Narrow>
std::optional<Narrow> narrowed(std::optional<std::int64_t> wide) {
    if (!wide || *wide < std::numeric_limits<Narrow>::min() ||
        *wide > std::numeric_limits<Narrow>::max()) {
        return std::nullopt;
    }
    return static_cast<Narrow>(*wide);
}

} // namespace

std::optional<std::int32_t> Value::integer32() const {
    return narrowed<std::int32_t>(integer());
}

std::optional<std::uint32_t> Value::unsigned32() const {
    return narrowed<std::uint32_t>(integer());
}

std::optional<double> Value::number() const {
    if (const auto whole = integer()) {
        return static_cast<double>(*whole);
    }
    return real();
}

bool Value::operator==(const Value &) const = default;

} // namespace lumo
