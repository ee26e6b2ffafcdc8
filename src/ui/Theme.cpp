#include "ui/Theme.h"

#include <QApplication>
#include <array>
#include <utility>

namespace lumo {

namespace {

struct RoleColor {
    QPalette::ColorRole role;
    QRgb light;
    QRgb dark;
};

constexpr std::array roleColors{
    RoleColor{role::window, 0xf4f5f9, 0x17181d},
    RoleColor{role::sidebar, 0xebedf3, 0x1d1f25},
    RoleColor{role::card, 0xffffff, 0x22242b},
    RoleColor{role::text, 0x1b1d26, 0xeceef5},
    RoleColor{QPalette::Text, 0x1b1d26, 0xeceef5},
    RoleColor{QPalette::ButtonText, 0x1b1d26, 0xeceef5},
    RoleColor{role::secondaryText, 0x5a6072, 0xa6acbd},
    RoleColor{role::separator, 0xe3e6ee, 0x32353f},
    RoleColor{role::control, 0xffffff, 0x2c2f38},
    RoleColor{role::controlBorder, 0xc9cedb, 0x454957},
    RoleColor{role::hovered, 0xeff1f7, 0x2b2e37},
    RoleColor{role::pressed, 0xe2e5ef, 0x363a45},
    RoleColor{role::switchedOff, 0x8d94a6, 0x6d7385},
    RoleColor{role::accent, 0x5a4fe0, 0x655aea},
    RoleColor{role::textOnAccent, 0xffffff, 0xffffff},
    RoleColor{role::accentText, 0x5146d2, 0xada8ff},
    RoleColor{role::warningText, 0x8a4b00, 0xffc266},
    RoleColor{role::recording, 0xcf2a20, 0xff6f63},
    RoleColor{QPalette::ToolTipBase, 0x2a2d36, 0x3a3e4a},
    RoleColor{QPalette::ToolTipText, 0xf4f5f9, 0xf4f5f9},
};

constexpr int opacityWhenDisabled = 165; // of 255; still to be read

} // namespace

QPalette makePalette(ColorScheme scheme) {
    QPalette palette;
    for (const auto &entry : roleColors) {
        const QColor color =
            QColor::fromRgb(scheme == ColorScheme::dark ? entry.dark : entry.light);
        palette.setColor(QPalette::All, entry.role, color);
    }
    for (const auto role :
         {role::text, QPalette::Text, QPalette::ButtonText, role::secondaryText, role::accentText,
          role::textOnAccent, role::accent, role::switchedOff}) {
        QColor color = palette.color(QPalette::Active, role);
        color.setAlpha(opacityWhenDisabled);
        palette.setColor(QPalette::Disabled, role, color);
    }
    return palette;
}

ColorScheme schemeOf(const QPalette &palette) {
    const auto lightness = [&palette](QPalette::ColorRole role) {
        return palette.color(QPalette::Active, role).lightness();
    };
    return lightness(QPalette::WindowText) > lightness(QPalette::Window) ? ColorScheme::dark
                                                                         : ColorScheme::light;
}

QMargins mirrored(int start, int top, int end, int bottom) {
    return QApplication::isRightToLeft() ? QMargins(end, top, start, bottom)
                                         : QMargins(start, top, end, bottom);
}

QFont fontOf(TextStyle style) {
    const auto [size, weight] = [style]() -> std::pair<int, QFont::Weight> {
        switch (style) {
        case TextStyle::caption:
            return {11, QFont::Normal};
        case TextStyle::note:
            return {12, QFont::Normal};
        case TextStyle::noteSemibold:
            return {12, QFont::DemiBold};
        case TextStyle::body:
            return {13, QFont::Normal};
        case TextStyle::bodyMedium:
            return {13, QFont::Medium};
        case TextStyle::bodySemibold:
            return {13, QFont::DemiBold};
        case TextStyle::headline:
            return {14, QFont::DemiBold};
        case TextStyle::title:
            return {20, QFont::DemiBold};
        case TextStyle::largeTitle:
            return {24, QFont::DemiBold};
        }
        return {13, QFont::Normal};
    }();
    QFont font = QApplication::font();
    font.setPixelSize(size);
    font.setWeight(weight);
    return font;
}

} // namespace lumo
