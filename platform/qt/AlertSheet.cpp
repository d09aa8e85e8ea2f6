#include "platform/qt/AlertSheet.h"

#include "platform/qt/SheetButton.h"
#include "platform/qt/WindowStyle.h"
#include "ui_AlertSheet.h"

#include <QAccessible>
#include <QScreen>

#include <algorithm>

namespace platform {

namespace {

// The width of the whole sheet, in average letters.
constexpr int sheetLetters = 58;

void showText(QLabel& label, const std::string& text) {
    label.setTextFormat(Qt::PlainText);
    label.setWordWrap(true);
    label.setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    label.setFocusPolicy(Qt::StrongFocus);
    label.setText(QString::fromStdString(text));
    label.setVisible(!text.empty());
}

} // namespace

AlertSheet::AlertSheet(const Alert& alert, QWidget& window)
    : FittedWindow(&window, Qt::Sheet | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                                Qt::WindowCloseButtonHint),
      ui_(std::make_unique<Ui::AlertSheet>()), picture_(alert.style == AlertStyle::Critical ? "critical" : "warning"),
      escapeCode_(Alert::firstButtonReturn + static_cast<int>(alert.escapeButton)) {
    ui_->setupUi(this);
    setWindowModality(Qt::WindowModal);
    setWindowTitle(window.windowTitle());
    addTexts(alert);
    addButtons(alert.buttons);
    adaptToFont();
    attachTo(window);
}

AlertSheet::~AlertSheet() = default;

void AlertSheet::reject() {
    done(escapeCode_);
}

void AlertSheet::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    QAccessibleEvent alerted(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&alerted);
}

void AlertSheet::addTexts(const Alert& alert) {
    setAccessibleName(QString::fromStdString(alert.messageText));
    setAccessibleDescription(QString::fromStdString(alert.informativeText));
    showText(*ui_->messageText, alert.messageText);
    showText(*ui_->informativeText, alert.informativeText);
}

void AlertSheet::addButtons(const std::vector<std::string>& titles) {
    for (const std::string& title : titles) {
        auto* button = new SheetButton(QString::fromStdString(title), this);
        const int code = Alert::firstButtonReturn + static_cast<int>(buttons_.size());
        connect(button, &SheetButton::clicked, this, [this, code] { done(code); });
        ui_->buttonLayout->addWidget(button);
        buttons_.push_back(button);
    }
    if (!buttons_.empty()) {
        buttons_.front()->setDefault(true);
        buttons_.front()->setFocus();
    }
}

void AlertSheet::adaptToFont() {
    const int line = WindowStyle::lineHeight(*this);
    ui_->icon->setPicture(picture_, std::clamp(line * 5 / 2, 48, 72));
    ui_->messageText->setFont(WindowStyle::headingFont(font()));
    WindowStyle::setMargins(*this);
    layout()->setSpacing(line);
    ui_->messageLayout->setSpacing(line);
    ui_->textLayout->setSpacing(line / 2);
    ui_->buttonLayout->setSpacing(line / 2);
    fit();
}

void AlertSheet::fit() {
    const int width = WindowStyle::windowWidth(*this, sheetLetters);
    arrangeButtons(width);
    WindowStyle::fitToContent(*this, width);
}

void AlertSheet::attachTo(const QWidget& window) {
    const QRect room = screen()->availableGeometry();
    const QRect content = window.geometry();
    move(std::clamp(content.center().x() - width() / 2, room.left(), std::max(room.left(), room.right() - width())),
         std::clamp(content.top(), room.top(), std::max(room.top(), room.bottom() - height())));
}

void AlertSheet::arrangeButtons(int width) {
    ui_->buttonLayout->setDirection(QBoxLayout::LeftToRight);
    const QMargins margins = layout()->contentsMargins();
    const bool inOneRow = ui_->buttonLayout->minimumSize().width() + margins.left() + margins.right() <= width;
    ui_->buttonLayout->setDirection(inOneRow ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
    layout()->setAlignment(ui_->buttonLayout, inOneRow ? Qt::AlignRight : Qt::Alignment());
}

} // namespace platform
