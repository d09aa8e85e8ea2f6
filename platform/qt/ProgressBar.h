#pragma once

#include "platform/UserInterface.h"
#include "platform/qt/ProgressState.h"

#include <QBasicTimer>
#include <QElapsedTimer>
#include <QProgressBar>

namespace platform {

// The window's bar: a rounded groove in the palette's colours. It mirrors a ProgressState: the range is 0 to
// ProgressState::steps, or 0 to 0 while busy. Values may come faster than the screen can show them.
class ProgressBar : public QProgressBar, public ProgressIndicator {
    Q_OBJECT

public:
    explicit ProgressBar(QWidget* parent = nullptr);

    const ProgressState& state() const { return state_; }

    void setIndeterminate(bool indeterminate) override;
    void setMinValue(double value) override;
    void setMaxValue(double value) override;
    void setDoubleValue(double value) override;
    void startAnimation() override;
    void stopAnimation() override;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    // The bar now looks as state() says.
    void stateShown();

protected:
    void paintEvent(QPaintEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void showState();
    void showRange();
    void updateAnimation();
    // The filled part of the groove.
    QRectF chunk(const QRectF& groove) const;

    ProgressState state_;
    // Runs for one frame after a value was shown; a value that comes meanwhile waits for its end.
    QBasicTimer frame_;
    bool valueWaiting_ = false;
    QBasicTimer animation_;
    QElapsedTimer animationTime_;
};

} // namespace platform
