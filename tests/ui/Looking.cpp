#include "Looking.h"

#include "ui/Labels.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QFontMetricsF>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <algorithm>
#include <cmath>

namespace lumo::test {

namespace {

struct Found {
    QPoint middle;
    int left;
    std::string text;
};

std::vector<std::string> inReadingOrder(std::vector<Found> found) {
    constexpr int sameLine = 8;
    std::ranges::stable_sort(found, {}, [](const Found &each) { return each.middle.y(); });
    std::vector<std::string> texts;
    for (auto line = found.begin(); line != found.end();) {
        const auto end = std::find_if(line, found.end(), [&](const Found &each) {
            return each.middle.y() - line->middle.y() > sameLine;
        });
        std::stable_sort(line, end, [](const Found &a, const Found &b) { return a.left < b.left; });
        std::for_each(line, end, [&texts](const Found &each) { texts.push_back(each.text); });
        line = end;
    }
    return texts;
}

template <class T, class TextOf>
std::vector<std::string> collect(const QWidget &root, TextOf textOf) {
    std::vector<Found> found;
    for (const auto *widget : root.findChildren<T *>()) {
        const QString text = textOf(*widget);
        if (!text.isEmpty() && widget->isVisibleTo(&root)) {
            const auto place = QRect(widget->mapTo(&root, QPoint(0, 0)), widget->size());
            found.push_back({place.center(), place.left(), text.toStdString()});
        }
    }
    return inReadingOrder(found);
}

bool isTabStop(const QWidget &widget) {
    return (widget.focusPolicy() & Qt::TabFocus) != 0 && widget.isEnabled();
}

QString nameOf(const QWidget &widget) {
    const auto *button = qobject_cast<const QAbstractButton *>(&widget);
    return !widget.accessibleName().isEmpty() ? widget.accessibleName()
           : button != nullptr                ? button->text()
                                              : QStringLiteral("(nameless)");
}

} // namespace

void layOut(QWidget &widget) {
    widget.setAttribute(Qt::WA_DontShowOnScreen);
    widget.show();
    QApplication::processEvents();
}

std::vector<std::string> readTexts(const QWidget &widget) {
    return collect<QLabel>(widget, [](const QLabel &label) { return label.text(); });
}

std::vector<std::string> readControls(const QWidget &widget) {
    return collect<QWidget>(widget, [](const QWidget &each) {
        const bool isSegment = qobject_cast<const QRadioButton *>(&each) != nullptr;
        return isSegment || isTabStop(each) ? nameOf(each) : QString();
    });
}

std::vector<std::string> readTabStops(const QWidget &widget) {
    return collect<QWidget>(
        widget, [](const QWidget &each) { return isTabStop(each) ? nameOf(each) : QString(); });
}

std::vector<std::string> readTabOrder(QWidget &widget) {
    std::vector<std::string> names;
    for (auto *next = widget.nextInFocusChain(); next != &widget; next = next->nextInFocusChain()) {
        if (widget.isAncestorOf(next) && isTabStop(*next) && next->isVisibleTo(&widget)) {
            names.push_back(nameOf(*next).toStdString());
        }
    }
    return names;
}

std::vector<std::string> unspeakableControls(QWidget &widget) {
    std::vector<std::string> found;
    const auto check = [&found](QAccessibleInterface *control, const QString &name) {
        const bool isNamed = !control->text(QAccessible::Name).isEmpty();
        // A picker is called by its value, and by the label that belongs to it.
        const bool isLabelled = control->role() != QAccessible::ComboBox ||
                                !control->relations(QAccessible::Label).isEmpty();
        if (!isNamed || !isLabelled || control->role() == QAccessible::Client) {
            found.push_back(name.toStdString());
        }
    };
    for (auto *each : widget.findChildren<QWidget *>()) {
        auto *control = QAccessible::queryAccessibleInterface(each);
        if (!isTabStop(*each) || !each->isVisibleTo(&widget)) {
            continue;
        }
        check(control, nameOf(*each));
        for (int row = 0; control->tableInterface() != nullptr && row < control->childCount();
             ++row) {
            check(control->child(row), nameOf(*each) + QStringLiteral(" item"));
        }
    }
    return found;
}

std::vector<std::string> clippedTexts(const QWidget &widget, double scale) {
    QImage device(1, 1, QImage::Format_RGB32);
    device.setDevicePixelRatio(scale);
    std::vector<std::string> clipped;
    for (const auto *label : widget.findChildren<QLabel *>()) {
        const QFontMetricsF metrics(label->font(), &device);
        const QSizeF room = label->contentsRect().size();
        const auto needed =
            label->wordWrap() ? metrics
                                    .boundingRect(QRectF(0, 0, room.width(), 1e6), Qt::TextWordWrap,
                                                  label->text())
                                    .size()
                              : QSizeF(metrics.horizontalAdvance(label->text()), metrics.height());
        const bool mayElide = dynamic_cast<const ElidedLabel *>(label) != nullptr;
        constexpr double rounding = 1;
        if (label->isVisibleTo(&widget) && !label->text().isEmpty() &&
            (needed.height() > room.height() + rounding ||
             (!mayElide && needed.width() > room.width() + rounding))) {
            clipped.push_back(label->text().toStdString());
        }
    }
    for (const auto *button : widget.findChildren<QAbstractButton *>()) {
        const auto wanted = button->sizeHint();
        if (button->isVisibleTo(&widget) &&
            (wanted.width() > button->width() || wanted.height() > button->height())) {
            clipped.push_back(button->text().toStdString());
        }
    }
    return clipped;
}

} // namespace lumo::test
