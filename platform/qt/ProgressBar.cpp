#include "platform/qt/ProgressBar.h"

#include "platform/qt/Contrast.h"
#include "platform/qt/ProgressColors.h"

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
// The same segment as a shimmer that crosses the groove: how long it takes, and how much there is to be seen of it.
constexpr double shimmerPeriod = 1800.0;
constexpr float shimmerStrength = 0.3F;

} // namespace

ProgressBar::ProgressBar(QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
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
    showState();
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
    update();
    updateAnimation();
    emit stateChanged();
}

void ProgressBar::updateAnimation() {
    // Styles answer 0 for people whom movement disturbs.
    const bool mayMove = style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) > 0;
    if (!(state_.isBusy() || state_.isWaiting()) || !isVisible() || !mayMove) {
        animation_.stop();
    } else if (!animation_.isActive()) {
        animationTime_.start();
        animation_.start(frameInterval, this);
    }
}

void ProgressBar::timerEvent(QTimerEvent* event) {
    if (event->timerId() == animation_.timerId())
        update();
    else
        QWidget::timerEvent(event);
}

void ProgressBar::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    updateAnimation();
}

void ProgressBar::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
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
    if (state_.isWaiting() && animation_.isActive())
        drawShimmer(painter, groove, Contrast::mix(colors.groove, colors.chunk, shimmerStrength));
    if (!filled.isEmpty()) {
        painter.setPen(QPen(colors.chunk, 1.0));
        painter.setBrush(colors.chunk);
        painter.drawRoundedRect(filled, radius, radius);
    }
}

void ProgressBar::drawShimmer(QPainter& painter, const QRectF& groove, const QColor& color) const {
    const double turn = std::fmod(static_cast<double>(animationTime_.elapsed()) / shimmerPeriod, 1.0);
    const double place = isRightToLeft() ? 1 - turn : turn;
    const double width = groove.width() * segmentShare;
    // It comes from beyond one end and goes beyond the other.
    const double left = groove.left() - width + (groove.width() + width) * place;
    QLinearGradient gradient(left, 0, left + width, 0);
    const QColor nothing = QColor::fromRgbF(color.redF(), color.greenF(), color.blueF(), 0.0F);
    gradient.setColorAt(0, nothing);
    gradient.setColorAt(0.5, color);
    gradient.setColorAt(1, nothing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(gradient);
    painter.drawRoundedRect(groove.adjusted(0.5, 0.5, -0.5, -0.5), groove.height() / 2, groove.height() / 2);
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
        const int position = state_.position();
        const double share = static_cast<double>(position) / ProgressState::steps;
        // Never narrower than its round ends.
        filled.setWidth(position > 0 ? std::max(groove.width() * share, groove.height()) : 0);
    }
    if (isRightToLeft())
        filled.moveRight(groove.left() + groove.right() - filled.left());
    return filled;
}

} // namespace platform
