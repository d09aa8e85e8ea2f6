#pragma once

#include "platform/qt/ProgressBar.h"

#include <QAccessibleWidget>

namespace platform {

// A bar as screen readers see it: a value in per cent, or busy without one.
class ProgressBarAccessible : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit ProgressBarAccessible(ProgressBar& bar);

    void* interface_cast(QAccessible::InterfaceType type) override;
    QString text(QAccessible::Text kind) const override;
    QAccessible::State state() const override;

    QVariant currentValue() const override;
    QVariant minimumValue() const override { return 0.0; }
    QVariant maximumValue() const override { return 100.0; }
    QVariant minimumStepSize() const override { return 1.0; }
    // The program's progress is nobody else's to change.
    void setCurrentValue(const QVariant& /*value*/) override {}

private:
    const ProgressState& progress() const;
};

} // namespace platform
