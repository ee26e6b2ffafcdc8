#pragma once

#include <QString>
#include <string>
#include <string_view>

namespace lumo {

// Between the core's UTF-8 and the toolkit's text.
inline QString toQString(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

inline std::string toUtf8(const QString &text) {
    return text.toStdString();
}

} // namespace lumo
