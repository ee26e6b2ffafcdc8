#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string_view>

namespace lumo {

// A fixed list of words, and the question whether a text contains one of them in whatever case. The
// words are lower-case ASCII letters and spaces, at most 16 of them, and outlive the set.
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
            startingWith_.at(byte(checked(fragment).front())) |= bit;
            startingWith_.at(byte(upper(fragment.front()))) |= bit;
        }
    }

    // One pass over the text, without copying it.
    bool anyIn(std::string_view text) const;

  private:
    static constexpr std::size_t byte(char character) {
        return static_cast<unsigned char>(character);
    }
    static constexpr char upper(char character) {
        return character >= 'a' && character <= 'z' ? static_cast<char>(character - 'a' + 'A')
                                                    : character;
    }
    static consteval std::string_view checked(std::string_view fragment) {
        for (const char character : fragment) {
            if (character != ' ' && (character < 'a' || character > 'z' || character == 'k')) {
                throw "a fragment holds a character that can't be compared byte by byte";
            }
        }
        return fragment;
    }

    std::array<std::string_view, 16> fragments_{};
    std::size_t count_ = 0;
    // For each byte, a bit for each fragment that begins with it.
    std::array<std::uint16_t, 256> startingWith_{};
};

} // namespace lumo
