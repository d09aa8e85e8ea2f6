#pragma once

#include "platform/UserInterface.h"
#include "platform/qt/AnswerGuard.h"

#include <QWidget>

#include <functional>
#include <memory>

namespace Ui {
class MainInterface;
}

namespace platform {

class AlertSheet;
class ProgressBar;

// The progress window. It never closes itself: whoever owns it ends the program. Its size follows its content, and its
// measures follow the person's font.
class MainWindow : public QWidget, public Window {
    Q_OBJECT

public:
    MainWindow();
    ~MainWindow() override;

    void setTitle(const std::string& title) override;
    void orderFront() override;

    Label& textIndicator();
    ProgressBar& progressIndicator();

    // Shows the window in the middle of its screen.
    void showCentred();

    // For sheets that this window is to show.
    const AnswerGuard& answerGuard() const { return guard_; }

    // Shows the sheet, which then belongs to the window, over the window's content or in the place of another sheet.
    // The window only asks for attention: it takes neither the keyboard nor its place in front.
    void showSheet(AlertSheet* sheet);

    // Takes the sheet away; nothing when there is none.
    void removeSheet();

signals:
    void quitRequested();
    void helpRequested();

protected:
    bool event(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void addCommands();
    void addCommand(const QList<QKeySequence>& keys, const std::function<void()>& triggered);
    void requestQuit();
    void adaptToFont();
    // Takes the size that the content needs, or the sheet over it.
    void fit();
    QSize arrange(int width, bool withIcon);
    // A window that has grown over the screen's edge comes back.
    void keepOnScreen();

    std::unique_ptr<Ui::MainInterface> ui_;
    AnswerGuard guard_;
    AlertSheet* sheet_ = nullptr;
};

} // namespace platform
