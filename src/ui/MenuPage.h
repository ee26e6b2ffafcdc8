#pragma once

#include <functional>
#include <string_view>
#include <vector>

class QVBoxLayout;
class QWidget;

// What the popover's pages are built from.
namespace lumo::menuPage {

// A column over all of the widget, without distances.
QVBoxLayout *makeColumn(QWidget *widget);

// A line between rows, from edge to edge of their texts.
QWidget *makeDivider();

// Rows with lines between them, which scroll where they do not fit.
QWidget *makeRows(const std::vector<QWidget *> &rows);

// A title with a button before it that leads back.
QWidget *makeBackHeader(std::string_view title, std::function<void()> onBack);

} // namespace lumo::menuPage
