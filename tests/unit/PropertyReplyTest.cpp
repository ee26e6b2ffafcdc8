#include "platform/x11/server/PropertyReply.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace lumo::x11 {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr xcb_atom_t utf8String = 300;

// A reply as libxcb hands it out: the value follows the structure.
class Reply {
  public:
    Reply(xcb_atom_t type, int format, const std::string &value)
        : memory_(sizeof(xcb_get_property_reply_t) / 4 + value.size() / 4 + 1) {
        xcb_get_property_reply_t head{};
        head.type = type;
        head.format = static_cast<std::uint8_t>(format);
        head.value_len = static_cast<std::uint32_t>(value.size() * 8 / head.format);
        std::memcpy(memory_.data(), &head, sizeof head);
        std::memcpy(memory_.data() + sizeof head / 4, value.data(), value.size());
    }

    const xcb_get_property_reply_t *get() const {
        return reinterpret_cast<const xcb_get_property_reply_t *>(memory_.data());
    }

  private:
    std::vector<std::uint32_t> memory_;
};

TEST(PropertyReply, TextIsUtf8) {
    const std::vector<std::tuple<xcb_atom_t, std::string, std::optional<std::string>>> cases = {
        {utf8String, "Zürich", "Zürich"},
        {utf8String, "Z\xC3\xBCrich\xff", "Zürich\xEF\xBF\xBD"},
        {XCB_ATOM_STRING, "Z\xfcrich", "Zürich"},
        {XCB_ATOM_STRING, "Z\xC3\xBCrich", "Zürich"},
        {XCB_ATOM_STRING, std::string("first\0second", 12), "first"},
        {XCB_ATOM_STRING, "", std::nullopt},
        {XCB_ATOM_STRING, std::string("\0second", 7), std::nullopt},
    };
    for (const auto &[type, value, expected] : cases) {
        EXPECT_EQ(text(Reply(type, 8, value).get(), utf8String), expected) << value;
    }
}

TEST(PropertyReply, OtherFormatsCountAsMissing) {
    const std::string twoValues("\x01\0\0\0\x02\0\0\0", 8);
    const Reply numbers(XCB_ATOM_CARDINAL, 32, twoValues);
    EXPECT_THAT(values32(numbers.get()), ElementsAre(1, 2));
    EXPECT_EQ(value32(numbers.get()), 1U);
    EXPECT_EQ(bytes(numbers.get()), "");
    EXPECT_EQ(text(numbers.get(), utf8String), std::nullopt);
    const Reply letters(XCB_ATOM_STRING, 8, twoValues);
    EXPECT_THAT(values32(letters.get()), IsEmpty());
    EXPECT_EQ(value32(letters.get()), std::nullopt);
    EXPECT_EQ(bytes(letters.get()), twoValues);
    EXPECT_EQ(value32(Reply(XCB_ATOM_CARDINAL, 32, "").get()), std::nullopt);
    EXPECT_EQ(value32(nullptr), std::nullopt);
    EXPECT_EQ(text(nullptr, utf8String), std::nullopt);
}

} // namespace
} // namespace lumo::x11
