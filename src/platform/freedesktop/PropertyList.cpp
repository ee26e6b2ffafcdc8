#include "platform/freedesktop/PropertyList.h"

#include "support/Utf8.h"

#include <algorithm>

namespace lumo::freedesktop {

namespace {

constexpr std::string_view binaryMagic = "bplist";

// By the production Char of XML 1.0, section 2.2.
bool fitsXml(std::string_view text) {
    while (!text.empty()) {
        const auto point = takeCodePoint(text);
        const bool isControl = point < 0x20 && point != U'\t' && point != U'\n' && point != U'\r';
        if (isControl || point == 0xfffe || point == 0xffff) {
            return false;
        }
    }
    return true;
}

bool fitsXml(const PropertyList &list) {
    if (const auto *text = std::get_if<std::string>(&list.value)) {
        return fitsXml(std::string_view(*text));
    }
    if (const auto *array = std::get_if<PropertyList::Array>(&list.value)) {
        return std::ranges::all_of(*array, [](const auto &item) { return fitsXml(item); });
    }
    if (const auto *dictionary = std::get_if<PropertyList::Dictionary>(&list.value)) {
        return std::ranges::all_of(*dictionary, [](const auto &entry) {
            return fitsXml(std::string_view(entry.first)) && fitsXml(entry.second);
        });
    }
    return true;
}

} // namespace

PropertyListFormat propertyListFormat(std::string_view contents) {
    return contents.starts_with(binaryMagic) ? PropertyListFormat::binary : PropertyListFormat::xml;
}

std::optional<PropertyList> readPropertyList(std::string_view contents, std::string &problem) {
    return propertyListFormat(contents) == PropertyListFormat::binary
               ? readBinaryPropertyList(contents, problem)
               : readXmlPropertyList(contents, problem);
}

std::string printPropertyList(const PropertyList &list, PropertyListFormat format) {
    return format == PropertyListFormat::xml && fitsXml(list) ? printXmlPropertyList(list)
                                                              : printBinaryPropertyList(list);
}

} // namespace lumo::freedesktop
