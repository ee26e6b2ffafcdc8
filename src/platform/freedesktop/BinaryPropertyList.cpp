#include "platform/freedesktop/PropertyList.h"
#include "support/Utf8.h"

#include <glib.h>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <limits>

// The format: eight bytes of magic, the objects, the table of their offsets, and a trailer of 32
// bytes. Each object begins with a byte whose upper half is its kind; numbers are big-endian.
namespace lumo::freedesktop {

namespace {

constexpr std::string_view magic = "bplist00";
constexpr std::size_t trailerSize = 32;

// The kinds of objects, as their first half byte says.
namespace marker {
constexpr unsigned singleton = 0x0;
constexpr unsigned integer = 0x1;
constexpr unsigned real = 0x2;
constexpr unsigned date = 0x3;
constexpr unsigned data = 0x4;
constexpr unsigned ascii = 0x5;
constexpr unsigned utf16 = 0x6;
constexpr unsigned uid = 0x8;
constexpr unsigned array = 0xa;
constexpr unsigned dictionary = 0xd;
} // namespace marker

constexpr unsigned falseDetail = 0x8;
constexpr unsigned trueDetail = 0x9;
constexpr unsigned countFollows = 0xf;
constexpr unsigned largeDetail = 4; // of an integer: 16 bytes
constexpr unsigned doubleDetail = 3;

std::string utf8Of(std::string_view bytes) {
    std::string text;
    const auto unit = [bytes](std::size_t at) {
        return static_cast<gunichar>(static_cast<unsigned char>(bytes[at]) << 8U |
                                     static_cast<unsigned char>(bytes[at + 1]));
    };
    for (std::size_t at = 0; at < bytes.size(); at += 2) {
        gunichar point = unit(at);
        const bool isHigh = (point & 0xfc00U) == 0xd800;
        if (isHigh && at + 2 < bytes.size() && (unit(at + 2) & 0xfc00U) == 0xdc00) {
            at += 2;
            point = 0x10000 + ((point & 0x3ffU) << 10U) + (unit(at) & 0x3ffU);
        } else if ((point & 0xf800U) == 0xd800) {
            point = 0xfffd; // half of a character
        }
        std::array<char, 6> encoded{};
        text.append(encoded.data(),
                    static_cast<std::size_t>(g_unichar_to_utf8(point, encoded.data())));
    }
    return text;
}

class Reader {
  public:
    explicit Reader(std::string_view contents)
        : contents_(contents) {}

    const std::string &problem() const { return problem_; }

    std::optional<PropertyList> read() {
        if (contents_.size() < magic.size() + trailerSize) {
            return std::nullopt;
        }
        const auto trailer = contents_.size() - trailerSize;
        offsetSize_ = number(trailer + 6, 1);
        referenceSize_ = number(trailer + 7, 1);
        count_ = number(trailer + 8, 8);
        const auto top = number(trailer + 16, 8);
        table_ = number(trailer + 24, 8);
        const bool isSound = offsetSize_ - 1 < 8 && referenceSize_ - 1 < 8 && table_ <= trailer &&
                             count_ <= (trailer - table_) / offsetSize_;
        end_ = table_;
        return isSound ? read(top, 0) : std::nullopt;
    }

  private:
    // An object's first byte, taken apart, and where its content lies.
    struct Head {
        unsigned kind;
        unsigned detail;
        std::size_t at;
    };

    std::uint64_t number(std::size_t at, std::size_t size) const {
        std::uint64_t value = 0;
        for (const char byte : contents_.substr(at, size)) {
            value = value << 8U | static_cast<unsigned char>(byte);
        }
        return value;
    }

    bool holds(std::size_t at, std::uint64_t size) const { return at <= end_ && size <= end_ - at; }

    // One list may name an object many times: what all of it takes together is limited, too.
    bool spend(std::uint64_t size) {
        constexpr std::uint64_t limit = std::uint64_t{64} << 20U;
        spent_ += sizeof(PropertyList) + std::min(size, limit);
        return spent_ <= limit;
    }

    std::optional<PropertyList> read(std::uint64_t index, std::size_t depth) {
        if (depth > PropertyList::depthLimit) {
            problem_ = "nested too deeply";
            return std::nullopt;
        }
        if (index >= count_) {
            return std::nullopt;
        }
        const auto offset = number(table_ + index * offsetSize_, offsetSize_);
        if (!holds(offset, 1)) {
            return std::nullopt;
        }
        const unsigned first = static_cast<unsigned char>(contents_[offset]);
        const Head head{first >> 4U, first & 0xfU, offset + 1};
        return head.kind < marker::data || head.kind == marker::uid ? readFixed(head)
                                                                    : readCounted(head, depth);
    }

    std::optional<PropertyList> readFixed(const Head &head) {
        if (head.kind == marker::singleton) {
            return head.detail == falseDetail || head.detail == trueDetail
                       ? std::optional(PropertyList{head.detail == trueDetail})
                       : std::nullopt;
        }
        const std::size_t size =
            head.kind == marker::uid ? head.detail + 1 : std::size_t{1} << head.detail;
        if (size > 16 || !holds(head.at, size) || !spend(0)) {
            return std::nullopt;
        }
        const auto bits = number(head.at, size);
        if (head.kind == marker::uid) {
            return size <= 8 ? std::optional(PropertyList{PropertyList::Uid{bits}}) : std::nullopt;
        }
        if (head.kind == marker::integer) {
            return readInteger(head.at, size);
        }
        if (head.kind == marker::real && size == 4) {
            return PropertyList{double{std::bit_cast<float>(static_cast<std::uint32_t>(bits))}};
        }
        if (size != 8) {
            return std::nullopt;
        }
        const auto value = std::bit_cast<double>(bits);
        return head.kind == marker::real ? PropertyList{value}
                                         : PropertyList{PropertyList::Date{value}};
    }

    // Shorter ones than eight bytes have no sign.
    std::optional<PropertyList> readInteger(std::size_t at, std::size_t size) const {
        const auto value = number(at + (size > 8 ? size - 8 : 0), std::min<std::size_t>(size, 8));
        const auto isNegative = static_cast<std::int64_t>(value) < 0;
        const auto high = size > 8 ? number(at, 8) : isNegative ? ~std::uint64_t{0} : 0;
        if (high == (isNegative ? ~std::uint64_t{0} : 0)) {
            return PropertyList{static_cast<std::int64_t>(value)};
        }
        return high == 0
                   ? std::optional(PropertyList{PropertyList::LargeInteger{std::to_string(value)}})
                   : std::nullopt;
    }

    std::optional<PropertyList> readCounted(Head head, std::size_t depth) {
        std::uint64_t count = head.detail;
        if (head.detail == countFollows) {
            const auto size = holds(head.at, 1) ? std::size_t{1} << (number(head.at, 1) & 0xfU) : 9;
            if (size > 8 || number(head.at, 1) >> 4U != marker::integer ||
                !holds(head.at + 1, size)) {
                return std::nullopt;
            }
            count = number(head.at + 1, size);
            head.at += 1 + size;
        }
        if (head.kind == marker::array || head.kind == marker::dictionary) {
            return readContainer(head, count, depth);
        }
        const auto width = head.kind == marker::utf16 ? std::uint64_t{2} : std::uint64_t{1};
        if (count > contents_.size() || !holds(head.at, count * width) || !spend(count * width)) {
            return std::nullopt;
        }
        const auto bytes = contents_.substr(head.at, count * width);
        switch (head.kind) {
        case marker::data:
            return PropertyList{Bytes(bytes.begin(), bytes.end())};
        case marker::ascii:
            return std::ranges::all_of(bytes, [](char c) { return (c & 0x80) == 0; })
                       ? std::optional(PropertyList{std::string(bytes)})
                       : std::nullopt;
        case marker::utf16:
            return PropertyList{utf8Of(bytes)};
        default:
            return std::nullopt;
        }
    }

    std::optional<PropertyList> readContainer(const Head &head, std::uint64_t count,
                                              std::size_t depth) {
        const std::uint64_t width = (head.kind == marker::dictionary ? 2 : 1) * referenceSize_;
        if (count > contents_.size() || !holds(head.at, count * width) || !spend(0)) {
            return std::nullopt;
        }
        const auto item = [&](std::uint64_t index) {
            return read(number(head.at + index * referenceSize_, referenceSize_), depth + 1);
        };
        PropertyList::Array items;
        PropertyList::Dictionary entries;
        for (std::uint64_t index = 0; index < count; ++index) {
            if (head.kind == marker::array) {
                auto value = item(index);
                if (!value) {
                    return std::nullopt;
                }
                items.push_back(std::move(*value));
                continue;
            }
            auto key = item(index);
            auto value = item(count + index);
            if (!key || !value || !std::holds_alternative<std::string>(key->value)) {
                return std::nullopt;
            }
            entries.insert_or_assign(std::get<std::string>(key->value), std::move(*value));
        }
        return head.kind == marker::array ? PropertyList{std::move(items)}
                                          : PropertyList{std::move(entries)};
    }

    std::string_view contents_;
    std::uint64_t offsetSize_ = 0;
    std::uint64_t referenceSize_ = 0;
    std::uint64_t count_ = 0;
    std::uint64_t table_ = 0;
    std::uint64_t end_ = 0; // of the objects
    std::uint64_t spent_ = 0;
    std::string problem_ = "not a property list";
};

// The least of 1, 2, 4 and 8 bytes, as the exponent of two, that holds the number.
unsigned exponentFor(std::uint64_t number) {
    return number <= 0xff ? 0 : number <= 0xffff ? 1 : number <= 0xffffffff ? 2 : 3;
}

class BinaryPrinter {
  public:
    std::string print(const PropertyList &list) {
        count(list);
        referenceSize_ = std::size_t{1} << exponentFor(total_);
        text_ = magic;
        offsets_.reserve(total_);
        add(list);
        const auto table = text_.size();
        const auto offsetSize = std::size_t{1} << exponentFor(table);
        for (const auto offset : offsets_) {
            addNumber(offset, offsetSize);
        }
        text_.append(6, '\0');
        addNumber(offsetSize, 1);
        addNumber(referenceSize_, 1);
        addNumber(offsets_.size(), 8);
        addNumber(0, 8); // the outermost object is the first
        addNumber(table, 8);
        return std::move(text_);
    }

  private:
    void count(const PropertyList &list) {
        ++total_;
        if (const auto *items = std::get_if<PropertyList::Array>(&list.value)) {
            std::ranges::for_each(*items, [this](const auto &item) { count(item); });
        } else if (const auto *entries = std::get_if<PropertyList::Dictionary>(&list.value)) {
            total_ += entries->size();
            std::ranges::for_each(*entries, [this](const auto &entry) { count(entry.second); });
        }
    }

    std::size_t add(const PropertyList &list) {
        const auto index = beginObject();
        std::visit([this](const auto &value) { addObject(value); }, list.value);
        return index;
    }

    std::size_t beginObject() {
        offsets_.push_back(text_.size());
        return offsets_.size() - 1;
    }

    void addNumber(std::uint64_t number, std::size_t size) {
        for (std::size_t byte = size; byte-- > 0;) {
            text_ += static_cast<char>(byte < 8 ? number >> (8 * byte) & 0xffU : 0);
        }
    }

    void addHead(unsigned kind, std::size_t detail) {
        text_ += static_cast<char>(kind << 4U | detail);
    }

    void addCountedHead(unsigned kind, std::size_t count) {
        addHead(kind, std::min<std::size_t>(count, countFollows));
        if (count >= countFollows) {
            addObject(static_cast<std::int64_t>(count));
        }
    }

    void addObject(bool value) { addHead(marker::singleton, value ? trueDetail : falseDetail); }

    void addObject(std::int64_t value) {
        const auto bits = static_cast<std::uint64_t>(value);
        const auto exponent = exponentFor(bits);
        addHead(marker::integer, exponent);
        addNumber(bits, std::size_t{1} << exponent);
    }

    // Beyond 64 bits, which only XML holds, the nearest that fits.
    void addObject(const PropertyList::LargeInteger &value) {
        if (value.digits.starts_with('-')) {
            addObject(std::numeric_limits<std::int64_t>::min());
            return;
        }
        auto number = std::numeric_limits<std::uint64_t>::max();
        std::from_chars(value.digits.data(), value.digits.data() + value.digits.size(), number);
        addHead(marker::integer, largeDetail);
        addNumber(number, std::size_t{1} << largeDetail);
    }

    void addObject(double value) {
        addHead(marker::real, doubleDetail);
        addNumber(std::bit_cast<std::uint64_t>(value), sizeof value);
    }

    void addObject(const PropertyList::Date &value) {
        addHead(marker::date, doubleDetail);
        addNumber(std::bit_cast<std::uint64_t>(value.seconds), sizeof value.seconds);
    }

    void addObject(const Bytes &value) {
        addCountedHead(marker::data, value.size());
        text_.append(value.begin(), value.end());
    }

    void addObject(const std::string &value) {
        if (std::ranges::all_of(value, [](char c) { return (c & 0x80) == 0; })) {
            addCountedHead(marker::ascii, value.size());
            text_ += value;
            return;
        }
        std::vector<std::uint64_t> units;
        for (std::string_view rest = value; !rest.empty();) {
            const std::uint64_t point = takeCodePoint(rest);
            if (point >= 0x10000) {
                units.push_back(0xd800 + ((point - 0x10000) >> 10U));
                units.push_back(0xdc00 + (point & 0x3ffU));
            } else {
                units.push_back(point);
            }
        }
        addCountedHead(marker::utf16, units.size());
        std::ranges::for_each(units, [this](auto unit) { addNumber(unit, 2); });
    }

    void addObject(const PropertyList::Uid &value) {
        const auto size = std::size_t{1} << exponentFor(value.number);
        addHead(marker::uid, size - 1);
        addNumber(value.number, size);
    }

    void addObject(const PropertyList::Array &items) {
        addCountedHead(marker::array, items.size());
        auto slot = addReferences(items.size());
        for (const auto &item : items) {
            setReference(slot, add(item));
            slot += referenceSize_;
        }
    }

    void addObject(const PropertyList::Dictionary &entries) {
        addCountedHead(marker::dictionary, entries.size());
        auto slot = addReferences(2 * entries.size());
        for (const auto &[key, value] : entries) {
            setReference(slot, beginObject());
            addObject(key);
            setReference(slot + entries.size() * referenceSize_, add(value));
            slot += referenceSize_;
        }
    }

    std::size_t addReferences(std::size_t count) {
        const auto at = text_.size();
        text_.append(count * referenceSize_, '\0');
        return at;
    }

    void setReference(std::size_t at, std::size_t index) {
        for (std::size_t byte = referenceSize_; byte-- > 0; index >>= 8U) {
            text_[at + byte] = static_cast<char>(index & 0xffU);
        }
    }

    std::string text_;
    std::size_t total_ = 0;
    std::size_t referenceSize_ = 1;
    std::vector<std::size_t> offsets_; // of the objects, in their order
};

} // namespace

std::optional<PropertyList> readBinaryPropertyList(std::string_view contents,
                                                   std::string &problem) {
    Reader reader(contents);
    auto list = reader.read();
    if (!list) {
        problem = reader.problem();
    }
    return list;
}

std::string printBinaryPropertyList(const PropertyList &list) {
    return BinaryPrinter().print(list);
}

} // namespace lumo::freedesktop
