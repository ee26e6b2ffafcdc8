#include "ui/ScreenReaderSupport.h"

#include "ui/PopoverWindow.h"
#include "ui/SegmentedPicker.h"
#include "ui/ValueSlider.h"
#include "ui/WindowFrame.h"

#include <QAccessibleObject>
#include <QAccessibleWidget>
#include <QApplication>

namespace lumo {

namespace {

class AccessibleSlider final : public QAccessibleWidget, public QAccessibleValueInterface {
  public:
    AccessibleSlider(QSlider &slider, ValueSlider &owner)
        : QAccessibleWidget(&slider, QAccessible::Slider)
        , owner_(owner) {}

    void *interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ValueInterface ? static_cast<QAccessibleValueInterface *>(this)
                                                   : QAccessibleWidget::interface_cast(type);
    }

    QVariant currentValue() const override { return owner_.value(); }
    void setCurrentValue(const QVariant &value) override { owner_.moveTo(value.toDouble()); }
    QVariant minimumValue() const override { return owner_.range().minimum; }
    QVariant maximumValue() const override { return owner_.range().maximum; }
    QVariant minimumStepSize() const override { return owner_.range().step; }

  private:
    ValueSlider &owner_;
};

// The toolkit takes what closes by itself for a menu, which it leaves out of the program's windows.
class AccessibleProgram final : public QAccessibleApplication {
  public:
    int childCount() const override {
        return QAccessibleApplication::childCount() + (popover() == nullptr ? 0 : 1);
    }
    int indexOfChild(const QAccessibleInterface *child) const override {
        return child != nullptr && child->object() == popover()
                   ? QAccessibleApplication::childCount()
                   : QAccessibleApplication::indexOfChild(child);
    }
    QAccessibleInterface *child(int index) const override {
        return index == QAccessibleApplication::childCount()
                   ? QAccessible::queryAccessibleInterface(popover())
                   : QAccessibleApplication::child(index);
    }

  private:
    // Null while it is not shown.
    static PopoverWindow *popover() {
        for (auto *window : QApplication::topLevelWidgets()) {
            auto *popover = dynamic_cast<PopoverWindow *>(window);
            if (popover != nullptr && popover->isVisible()) {
                return popover;
            }
        }
        return nullptr;
    }
};

QAccessibleInterface *accessibleControl(const QString & /*className*/, QObject *object) {
    if (object == QCoreApplication::instance()) {
        return new AccessibleProgram;
    }
    if (auto *frame = dynamic_cast<WindowFrame *>(object)) {
        return new QAccessibleWidget(frame, QAccessible::Window);
    }
    if (auto *popover = dynamic_cast<PopoverWindow *>(object)) {
        return new QAccessibleWidget(popover, QAccessible::Window);
    }
    if (auto *picker = dynamic_cast<SegmentedPicker *>(object)) {
        return new QAccessibleWidget(picker, QAccessible::Grouping);
    }
    auto *slider = dynamic_cast<QSlider *>(object);
    auto *owner = slider != nullptr ? dynamic_cast<ValueSlider *>(slider->parent()) : nullptr;
    return owner != nullptr ? new AccessibleSlider(*slider, *owner) : nullptr;
}

} // namespace

ScreenReaderSupport::ScreenReaderSupport() {
    QAccessible::installFactory(accessibleControl);
}

ScreenReaderSupport::~ScreenReaderSupport() {
    QAccessible::removeFactory(accessibleControl);
}

} // namespace lumo
