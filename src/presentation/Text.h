#pragma once

#include <string>
#include <string_view>

namespace lumo {

// UTF-8 text in lower case by the rules of the user's language, one code point each. A byte that is
// not UTF-8 stands for itself.
std::wstring lowercased(std::string_view text);

// Whether one name stands before another in a list that a person reads: by the user's language,
// whatever the case of the letters.
bool comesBefore(const std::string &name, const std::string &other);

} // namespace lumo
