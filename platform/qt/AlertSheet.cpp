#include "platform/qt/AlertSheet.h"

#include "platform/qt/AnswerGuard.h"
#include "platform/qt/SheetButton.h"
#include "platform/qt/WindowStyle.h"
#include "ui_AlertSheet.h"

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QKeyEvent>
#include <QScrollBar>
#include <QStyle>

#include <algorithm>

namespace platform {

namespace {

void showText(QLabel& label, const std::string& text) {
    label.setTextFormat(Qt::PlainText);
    label.setWordWrap(true);
    label.setTextInteractionFlags(Qt::TextSelectableByMouse);
    label.setFocusPolicy(Qt::NoFocus);
    label.setText(QString::fromStdString(text));
    label.setVisible(!text.empty());
}

} // namespace

AlertSheet::AlertSheet(const Alert& alert, const AnswerGuard& guard)
    : ui_(std::make_unique<Ui::AlertSheet>()), guard_(guard),
      picture_(alert.style == AlertStyle::Critical ? "critical" : "warning"),
      escapeCode_(Alert::firstButtonReturn + static_cast<int>(alert.escapeButton)), endsProgram_(alert.endsProgram) {
    ui_->setupUi(this);
    addTexts(alert);
    addButtons(alert.buttons);
}

AlertSheet::~AlertSheet() = default;

void AlertSheet::takeFocus() {
    if (!buttons_.empty())
        buttons_.front()->setFocus();
}

void AlertSheet::quitInstead() {
    if (endsProgram_)
        emit answered(escapeCode_);
}

void AlertSheet::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    QAccessibleEvent alerted(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&alerted);
}

void AlertSheet::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Copy)) {
        copySelectedText();
    } else if (event->key() == Qt::Key_Escape || event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        if (guard_.isOpen() && !event->isAutoRepeat())
            emit answered(event->key() == Qt::Key_Escape ? escapeCode_ : Alert::firstButtonReturn);
    } else {
        scrollText(event->key());
    }
}

void AlertSheet::addTexts(const Alert& alert) {
    setAccessibleName(QString::fromStdString(alert.messageText));
    showText(*ui_->messageText, alert.messageText);
    showText(*ui_->informativeText, alert.informativeText);
}

void AlertSheet::addButtons(const std::vector<std::string>& titles) {
    for (const std::string& title : titles) {
        auto* button = new SheetButton(QString::fromStdString(title), guard_, this);
        const int code = Alert::firstButtonReturn + static_cast<int>(buttons_.size());
        connect(button, &SheetButton::clicked, this, [this, code] { emit answered(code); });
        buttons_.push_back(button);
    }
}

QSize AlertSheet::arrange(int width, QSize room) {
    ui_->messageText->setFont(WindowStyle::headingFont(font()));
    const int line = WindowStyle::lineHeight(*this);
    WindowStyle::setMargins(*layout(), line, room);
    layout()->setSpacing(line);
    ui_->messageLayout->setSpacing(line);
    ui_->textLayout->setSpacing(line / 2);
    ui_->buttonLayout->setSpacing(line / 2);
    ui_->icon->setPicture(picture_, std::max(48, line * 5 / 2));
    const auto arrangeSheet = [this](int sheetWidth, bool withIcon) { return arrangeFor(sheetWidth, withIcon); };
    const QSize needed = WindowStyle::fitInto(room, width, arrangeSheet);
    if (needed.height() > room.height())
        makeTextScroll(needed.height() - room.height());
    return needed.boundedTo(room);
}

QSize AlertSheet::arrangeFor(int width, bool withIcon) {
    ui_->icon->setVisible(withIcon);
    const QMargins margins = layout()->contentsMargins();
    const int iconWidth = withIcon ? ui_->icon->width() + ui_->messageLayout->spacing() : 0;
    const int inner = width - margins.left() - margins.right();
    arrangeButtons(inner);
    const int textWidth = std::max({inner - iconWidth, WindowStyle::longestWord(*ui_->messageText),
                                    WindowStyle::longestWord(*ui_->informativeText)});
    ui_->textArea->setFixedHeight(breakTexts(textWidth));
    const int height = WindowStyle::heightFor(*layout(), width);
    const int fullWidth = std::max(textWidth + iconWidth, ui_->buttonLayout->minimumSize().width());
    return {fullWidth + margins.left() + margins.right(), height};
}

int AlertSheet::breakTexts(int width) {
    for (QLabel* label : {ui_->messageText, ui_->informativeText})
        WindowStyle::balanceLines(*label, width);
    ui_->texts->setMinimumWidth(width);
    return WindowStyle::heightFor(*ui_->textLayout, width);
}

void AlertSheet::makeTextScroll(int missing) {
    const int height = ui_->textArea->minimumHeight() - missing;
    ui_->textArea->setFixedHeight(std::max(height, WindowStyle::lineHeight(*this)));
    breakTexts(ui_->texts->minimumWidth() - ui_->textArea->verticalScrollBar()->sizeHint().width());
}

void AlertSheet::arrangeButtons(int width) {
    QBoxLayout& row = *ui_->buttonLayout;
    const int policy = style()->styleHint(QStyle::SH_DialogButtonLayout, nullptr, this);
    const bool firstComesLast = policy == QDialogButtonBox::GnomeLayout || policy == QDialogButtonBox::MacLayout;
    int needed = row.spacing() * (static_cast<int>(buttons_.size()) - 1);
    for (const SheetButton* button : buttons_)
        needed += button->sizeHint().width();
    const bool inOneRow = needed <= width;
    for (SheetButton* button : buttons_)
        row.insertWidget(inOneRow && firstComesLast ? 0 : -1, button);
    row.setDirection(inOneRow ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
    layout()->setAlignment(&row, inOneRow ? Qt::AlignRight : Qt::Alignment());
}

void AlertSheet::copySelectedText() const {
    for (const QLabel* label : {ui_->messageText, ui_->informativeText})
        if (label->hasSelectedText())
            QApplication::clipboard()->setText(label->selectedText());
}

void AlertSheet::scrollText(int key) {
    QScrollBar& bar = *ui_->textArea->verticalScrollBar();
    switch (key) {
    case Qt::Key_PageUp:
        return bar.triggerAction(QAbstractSlider::SliderPageStepSub);
    case Qt::Key_PageDown:
        return bar.triggerAction(QAbstractSlider::SliderPageStepAdd);
    case Qt::Key_Home:
        return bar.triggerAction(QAbstractSlider::SliderToMinimum);
    case Qt::Key_End:
        return bar.triggerAction(QAbstractSlider::SliderToMaximum);
    default:
        return;
    }
}

} // namespace platform
