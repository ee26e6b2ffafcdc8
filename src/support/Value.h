#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace lumo {

using Bytes = std::vector<std::uint8_t>;

// One typed value, as preferences hold them. The readers return nothing when the value is of
// another type; the numeric ones convert between integer and real only where they say so.
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

    std::optional<bool> boolean() const;
    std::optional<std::int64_t> integer() const;
    std::optional<double> real() const;
    const std::string *string() const;
    const Bytes *data() const;

    // A real, or an integer converted to one.
    std::optional<double> number() const;

    bool operator==(const Value &) const;

  private:
    std::variant<bool, std::int64_t, double, std::string, Bytes> value_;
};

} // namespace lumo
