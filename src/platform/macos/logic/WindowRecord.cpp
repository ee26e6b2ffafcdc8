#include "platform/macos/logic/WindowRecord.h"

#include <span>
#include <utility>

namespace lumo::macos {

namespace {

Dictionary record(std::span<const RecordField> fields, const FieldReader &read) {
    Dictionary dictionary;
    for (std::size_t index = 0; index < fields.size(); ++index) {
        if (const auto value = read(index)) {
            dictionary.set(fields[index].key, cast(*value, fields[index].type).value_or(*value));
        }
    }
    return dictionary;
}

} // namespace

Dictionary windowRecord(const FieldReader &fields, const FieldReader *bounds) {
    auto dictionary = record(windowFields, fields);
    if (bounds != nullptr) {
        dictionary.set(windowKey::bounds, record(boundsFields, *bounds));
    }
    return dictionary;
}

} // namespace lumo::macos
