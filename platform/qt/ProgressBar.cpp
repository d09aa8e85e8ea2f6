#include "platform/qt/ProgressBar.h"

#include "platform/qt/ProgressColors.h"

#include <QAccessible>
#include <QPainter>
#include <QStyle>
#include <QTimerEvent>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace platform {

namespace {

// One picture of a 60 Hz screen, in milliseconds.
constexpr int frameInterval = 16;
// The busy segment: its share of the groove, and how long it takes to go there and back, in milliseconds.
constexpr double segmentShare = 0.3;
constexpr double segmentPeriod = 2600.0;

} // namespace

ProgressBar::ProgressBar(QWidget* parent) : QProgressBar(parent) {
    setTextVisible(false);
    showState();
}

void ProgressBar::setIndeterminate(bool indeterminate) {
    state_.indeterminate = indeterminate;
    showState();
}

void ProgressBar::setMinValue(double value) {
    state_.minimum = value;
    showState();
}

void ProgressBar::setMaxValue(double value) {
    state_.maximum = value;
    showState();
}

void ProgressBar::setDoubleValue(double value) {
    state_.value = value;
    valueWaiting_ = frame_.isActive();
    if (!valueWaiting_) {
        frame_.start(frameInterval, this);
        showState();
    }
}

void ProgressBar::startAnimation() {
    state_.startAnimation();
    showState();
}

void ProgressBar::stopAnimation() {
    state_.stopAnimation();
    showState();
}

void ProgressBar::showState() {
    valueWaiting_ = false;
    const bool busyBefore = maximum() == 0;
    // The base class paints at once, but only what its own look makes necessary.
    update();
    showRange();
    updateAnimation();
    if (busyBefore != state_.isBusy()) {
        QAccessible::State changed;
        changed.busy = true;
        QAccessibleStateChangeEvent event(this, changed);
        QAccessible::updateAccessibility(&event);
    }
    emit stateShown();
}

// The base class forgets its value while the range is empty.
void ProgressBar::showRange() {
    if (state_.isBusy()) {
        setRange(0, 0);
    } else {
        setRange(0, ProgressState::steps);
        setValue(state_.position());
    }
}

void ProgressBar::updateAnimation() {
    // Styles answer 0 for people whom movement disturbs.
    const bool mayMove = style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) > 0;
    if (!state_.isBusy() || !isVisible() || !mayMove) {
        animation_.stop();
    } else if (!animation_.isActive()) {
        animationTime_.start();
        animation_.start(frameInterval, this);
    }
}

void ProgressBar::timerEvent(QTimerEvent* event) {
    if (event->timerId() == animation_.timerId()) {
        update();
    } else if (event->timerId() == frame_.timerId()) {
        if (valueWaiting_) {
            showState();
        } else {
            frame_.stop();
        }
    } else {
        QProgressBar::timerEvent(event);
    }
}

void ProgressBar::showEvent(QShowEvent* event) {
    QProgressBar::showEvent(event);
    updateAnimation();
}

void ProgressBar::hideEvent(QHideEvent* event) {
    QProgressBar::hideEvent(event);
    updateAnimation();
}

QSize ProgressBar::sizeHint() const {
    const int lineHeight = fontMetrics().height();
    return {lineHeight * 10, std::max(8, lineHeight / 2)};
}

QSize ProgressBar::minimumSizeHint() const {
    return {sizeHint().width() / 2, sizeHint().height()};
}

void ProgressBar::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const ProgressColors colors = ProgressColors::of(palette());
    const QRectF groove = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    const double radius = groove.height() / 2;
    painter.setPen(QPen(colors.outline, 1.0));
    painter.setBrush(colors.groove);
    painter.drawRoundedRect(groove, radius, radius);
    const QRectF filled = chunk(groove);
    if (!filled.isEmpty()) {
        painter.setPen(QPen(colors.chunk, 1.0));
        painter.setBrush(colors.chunk);
        painter.drawRoundedRect(filled, radius, radius);
    }
}

QRectF ProgressBar::chunk(const QRectF& groove) const {
    QRectF filled = groove;
    if (state_.isBusy()) {
        const double turn =
            animation_.isActive() ? static_cast<double>(animationTime_.elapsed()) / segmentPeriod : 0.25;
        const double place = (1 - std::cos(turn * 2 * std::numbers::pi)) / 2;
        filled.setWidth(groove.width() * segmentShare);
        filled.translate((groove.width() - filled.width()) * place, 0);
    } else {
        const double share = static_cast<double>(value()) / ProgressState::steps;
        // Never narrower than its round ends.
        filled.setWidth(value() > 0 ? std::max(groove.width() * share, groove.height()) : 0);
    }
    if (isRightToLeft()) {
        filled.moveRight(groove.left() + groove.right() - filled.left());
    }
    return filled;
}

} // namespace platform
