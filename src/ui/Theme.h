#pragma once

#include <QColor>
#include <QFont>
#include <QMargins>
#include <QPalette>

namespace lumo {

enum class ColorScheme { light, dark };

// What each colour of the palette is for. The palette is the only place that knows the colours, so
// that a change of it repaints everything.
namespace role {
inline constexpr auto window = QPalette::Window;
inline constexpr auto sidebar = QPalette::AlternateBase;
inline constexpr auto card = QPalette::Base;
inline constexpr auto text = QPalette::WindowText;
inline constexpr auto secondaryText = QPalette::PlaceholderText;
inline constexpr auto separator = QPalette::Mid;
inline constexpr auto control = QPalette::Button;
inline constexpr auto controlBorder = QPalette::Dark;
inline constexpr auto hovered = QPalette::Light;
inline constexpr auto pressed = QPalette::Midlight;
inline constexpr auto switchedOff = QPalette::Shadow;
inline constexpr auto accent = QPalette::Highlight;
inline constexpr auto textOnAccent = QPalette::HighlightedText;
inline constexpr auto accentText = QPalette::Link;
inline constexpr auto warningText = QPalette::LinkVisited;
inline constexpr auto recording = QPalette::BrightText;
} // namespace role

QPalette makePalette(ColorScheme scheme);

// The scheme that a palette of the desktop's looks like.
ColorScheme schemeOf(const QPalette &palette);

// The dot beside the state, the same in both schemes.
inline constexpr QColor dotWhenOn(0x2e, 0xa0, 0x5c);
inline constexpr QColor dotWhenOff(0x8a, 0x91, 0xa3);

// Distances, in points.
namespace spacing {
inline constexpr int hairline = 1;
inline constexpr int tight = 2;
inline constexpr int small = 4;
inline constexpr int medium = 8;
inline constexpr int large = 12;
inline constexpr int section = 20;
inline constexpr int page = 28;
} // namespace spacing

// Margins whose first is on the side where lines begin in this language.
QMargins mirrored(int start, int top, int end, int bottom);

namespace corner {
inline constexpr double small = 5;
inline constexpr double control = 7;
inline constexpr double card = 11;
} // namespace corner

// The sizes and weights of text; all in the desktop's own font.
enum class TextStyle {
    caption,
    note,
    noteSemibold,
    body,
    bodyMedium,
    bodySemibold,
    headline,
    title,
    largeTitle
};

QFont fontOf(TextStyle style);

} // namespace lumo
