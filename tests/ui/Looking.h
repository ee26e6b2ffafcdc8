#pragma once

#include <QString>
#include <QWidget>
#include <stdexcept>
#include <string>
#include <vector>

namespace lumo::test {

// Lays the widget out as if it were on screen.
void layOut(QWidget &widget);

// The labels' texts as a person reads them: line by line, along the lines.
std::vector<std::string> readTexts(const QWidget &widget);

// The focusable controls' accessible names, or their texts, in the same order; of those that
// belong together, as a picker's segments, each.
std::vector<std::string> readControls(const QWidget &widget);

// The names of the controls at which the Tab key stops: in the same order, and in that in which it
// comes to them.
std::vector<std::string> readTabStops(const QWidget &widget);
std::vector<std::string> readTabOrder(QWidget &widget);

// Those of them, and of the items of lists, that screen readers have no name or no role for.
std::vector<std::string> unspeakableControls(QWidget &widget);

// Labels and buttons that do not have the room that their texts need when drawn at this scale;
// those that end in an ellipsis by design do not count.
std::vector<std::string> clippedTexts(const QWidget &widget, double scale);

// The only visible widget of this type with this accessible name or text.
template <class T>
T &control(QWidget &root, const std::string &name) {
    for (auto *widget : root.findChildren<T *>()) {
        const auto text = widget->accessibleName().isEmpty() ? widget->property("text").toString()
                                                             : widget->accessibleName();
        if (text.toStdString() == name && widget->isVisibleTo(&root)) {
            return *widget;
        }
    }
    throw std::runtime_error("there is no control called " + name);
}

} // namespace lumo::test
