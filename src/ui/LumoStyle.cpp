#include "ui/LumoStyle.h"

#include "ui/Painting.h"
#include "ui/Theme.h"

#include <QFrame>
#include <QPainter>
#include <QStyleOption>

namespace lumo {

namespace {

constexpr int scrollBarWidth = 10;
constexpr int shortestScrollBar = 28;

void paintScrollBar(QPainter &painter, const QStyleOptionSlider &option, const QRect &knob) {
    if (option.maximum <= option.minimum) {
        return;
    }
    constexpr double inset = 3;
    QColor color = option.palette.color(role::secondaryText);
    const bool isActive = (option.activeSubControls & QStyle::SC_ScrollBarSlider) != 0;
    color.setAlphaF(isActive ? 0.8F : 0.45F);
    const double thickness = scrollBarWidth - 2 * inset;
    paintRounded(painter, QRectF(knob).adjusted(inset, inset, -inset, -inset), thickness / 2,
                 color);
}

} // namespace

LumoStyle::LumoStyle()
    : QProxyStyle(QStringLiteral("Fusion")) {
}

void LumoStyle::drawPrimitive(PrimitiveElement element, const QStyleOption *option,
                              QPainter *painter, const QWidget *widget) const {
    const auto color = [option](QPalette::ColorRole role) { return option->palette.color(role); };
    switch (element) {
    case PE_PanelLineEdit:
        paintRounded(*painter, option->rect, corner::control, color(role::control),
                     color(role::controlBorder));
        if ((option->state & State_HasFocus) != 0) {
            paintFocusRing(*painter, option->rect, corner::control, option->palette);
        }
        return;
    case PE_FrameLineEdit:
    case PE_FrameFocusRect:
        return;
    case PE_PanelTipLabel:
        painter->fillRect(option->rect, color(QPalette::ToolTipBase));
        return;
    default:
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

void LumoStyle::drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                            const QWidget *widget) const {
    const auto *frame = qstyleoption_cast<const QStyleOptionFrame *>(option);
    if (element == CE_ShapedFrame && frame != nullptr && frame->frameShape == QFrame::StyledPanel) {
        painter->fillRect(option->rect, option->palette.color(role::card));
        painter->setPen(option->palette.color(role::controlBorder));
        painter->setBrush(Qt::NoBrush);
        painter->drawRect(option->rect.adjusted(0, 0, -1, -1));
        return;
    }
    QProxyStyle::drawControl(element, option, painter, widget);
}

void LumoStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex *option,
                                   QPainter *painter, const QWidget *widget) const {
    const auto *slider = qstyleoption_cast<const QStyleOptionSlider *>(option);
    if (control == CC_ScrollBar && slider != nullptr) {
        paintScrollBar(*painter, *slider,
                       subControlRect(CC_ScrollBar, option, SC_ScrollBarSlider, widget));
        return;
    }
    QProxyStyle::drawComplexControl(control, option, painter, widget);
}

// Scroll bars without arrows.
QRect LumoStyle::subControlRect(ComplexControl control, const QStyleOptionComplex *option,
                                SubControl subControl, const QWidget *widget) const {
    const auto *slider = qstyleoption_cast<const QStyleOptionSlider *>(option);
    if (control != CC_ScrollBar || slider == nullptr) {
        return QProxyStyle::subControlRect(control, option, subControl, widget);
    }
    const bool isVertical = slider->orientation == Qt::Vertical;
    const int room = isVertical ? slider->rect.height() : slider->rect.width();
    const qint64 span = static_cast<qint64>(slider->maximum) - slider->minimum + slider->pageStep;
    const int length = span <= 0
                           ? room
                           : qBound(qMin(shortestScrollBar, room),
                                    static_cast<int>(qint64{room} * slider->pageStep / span), room);
    const int start =
        sliderPositionFromValue(slider->minimum, slider->maximum, slider->sliderPosition,
                                room - length, slider->upsideDown);
    const auto part = [&](int from, int to) {
        return isVertical ? QRect(slider->rect.left(), slider->rect.top() + from,
                                  slider->rect.width(), to - from)
                          : QRect(slider->rect.left() + from, slider->rect.top(), to - from,
                                  slider->rect.height());
    };
    switch (subControl) {
    case SC_ScrollBarSlider:
        return part(start, start + length);
    case SC_ScrollBarGroove:
        return slider->rect;
    case SC_ScrollBarSubPage:
        return part(0, start);
    case SC_ScrollBarAddPage:
        return part(start + length, room);
    default:
        return {};
    }
}

int LumoStyle::pixelMetric(PixelMetric metric, const QStyleOption *option,
                           const QWidget *widget) const {
    switch (metric) {
    case PM_ScrollBarExtent:
        return scrollBarWidth;
    case PM_ScrollBarSliderMin:
        return shortestScrollBar;
    case PM_ScrollView_ScrollBarSpacing:
    case PM_ScrollView_ScrollBarOverlap:
        return 0;
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

int LumoStyle::styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                         QStyleHintReturn *returnData) const {
    switch (hint) {
    case SH_ItemView_ActivateItemOnSingleClick:
    case SH_ScrollBar_LeftClickAbsolutePosition:
        return 1;
    case SH_Slider_AbsoluteSetButtons:
        return Qt::LeftButton;
    case SH_Slider_PageSetButtons:
    case SH_ComboBox_Popup:
    case SH_EtchDisabledText:
        return 0;
    default:
        return QProxyStyle::styleHint(hint, option, widget, returnData);
    }
}

} // namespace lumo
