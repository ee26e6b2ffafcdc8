#include "platform/macos/logic/AnsiKeyboard.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace lumo::macos {

namespace {

constexpr std::array<std::pair<std::int64_t, std::string_view>, 43> keyNames = {{
    {0, "A"},       {1, "S"},     {2, "D"},     {3, "F"},       {4, "H"},      {5, "G"},
    {6, "Z"},       {7, "X"},     {8, "C"},     {9, "V"},       {11, "B"},     {12, "Q"},
    {13, "W"},      {14, "E"},    {15, "R"},    {16, "Y"},      {17, "T"},     {31, "O"},
    {32, "U"},      {34, "I"},    {35, "P"},    {36, "Return"}, {37, "L"},     {38, "J"},
    {40, "K"},      {45, "N"},    {46, "M"},    {48, "Tab"},    {49, "Space"}, {51, "Delete"},
    {53, "Escape"}, {96, "F5"},   {97, "F6"},   {98, "F7"},     {99, "F3"},    {100, "F8"},
    {101, "F9"},    {103, "F11"}, {109, "F10"}, {111, "F12"},   {118, "F4"},   {120, "F2"},
    {122, "F1"},
}};

} // namespace

std::string AnsiKeyboard::keyName(std::int64_t keyCode) const {
    const auto *name =
        std::ranges::find(keyNames, keyCode, [](const auto &key) { return key.first; });
    return name != keyNames.end() ? std::string(name->second) : "Key" + std::to_string(keyCode);
}

Handle AnsiKeyboard::onNamesDidChange(std::function<void()> /*observer*/) {
    return {};
}

} // namespace lumo::macos
