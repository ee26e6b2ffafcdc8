#include "ui/Accessibility.h"

#include "ui/SegmentedPicker.h"
#include "ui/ValueSlider.h"

#include <QAccessibleWidget>

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

QAccessibleInterface *accessibleControl(const QString & /*className*/, QObject *object) {
    if (auto *picker = dynamic_cast<SegmentedPicker *>(object)) {
        return new QAccessibleWidget(picker, QAccessible::Grouping);
    }
    auto *slider = dynamic_cast<QSlider *>(object);
    auto *owner = slider != nullptr ? dynamic_cast<ValueSlider *>(slider->parent()) : nullptr;
    return owner != nullptr ? new AccessibleSlider(*slider, *owner) : nullptr;
}

} // namespace

Accessibility::Accessibility() {
    QAccessible::installFactory(accessibleControl);
}

Accessibility::~Accessibility() {
    QAccessible::removeFactory(accessibleControl);
}

} // namespace lumo
