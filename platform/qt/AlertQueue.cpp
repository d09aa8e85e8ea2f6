#include "platform/qt/AlertQueue.h"

#include "platform/qt/AlertSheet.h"
#include "platform/qt/MainWindow.h"

#include <QAction>

#include <utility>

namespace platform {

void AlertQueue::beginSheet(const Alert& alert, std::function<void(int returnCode)> ended) {
    entries_.push_back({alert, std::move(ended)});
    if (sheet_ == nullptr) {
        showNext();
    }
}

void AlertQueue::showNext() {
    sheet_ = new AlertSheet(entries_.front().alert, window_);
    // Help is at hand meanwhile; quitting has to wait for the answer, which may be about just that.
    sheet_->addAction(window_.helpAction());
    const auto ended = [this](int returnCode) { sheetEnded(returnCode); };
    QObject::connect(sheet_, &QDialog::finished, sheet_, ended, Qt::SingleShotConnection);
    window_.callForAttention();
    sheet_->open();
}

// An alert that the answer itself begins comes after those that are waiting already.
void AlertQueue::sheetEnded(int returnCode) {
    sheet_->deleteLater();
    const Entry entry = std::move(entries_.front());
    entries_.pop_front();
    entry.ended(returnCode);
    if (entries_.empty()) {
        sheet_ = nullptr;
    } else {
        showNext();
    }
}

} // namespace platform
