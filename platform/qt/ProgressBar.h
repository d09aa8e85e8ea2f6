#pragma once

#include "platform/UserInterface.h"
#include "platform/qt/ProgressState.h"

#include <QBasicTimer>
#include <QElapsedTimer>
#include <QWidget>

namespace platform {

// The window's bar: a rounded groove in the palette's colours. Values may come faster than the screen can show them.
class ProgressBar : public QWidget, public ProgressIndicator {
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
    // state() has changed, and the bar will be drawn so.
    void stateChanged();

protected:
    void paintEvent(QPaintEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void showState();
    void updateAnimation();
    // A sign of life where there is no value to show.
    void drawShimmer(QPainter& painter, const QRectF& groove, const QColor& color) const;
    // The filled part of the groove.
    QRectF chunk(const QRectF& groove) const;

    ProgressState state_;
    QBasicTimer animation_;
    QElapsedTimer animationTime_;
};

} // namespace platform
