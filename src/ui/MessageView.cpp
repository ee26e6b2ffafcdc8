#include "ui/MessageView.h"

#include "ui/Button.h"
#include "ui/Labels.h"
#include "ui/Theme.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPainter>
#include <utility>

namespace lumo {

MessageView::MessageView(const std::string &title, const std::string &text,
                         std::function<void()> onDismiss)
    : onDismiss_(std::move(onDismiss)) {
    constexpr int width = 380;
    setFixedWidth(width);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(spacing::section, spacing::section, spacing::section, 16);
    column->setSpacing(spacing::medium);
    auto *heading = makeLabel(title, TextStyle::headline);
    heading->setWordWrap(true);
    column->addWidget(heading);
    auto *body = makeLabel(text, TextStyle::body);
    body->setWordWrap(true);
    column->addWidget(body);
    column->addSpacing(spacing::medium);
    auto *dismiss = new Button("OK", Button::Kind::prominent);
    constexpr int buttonWidth = 84;
    dismiss->setMinimumWidth(buttonWidth);
    QObject::connect(dismiss, &QPushButton::clicked, this, [this] { onDismiss_(); });
    column->addWidget(dismiss, 0, Qt::AlignTrailing);
    setFixedHeight(column->heightForWidth(width));
    dismiss->setFocus();
}

void MessageView::keyPressEvent(QKeyEvent *event) {
    if (event->key() == Qt::Key_Escape) {
        onDismiss_();
    } else {
        QWidget::keyPressEvent(event);
    }
}

void MessageView::paintEvent(QPaintEvent * /*event*/) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(role::window));
}

} // namespace lumo
