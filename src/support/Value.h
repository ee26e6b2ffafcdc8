#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace lumo {

class Value;

using Bytes = std::vector<std::uint8_t>;

// Values under string keys, in the order in which they were added. Keys are not copied: they must
// be string literals or constants that outlive the dictionary.
class Dictionary {
  public:
    using Entry = std::pair<std::string_view, Value>;

    Dictionary();
    Dictionary(std::initializer_list<Entry> entries);
    ~Dictionary();
    Dictionary(const Dictionary &);
    Dictionary(Dictionary &&) noexcept;
    Dictionary &operator=(const Dictionary &);
    Dictionary &operator=(Dictionary &&) noexcept;

    // Adds the value, or replaces the one under the key.
    void set(std::string_view key, Value value);

    // Removes the value under the key, if there is one.
    void erase(std::string_view key);

    // The value under the key; null when there is none. Valid until the dictionary changes.
    const Value *find(std::string_view key) const;

    const std::vector<Entry> &entries() const { return entries_; }

    bool operator==(const Dictionary &) const;

  private:
    std::vector<Entry> entries_;
};

// One typed value as preferences and window records hold them. The readers return nothing when the
// value is of another type; the numeric ones convert between integer and real only where they say
// so.
class Value {
  public:
    Value(bool value);
    Value(int value);
    Value(std::int64_t value);
    Value(std::uint32_t value);
    Value(double value);
    Value(const char *value);
    Value(std::string value);
    Value(Bytes value);
    Value(Dictionary value);

    std::optional<bool> boolean() const;
    std::optional<std::int64_t> integer() const;
    std::optional<double> real() const;
    const std::string *string() const;
    const Bytes *data() const;
    const Dictionary *dictionary() const;

    // A real, or an integer converted to one.
    std::optional<double> number() const;

    bool operator==(const Value &) const;

  private:
    std::variant<bool, std::int64_t, double, std::string, Bytes, Dictionary> value_;
};

// The readers are inline because the window list asks thousands of them at every tick.

inline const Value *Dictionary::find(std::string_view key) const {
    for (const auto &[existing, value] : entries_) {
        // Keys are constants, so the same key is nearly always the same characters in memory.
        if (existing.size() == key.size() && (existing.data() == key.data() || existing == key)) {
            return &value;
        }
    }
    return nullptr;
}

inline std::optional<bool> Value::boolean() const {
    const auto *value = std::get_if<bool>(&value_);
    return value ? std::optional(*value) : std::nullopt;
}

inline std::optional<std::int64_t> Value::integer() const {
    const auto *value = std::get_if<std::int64_t>(&value_);
    return value ? std::optional(*value) : std::nullopt;
}

inline std::optional<double> Value::real() const {
    const auto *value = std::get_if<double>(&value_);
    return value ? std::optional(*value) : std::nullopt;
}

inline const std::string *Value::string() const {
    return std::get_if<std::string>(&value_);
}

inline const Bytes *Value::data() const {
    return std::get_if<Bytes>(&value_);
}

inline const Dictionary *Value::dictionary() const {
    return std::get_if<Dictionary>(&value_);
}

inline std::optional<double> Value::number() const {
    if (const auto whole = integer()) {
        return static_cast<double>(*whole);
    }
    return real();
}

} // namespace lumo
