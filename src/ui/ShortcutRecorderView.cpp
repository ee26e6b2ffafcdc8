#include "ui/ShortcutRecorderView.h"

#include "platform/Keyboard.h"
#include "presentation/Shortcuts.h"
#include "ui/Button.h"
#include "ui/Symbols.h"
#include "ui/Text.h"
#include "ui/Theme.h"

#include <QHBoxLayout>

namespace lumo {

namespace {

constexpr int leastWidth = 120;

} // namespace

ShortcutRecorderView::ShortcutRecorderView(const Platform &platform, std::string_view name,
                                           Setting<std::int64_t> &keyCode,
                                           Setting<std::int64_t> &modifiers)
    : platform_(platform)
    , name_(toQString(name))
    , button_(new Button({}))
    , cancel_(new Button("Cancel", Button::Kind::borderless))
    , recorder_(platform, keyCode, modifiers) {
    button_->setMinimumWidth(leastWidth);
    cancel_->setFont(fontOf(TextStyle::caption));
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(spacing::small);
    row->addWidget(cancel_);
    row->addWidget(button_);
    QObject::connect(button_, &QPushButton::clicked, this,
                     [this] { recorder_.isRecording.set(!recorder_.isRecording.value()); });
    QObject::connect(cancel_, &QPushButton::clicked, this,
                     [this] { recorder_.isRecording.set(false); });
    keyCodeChanges_ = keyCode.subscribe([this](const std::int64_t &code) {
        shownKeyCode_ = code;
        showShortcut();
    });
    modifierChanges_ = modifiers.subscribe([this](const std::int64_t &mask) {
        shownModifiers_ = mask;
        showShortcut();
    });
    recording_ = recorder_.isRecording.subscribe(
        [this](const bool &isRecording) { showState(isRecording); });
    keyNameChanges_ = platform.keyboard.onNamesDidChange([this] { showShortcut(); });
}

void ShortcutRecorderView::showState(bool isRecording) {
    isRecording_ = isRecording;
    cancel_->setVisible(isRecording);
    button_->setRecording(isRecording);
    button_->setSymbol(isRecording ? symbol::record : std::string_view());
    showShortcut();
}

void ShortcutRecorderView::showShortcut() {
    const auto label = toQString(shortcutLabel(platform_, shownKeyCode_, shownModifiers_));
    button_->setText(isRecording_ ? QStringLiteral("Press keys...") : label);
    button_->setAccessibleName(name_ + QStringLiteral(": ") + button_->text());
}

// The user presses no keys for what can't be seen.
void ShortcutRecorderView::hideEvent(QHideEvent *event) {
    QWidget::hideEvent(event);
    recorder_.isRecording.set(false);
}

} // namespace lumo
