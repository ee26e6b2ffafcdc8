#include "windows/FragmentSet.h"

#include <algorithm>

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
    for (std::size_t position = 0; position < text.size(); ++position) {
        const unsigned candidates = startingWith_[byte(text[position])];
        for (std::size_t index = 0; (candidates >> index) != 0; ++index) {
            if ((candidates >> index & 1U) != 0 &&
                beginsWith(text.substr(position), fragments_[index])) {
                return true;
            }
        }
    }
    return false;
}

} // namespace lumo
