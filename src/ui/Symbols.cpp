#include "ui/Symbols.h"

#include "support/Invariant.h"

#include <QPainterPath>
#include <QTransform>
#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>
#include <utility>

namespace lumo {

namespace {

constexpr double designedSide = 24; // of the square that the symbols are designed on
constexpr double line = 1.9;

// A symbol is a filled shape and a line of one width with round ends.
struct Shape {
    QPainterPath filled;
    QPainterPath stroked;
    double lineWidth = line;
};

QPainterPath circle(double x, double y, double radius) {
    QPainterPath path;
    path.addEllipse(QPointF(x, y), radius, radius);
    return path;
}

QPainterPath roundedRect(double x, double y, double width, double height, double radius) {
    QPainterPath path;
    path.addRoundedRect(QRectF(x, y, width, height), radius, radius);
    return path;
}

QPainterPath polyline(std::initializer_list<QPointF> points) {
    QPainterPath path(*points.begin());
    std::for_each(points.begin() + 1, points.end(), [&path](QPointF point) { path.lineTo(point); });
    return path;
}

QPainterPath together(std::initializer_list<QPainterPath> paths) {
    QPainterPath all;
    for (const auto &path : paths) {
        all.addPath(path);
    }
    return all;
}

// The area that a pen of this width would cover along the path.
QPainterPath outline(const QPainterPath &path, double width) {
    QPainterPathStroker stroker;
    stroker.setWidth(width);
    stroker.setCapStyle(Qt::RoundCap);
    stroker.setJoinStyle(Qt::RoundJoin);
    return stroker.createStroke(path);
}

Shape gear() {
    constexpr int teeth = 8;
    constexpr double outer = 10;
    constexpr double inner = 7.6;
    QPainterPath wheel;
    for (int tooth = 0; tooth < teeth; ++tooth) {
        const double middle = tooth * 2 * std::numbers::pi / teeth;
        const auto corner = [middle](double radius, double turn) {
            return QPointF(12 + radius * std::cos(middle + turn),
                           12 + radius * std::sin(middle + turn));
        };
        for (const auto &point : {corner(inner, -0.29), corner(outer, -0.18), corner(outer, 0.18),
                                  corner(inner, 0.29)}) {
            wheel.elementCount() == 0 ? wheel.moveTo(point) : wheel.lineTo(point);
        }
    }
    wheel.closeSubpath();
    return {.filled = {}, .stroked = together({wheel, circle(12, 12, 3.1)}), .lineWidth = 1.7};
}

Shape halfFilledCircle() {
    QPainterPath half(QPointF(12, 3));
    half.arcTo(QRectF(3, 3, 18, 18), 90, 180);
    half.closeSubpath();
    return {.filled = half, .stroked = circle(12, 12, 9)};
}

Shape list() {
    Shape shape{.filled = {}, .stroked = {}};
    for (const double y : {6.0, 12.0, 18.0}) {
        shape.filled.addPath(circle(4.6, y, 1.7));
        shape.stroked.addPath(polyline({{9.4, y}, {20.6, y}}));
    }
    return shape;
}

Shape keyboard() {
    Shape shape{.filled = {}, .stroked = roundedRect(2, 5.5, 20, 13, 2.6), .lineWidth = 1.7};
    for (const double x : {5.6, 9.87, 14.13, 18.4}) {
        shape.filled.addPath(roundedRect(x - 1, 8.6, 2, 2, 0.5));
    }
    shape.filled.addPath(roundedRect(4.6, 13.2, 2, 2, 0.5));
    shape.filled.addPath(roundedRect(17.4, 13.2, 2, 2, 0.5));
    shape.filled.addPath(roundedRect(8.4, 13.2, 7.2, 2, 0.6));
    return shape;
}

Shape warningTriangle() {
    const auto triangle = polyline({{12, 4.2}, {21, 19.4}, {3, 19.4}, {12, 4.2}});
    const auto mark = outline(polyline({{12, 9.6}, {12, 13.4}}), 2).united(circle(12, 16.8, 1.25));
    return {.filled = (triangle.united(outline(triangle, 3.2))).subtracted(mark), .stroked = {}};
}

Shape infoCircle() {
    const auto letter =
        circle(12, 7.4, 1.45)
            .united(outline(polyline({{10.4, 11.2}, {12.2, 11.2}, {12.2, 16.6}}), 1.9))
            .united(outline(polyline({{10.2, 16.8}, {14.2, 16.8}}), 1.9));
    return {.filled = circle(12, 12, 10).subtracted(letter), .stroked = {}};
}

QPainterPath fingers(std::initializer_list<QRectF> areas) {
    QPainterPath hand;
    for (const auto &area : areas) {
        const double radius = std::min(area.width(), area.height()) / 2;
        hand = hand.united(roundedRect(area.x(), area.y(), area.width(), area.height(), radius));
    }
    return hand;
}

QPainterPath palm() {
    QPainterPath path(QPointF(6, 11));
    path.lineTo(19, 11);
    path.lineTo(19, 15.5);
    path.cubicTo(19, 20, 16.2, 22.6, 12.6, 22.6);
    path.cubicTo(9.4, 22.6, 7.6, 21.2, 6.2, 18.6);
    path.lineTo(6, 11);
    return path;
}

// The thumb leaves the palm to the lower left.
QPainterPath thumb() {
    return outline(polyline({{4, 14}, {7.4, 18.4}}), 3);
}

Shape raisedHand() {
    const auto upright = fingers(
        {{6, 4.4, 2.7, 11}, {9.4, 1.8, 2.7, 12}, {12.8, 2.2, 2.7, 12}, {16.3, 4.8, 2.7, 11}});
    return {.filled = upright.united(palm()).united(thumb()), .stroked = {}};
}

Shape pointingHand() {
    const auto upright =
        fingers({{6, -1.6, 3.7, 16}, {9.9, 7.2, 2.9, 7}, {13.1, 7.7, 2.9, 7}, {16.3, 8.6, 2.7, 7}});
    QTransform turn;
    turn.translate(11.8, 12.2);
    turn.rotate(-40);
    turn.translate(-11, -10.8);
    return {.filled = turn.map(upright.united(palm()).united(thumb())), .stroked = {}};
}

Shape openLock() {
    QPainterPath shackle(QPointF(8, 12));
    shackle.lineTo(8, 7);
    shackle.arcTo(QRectF(8, 2.6, 8.4, 8.4), 180, -160);
    return {.filled = roundedRect(4.6, 11, 14.8, 11, 2.6), .stroked = shackle, .lineWidth = 2.1};
}

Shape clockwiseArrow() {
    QPainterPath arc;
    const QRectF box(4.4, 4.8, 15.2, 15.2);
    arc.arcMoveTo(box, 40);
    arc.arcTo(box, 40, 300);
    arc.addPath(polyline({{18.6, 3}, {18.6, 8}, {13.6, 8}}));
    return {.filled = {}, .stroked = arc, .lineWidth = 2.1};
}

Shape removeCircle() {
    return {.filled = {},
            .stroked = together({circle(12, 12, 9), polyline({{8, 12}, {16, 12}})}),
            .lineWidth = 1.7};
}

// A wheel of spokes, at four fifths of the size of the other symbols.
Shape progressWheel() {
    constexpr int spokes = 8;
    QPainterPath wheel;
    for (int spoke = 0; spoke < spokes; ++spoke) {
        const double angle = spoke * 2 * std::numbers::pi / spokes;
        const QPointF direction(std::cos(angle), std::sin(angle));
        wheel.addPath(polyline({QPointF(12, 12) + direction * 4, QPointF(12, 12) + direction * 8}));
    }
    return {.filled = {}, .stroked = wheel, .lineWidth = 2.1};
}

Shape backChevron() {
    return {.filled = {}, .stroked = polyline({{15, 5}, {8, 12}, {15, 19}}), .lineWidth = 2.6};
}

Shape upAndDownChevrons() {
    return {.filled = {},
            .stroked = together({polyline({{7.5, 9.5}, {12, 5}, {16.5, 9.5}}),
                                 polyline({{7.5, 14.5}, {12, 19}, {16.5, 14.5}})}),
            .lineWidth = 2.2};
}

Shape magnifyingGlass() {
    return {.filled = {},
            .stroked = together({circle(10.5, 10.5, 6.6), polyline({{15.4, 15.4}, {20.6, 20.6}})}),
            .lineWidth = 2.1};
}

Shape recordButton() {
    return {.filled = circle(12, 12, 5), .stroked = circle(12, 12, 9)};
}

Shape checkMark() {
    return {.filled = {},
            .stroked = polyline({{4.8, 12.6}, {9.8, 17.6}, {19.4, 6.6}}),
            .lineWidth = 2.6};
}

Shape plus() {
    return {.filled = {},
            .stroked =
                together({polyline({{12, 4.5}, {12, 19.5}}), polyline({{4.5, 12}, {19.5, 12}})}),
            .lineWidth = 2.2};
}

Shape shapeOf(std::string_view name) {
    static constexpr std::pair<std::string_view, Shape (*)()> shapes[] = {
        {symbol::general, gear},
        {symbol::appearance, halfFilledCircle},
        {symbol::rules, list},
        {symbol::shortcuts, keyboard},
        {symbol::warning, warningTriangle},
        {symbol::info, infoCircle},
        {symbol::back, backChevron},
        {symbol::openPicker, upAndDownChevrons},
        {symbol::search, magnifyingGlass},
        {symbol::record, recordButton},
        {symbol::raisedHand, raisedHand},
        {symbol::pointingHand, pointingHand},
        {symbol::openLock, openLock},
        {symbol::reload, clockwiseArrow},
        {symbol::progress, progressWheel},
        {symbol::check, checkMark},
        {symbol::add, plus},
        {symbol::remove, removeCircle},
    };
    const auto *const found =
        std::ranges::find(shapes, name, &std::pair<std::string_view, Shape (*)()>::first);
    if (found == std::end(shapes)) {
        fatal("no symbol has the name " + std::string(name));
    }
    return found->second();
}

} // namespace

void paintSymbol(QPainter &painter, std::string_view name, const QRectF &area,
                 const QColor &color) {
    const auto shape = shapeOf(name);
    const double size = std::min(area.width(), area.height());
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(area.center().x() - size / 2, area.center().y() - size / 2);
    painter.scale(size / designedSide, size / designedSide);
    painter.fillPath(shape.filled, color);
    painter.setPen(QPen(color, shape.lineWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(shape.stroked);
    painter.restore();
}

} // namespace lumo
