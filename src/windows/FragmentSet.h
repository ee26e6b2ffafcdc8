#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string_view>

namespace lumo {

// A fixed list of words, and the question whether a text contains one of them in whatever case. The
// words are of two or more lower-case ASCII letters and spaces, at most 16 of them, and outlive the
// set.
//
// Only the ASCII letters of a text are lower-cased. For UTF-8 that is exact as long as no word
// holds a "k", which is also the lower case of the Kelvin sign.
class FragmentSet {
  public:
    consteval FragmentSet(std::initializer_list<std::string_view> fragments) {
        for (const auto fragment : fragments) {
            const auto bit = static_cast<std::uint16_t>(1U << count_);
            // Not a constant expression for a word or a list that breaks the rules above.
            fragments_.at(count_++) = fragment;
            mark(first_, checked(fragment).at(0), bit);
            mark(second_, fragment.at(1), bit);
        }
    }

    // One pass over the text, without copying it.
    bool anyIn(std::string_view text) const;

  private:
    using Positions = std::array<std::uint16_t, 256>;

    static constexpr std::size_t byte(char character) {
        return static_cast<unsigned char>(character);
    }
    static consteval std::string_view checked(std::string_view fragment) {
        for (const char character : fragment) {
            if (character != ' ' && (character < 'a' || character > 'z' || character == 'k')) {
                throw "a fragment holds a character that can't be compared byte by byte";
            }
        }
        return fragment;
    }

    static consteval void mark(Positions &positions, char character, std::uint16_t bit) {
        positions.at(byte(character)) |= bit;
        if (character >= 'a' && character <= 'z') {
            positions.at(byte(static_cast<char>(character - 'a' + 'A'))) |= bit;
        }
    }

    std::array<std::string_view, 16> fragments_{};
    std::size_t count_ = 0;
    // For each byte, a bit for each fragment that has it as its first, or second, character.
    Positions first_{};
    Positions second_{};
};

} // namespace lumo
