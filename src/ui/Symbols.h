#pragma once

#include <QColor>
#include <QPainter>
#include <QRectF>
#include <array>
#include <string_view>

namespace lumo {

// The symbols that the interface shows, by the names under which the views ask for them.
namespace symbol {
inline constexpr std::string_view general = "gearshape";
inline constexpr std::string_view appearance = "circle.lefthalf.filled";
inline constexpr std::string_view rules = "list.bullet";
inline constexpr std::string_view shortcuts = "keyboard";
inline constexpr std::string_view warning = "exclamationmark.triangle.fill";
inline constexpr std::string_view info = "info.circle.fill";
inline constexpr std::string_view back = "chevron.left";
inline constexpr std::string_view openPicker = "chevron.up.chevron.down";
inline constexpr std::string_view search = "magnifyingglass";
inline constexpr std::string_view record = "record.circle";
inline constexpr std::string_view raisedHand = "hand.raised.fill";
inline constexpr std::string_view pointingHand = "hand.point.up.left.fill";
inline constexpr std::string_view openLock = "lock.open.fill";
inline constexpr std::string_view reload = "arrow.clockwise";
inline constexpr std::string_view progress = "progress.indicator";
inline constexpr std::string_view check = "checkmark";
inline constexpr std::string_view add = "plus";
inline constexpr std::string_view remove = "minus.circle";

inline constexpr std::array all{general,  appearance, rules,    shortcuts, warning,    info,
                                back,     openPicker, search,   record,    raisedHand, pointingHand,
                                openLock, reload,     progress, check,     add,        remove};
} // namespace symbol

// Draws the symbol as large as fits, in the middle of the area. The name must be one of the above.
void paintSymbol(QPainter &painter, std::string_view name, const QRectF &area, const QColor &color);

} // namespace lumo
