#pragma once

#include "platform/UserInterface.h"

#include <algorithm>
#include <deque>
#include <utility>

namespace platform {

// Shows alerts one at a time, in the order in which they began: what all front ends have in common. Main thread.
class AlertQueue : public Alerts {
public:
    SheetNumber beginSheet(const Alert& alert, std::function<void(int returnCode)> ended) final {
        entries_.push_back({++lastNumber_, alert, std::move(ended)});
        if (entries_.size() == 1)
            showFirst();
        return lastNumber_;
    }

    void endSheet(SheetNumber sheet, int returnCode) final {
        const auto found = std::find_if(entries_.begin(), entries_.end(),
                                        [sheet](const Entry& entry) { return entry.number == sheet; });
        if (found == entries_.end())
            return;
        if (found == entries_.begin()) {
            answer(returnCode);
        } else {
            const auto ended = std::move(found->ended);
            entries_.erase(found);
            ended(returnCode);
        }
    }

protected:
    // The open alert was answered: tells its end, then shows the next one. Without an open alert nothing happens.
    void answer(int returnCode) {
        if (!std::exchange(open_, false))
            return;
        programEnds_ = programEnds_ || entries_.front().alert.endsProgram;
        // It keeps its place meanwhile, so that an alert that the answer begins comes after those that wait already.
        std::exchange(entries_.front().ended, nullptr)(returnCode);
        entries_.pop_front();
        if (entries_.empty())
            allEnded(std::exchange(programEnds_, false));
        else
            showFirst();
    }

    // How many alerts have begun and not ended.
    std::size_t count() const { return entries_.size(); }

private:
    struct Entry {
        SheetNumber number;
        Alert alert;
        std::function<void(int returnCode)> ended;
    };

    // Puts the alert where the person sees it, perhaps in the place of one that has just ended. It stays valid until it
    // ends, which must not be within this call.
    virtual void show(const Alert& alert) = 0;

    // Takes the last alert away. When an alert that ends the program was among those since the last time, nothing that
    // looks like work in progress may take its place, even though the program's end can take a while.
    virtual void allEnded(bool programEnds) = 0;

    void showFirst() {
        open_ = true;
        show(entries_.front().alert);
    }

    std::deque<Entry> entries_;
    SheetNumber lastNumber_ = 0;
    // Whether the first entry is on the screen. It is not while its end is being told.
    bool open_ = false;
    bool programEnds_ = false;
};

} // namespace platform
