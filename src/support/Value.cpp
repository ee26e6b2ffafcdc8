#include "support/Value.h"

#include <algorithm>

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

bool Value::operator==(const Value &) const = default;

} // namespace lumo
