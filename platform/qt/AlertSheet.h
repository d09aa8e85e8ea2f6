#pragma once

#include "platform/UserInterface.h"
#include "platform/qt/FittedWindow.h"

#include <QDialog>

#include <memory>
#include <vector>

namespace Ui {
class AlertSheet;
}

namespace platform {

class SheetButton;

// One alert on the progress window. Its result, told by the finished signal, is the chosen button's code.
class AlertSheet : public FittedWindow<QDialog> {
    Q_OBJECT

public:
    AlertSheet(const Alert& alert, QWidget& window);
    ~AlertSheet() override;

    // Escape and the close button of the sheet.
    void reject() override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void addTexts(const Alert& alert);
    void addButtons(const std::vector<std::string>& titles);
    void adaptToFont() final;
    void fit() final;
    // Below the window's title bar, as far as the screen allows.
    void attachTo(const QWidget& window);
    // Wide titles go below each other.
    void arrangeButtons(int width);

    std::unique_ptr<Ui::AlertSheet> ui_;
    std::vector<SheetButton*> buttons_;
    QString picture_;
    int escapeCode_;
};

} // namespace platform
