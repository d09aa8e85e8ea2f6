#pragma once

#include "platform/UserInterface.h"
#include "platform/qt/FittedWindow.h"

#include <QWidget>

#include <memory>

class QAction;

namespace Ui {
class MainInterface;
}

namespace platform {

class ProgressBar;

// The progress window. It never closes itself: whoever owns it ends the program.
class MainWindow : public FittedWindow<QWidget>, public Window {
    Q_OBJECT

public:
    MainWindow();
    ~MainWindow() override;

    void setTitle(const std::string& title) override;

    Label& textIndicator();
    ProgressBar& progressIndicator();

    // The help command, for sheets to offer it as well.
    QAction* helpAction() const { return helpAction_; }

    // Shows the window in the middle of its screen.
    void showCentred();

    // Makes the window seen when something in front of it needs the person.
    void callForAttention();

signals:
    void quitRequested();
    void helpRequested();

protected:
    bool event(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void addCommands();
    void adaptToFont() final;
    void fit() final;

    std::unique_ptr<Ui::MainInterface> ui_;
    QAction* helpAction_ = nullptr;
};

} // namespace platform
