#include "platform/qt/MainWindow.h"

#include "platform/qt/WindowStyle.h"
#include "ui_MainInterface.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QScreen>
#include <QWindow>

#include <algorithm>

namespace platform {

namespace {

// The window's width, in average letters.
constexpr int windowLetters = 58;

} // namespace

MainWindow::MainWindow() : ui_(std::make_unique<Ui::MainInterface>()) {
    setWindowFlags(Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                   Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint);
    ui_->setupUi(this);
    // The bar shows how far the stage is that the text names.
    connect(ui_->textIndicator, &StageLabel::textChanged, ui_->progressIndicator, &QWidget::setAccessibleName);
    addCommands();
    adaptToFont();
}

MainWindow::~MainWindow() = default;

void MainWindow::setTitle(const std::string& title) {
    const QString text = QString::fromStdString(title);
    setWindowTitle(text);
    ui_->title->setText(text);
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

void MainWindow::callForAttention() {
    if (isMinimized()) {
        showNormal();
    }
    QApplication::alert(this);
}

bool MainWindow::event(QEvent* event) {
    const bool handled = FittedWindow::event(event);
    // A text has changed, perhaps into one with more lines.
    if (event->type() == QEvent::LayoutRequest)
        fit();
    return handled;
}

void MainWindow::closeEvent(QCloseEvent* event) {
    event->ignore();
    emit quitRequested();
}

void MainWindow::addCommands() {
    auto* quit = new QAction(this);
    quit->setShortcut(Qt::CTRL | Qt::Key_Q);
    connect(quit, &QAction::triggered, this, &MainWindow::quitRequested);
    helpAction_ = new QAction(this);
    helpAction_->setShortcut(QKeySequence::HelpContents);
    connect(helpAction_, &QAction::triggered, this, &MainWindow::helpRequested);
    addActions({quit, helpAction_});
}

void MainWindow::adaptToFont() {
    const int line = WindowStyle::lineHeight(*this);
    ui_->icon->setPicture("icon", std::clamp(line * 7 / 2, 64, 96));
    ui_->title->setFont(WindowStyle::headingFont(font()));
    WindowStyle::setMargins(*this);
    layout()->setSpacing(line);
    ui_->textLayout->setSpacing(line / 4);
    ui_->belowText->changeSize(0, line / 3, QSizePolicy::Minimum, QSizePolicy::MinimumExpanding);
    fit();
}

void MainWindow::fit() {
    WindowStyle::fitToContent(*this, WindowStyle::windowWidth(*this, windowLetters));
}

} // namespace platform
