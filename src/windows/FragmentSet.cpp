#include "windows/FragmentSet.h"

#include <algorithm>
#include <bit>

namespace lumo {

namespace {

char lower(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                : character;
}

bool beginsWith(std::string_view text, std::string_view fragment) {
    return text.size() >= fragment.size() &&
           std::equal(fragment.begin(), fragment.end(), text.begin(),
                      [](char wanted, char actual) { return wanted == lower(actual); });
}

} // namespace

bool FragmentSet::anyIn(std::string_view text) const {
    for (std::size_t position = 0; position + 1 < text.size(); ++position) {
        unsigned candidates = first_[byte(text[position])] & second_[byte(text[position + 1])];
        for (; candidates != 0; candidates &= candidates - 1) {
            const auto index = static_cast<std::size_t>(std::countr_zero(candidates));
            if (beginsWith(text.substr(position), fragments_[index])) {
                return true;
            }
        }
    }
    return false;
}

} // namespace lumo
