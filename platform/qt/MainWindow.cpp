#include "platform/qt/MainWindow.h"

#include "platform/qt/AlertSheet.h"
#include "platform/qt/WindowStyle.h"
#include "ui_MainInterface.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QScreen>
#include <QWindow>

#include <algorithm>

namespace platform {

MainWindow::MainWindow() : ui_(std::make_unique<Ui::MainInterface>()), guard_(*this) {
    setWindowFlags(Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                   Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint);
    ui_->setupUi(this);
    // The bar shows how far the stage is that the text names.
    connect(ui_->textIndicator, &StageLabel::textChanged, ui_->progressIndicator, &QWidget::setAccessibleName);
    // The new text can take more lines.
    connect(ui_->textIndicator, &StageLabel::textChanged, this, &MainWindow::fit);
    addCommands();
    adaptToFont();
}

MainWindow::~MainWindow() = default;

void MainWindow::setTitle(const std::string& title) {
    const QString text = QString::fromStdString(title);
    setWindowTitle(text);
    ui_->title->setText(text);
    fit();
}

Label& MainWindow::textIndicator() {
    return *ui_->textIndicator;
}

ProgressBar& MainWindow::progressIndicator() {
    return *ui_->progressIndicator;
}

void MainWindow::showCentred() {
    fit();
    move(screen()->availableGeometry().center() - rect().center());
    // Reads the cursor's files now: on a busy disk a window that is on screen already could not answer meanwhile.
    create();
    windowHandle()->setCursor(Qt::ArrowCursor);
    show();
}

void MainWindow::orderFront() {
    if (isMinimized())
        showNormal();
    raise();
    activateWindow();
}

void MainWindow::showSheet(AlertSheet* sheet) {
    removeSheet();
    sheet_ = sheet;
    ui_->content->hide();
    layout()->addWidget(sheet);
    fit();
    sheet->show();
    sheet->takeFocus();
    guard_.sheetCame();
    // A sheet that comes after the window has left the screen brings it back.
    show();
    QApplication::alert(this);
}

void MainWindow::removeSheet() {
    if (sheet_ == nullptr)
        return;
    guard_.sheetWent();
    sheet_->hide();
    layout()->removeWidget(sheet_);
    sheet_->deleteLater();
    sheet_ = nullptr;
    // The stage is read with the keyboard's return to it, and would be twice.
    ui_->textIndicator->setQuiet(true);
    ui_->content->show();
    ui_->textIndicator->setQuiet(false);
    ui_->textIndicator->setFocus();
    fit();
}

bool MainWindow::event(QEvent* event) {
    const bool handled = QWidget::event(event);
    switch (event->type()) {
    case QEvent::FontChange:
        adaptToFont();
        break;
    case QEvent::StyleChange:
    case QEvent::LayoutDirectionChange:
    case QEvent::WindowStateChange:
        fit();
        break;
    default:
        break;
    }
    return handled;
}

void MainWindow::closeEvent(QCloseEvent* event) {
    event->ignore();
    requestQuit();
}

void MainWindow::addCommands() {
    // A key that was meant for something else is no wish to quit either.
    addCommand(
        {Qt::CTRL | Qt::Key_Q, Qt::CTRL | Qt::Key_W},
        [this] {
            if (sheet_ == nullptr || guard_.isOpen())
                requestQuit();
        });
    addCommand({QKeySequence::HelpContents}, [this] { emit helpRequested(); });
}

void MainWindow::addCommand(const QList<QKeySequence>& keys, const std::function<void()>& triggered) {
    auto* action = new QAction(this);
    action->setShortcuts(keys);
    action->setAutoRepeat(false);
    connect(action, &QAction::triggered, this, triggered);
    addAction(action);
}

void MainWindow::requestQuit() {
    if (sheet_ == nullptr)
        emit quitRequested();
    else
        sheet_->quitInstead();
}

void MainWindow::adaptToFont() {
    const int line = WindowStyle::lineHeight(*this);
    ui_->icon->setPicture("icon", std::max(64, line * 7 / 2));
    ui_->title->setFont(WindowStyle::headingFont(font()));
    ui_->windowLayout->setSpacing(line);
    ui_->textLayout->setSpacing(line / 4);
    ui_->belowText->changeSize(0, line / 3, QSizePolicy::Minimum, QSizePolicy::MinimumExpanding);
    fit();
}

void MainWindow::fit() {
    // A new size would bring it back to the screen.
    if (isMinimized())
        return;
    const QSize room = WindowStyle::room(*this);
    const int width = WindowStyle::windowWidth(*this);
    WindowStyle::setMargins(*ui_->windowLayout, WindowStyle::lineHeight(*this), room);
    QSize size = WindowStyle::fitInto(room, width, [this](int wide, bool withIcon) { return arrange(wide, withIcon); });
    if (sheet_ != nullptr)
        size = size.expandedTo(sheet_->arrange(size.width(), room));
    if (size != this->size() || minimumSize() != maximumSize()) {
        setFixedSize(size);
        keepOnScreen();
    }
}

QSize MainWindow::arrange(int width, bool withIcon) {
    QLayout& layout = *ui_->windowLayout;
    ui_->icon->setVisible(withIcon);
    const QMargins margins = layout.contentsMargins();
    const int beside = margins.left() + margins.right() + (withIcon ? ui_->icon->width() + layout.spacing() : 0);
    const int textWidth = std::max(
        {width - beside, WindowStyle::longestWord(*ui_->title), WindowStyle::longestWord(*ui_->textIndicator)});
    for (QLabel* label : {ui_->title, static_cast<QLabel*>(ui_->textIndicator)})
        WindowStyle::balanceLines(*label, textWidth);
    return {textWidth + beside, WindowStyle::heightFor(layout, textWidth + beside)};
}

void MainWindow::keepOnScreen() {
    if (!isVisible() || isMinimized())
        return;
    const QRect room = screen()->availableGeometry();
    const QSize frame = frameGeometry().size() - geometry().size() + size();
    const QPoint over(pos().x() + frame.width() - room.right() - 1, pos().y() + frame.height() - room.bottom() - 1);
    if (over.x() > 0 || over.y() > 0)
        move(pos() - QPoint(std::max(over.x(), 0), std::max(over.y(), 0)));
}

} // namespace platform
