#pragma once

#include "platform/UserInterface.h"

#include <QWidget>

#include <memory>
#include <vector>

namespace Ui {
class AlertSheet;
}

namespace platform {

class AnswerGuard;
class SheetButton;

// One alert, made to take the place of a window's content.
class AlertSheet : public QWidget {
    Q_OBJECT

public:
    // The guard, which is borrowed and outlives the sheet, decides which keys and clicks answer.
    AlertSheet(const Alert& alert, const AnswerGuard& guard);
    ~AlertSheet() override;

    // Takes all measures from the font and arranges the parts: in the width where that is enough, in all of the room
    // otherwise, then without the icon, and in the end with a text that scrolls. Returns the size that the sheet then
    // needs.
    QSize arrange(int width, QSize room);

    // Gives the first button the keyboard.
    void takeFocus();

    // The person wants to quit, by the window's close button or a key. Where every answer does that, the safe one is
    // taken; a question that is about just that stays open.
    void quitInstead();

signals:
    // One of the buttons was chosen, by its code.
    void answered(int returnCode);

protected:
    void showEvent(QShowEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void addTexts(const Alert& alert);
    void addButtons(const std::vector<std::string>& titles);
    QSize arrangeFor(int width, bool withIcon);
    // The height of the texts in that width.
    int breakTexts(int width);
    // Takes from the texts' height what is missing for the rest.
    void makeTextScroll(int missing);
    // Puts the buttons where the desktop has them, the first one at the end or at the beginning; wide titles go below
    // each other.
    void arrangeButtons(int width);
    void copySelectedText() const;
    void scrollText(int key);

    std::unique_ptr<Ui::AlertSheet> ui_;
    const AnswerGuard& guard_;
    std::vector<SheetButton*> buttons_;
    QString picture_;
    int escapeCode_;
    bool endsProgram_;
};

} // namespace platform
