#pragma once

#include "support/Value.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace lumo::freedesktop {

// A property list, or one of the values within it. Texts are UTF-8 and may hold any character, NUL
// included.
struct PropertyList {
    // A whole number that takes more than 64 bits with a sign, as decimal digits.
    struct LargeInteger {
        std::string digits;

        bool operator==(const LargeInteger &) const = default;
    };

    // Seconds since the beginning of the year 2001, UTC.
    struct Date {
        double seconds = 0;

        bool operator==(const Date &) const = default;
    };

    // What archives refer to their objects by.
    struct Uid {
        std::uint64_t number = 0;

        bool operator==(const Uid &) const = default;
    };

    using Array = std::vector<PropertyList>;
    using Dictionary = std::map<std::string, PropertyList, std::less<>>;

    // Deeper lists are no settings, and would take the stack of any reader that recurses.
    static constexpr std::size_t depthLimit = 512;

    bool operator==(const PropertyList &other) const { return value == other.value; }

    std::variant<bool, std::int64_t, LargeInteger, double, std::string, Bytes, Date, Uid, Array,
                 Dictionary>
        value;
};

enum class PropertyListFormat { xml, binary };

// The format that contents of a file claim to have.
PropertyListFormat propertyListFormat(std::string_view contents);

// Reads either format. Absent, with what is wrong as the problem, for anything else and for what is
// nested deeper than the limit.
std::optional<PropertyList> readPropertyList(std::string_view contents, std::string &problem);

// The contents of a file. A list with characters that XML has no way to write, control characters
// and NUL among them, is binary whatever was asked for.
std::string printPropertyList(const PropertyList &list, PropertyListFormat format);

// The formats themselves, as above; only for lists that XML can write, in the first case.
std::optional<PropertyList> readXmlPropertyList(std::string_view contents, std::string &problem);
std::string printXmlPropertyList(const PropertyList &list);
std::optional<PropertyList> readBinaryPropertyList(std::string_view contents, std::string &problem);
std::string printBinaryPropertyList(const PropertyList &list);

} // namespace lumo::freedesktop
