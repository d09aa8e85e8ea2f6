#include "platform/cocoa/AlertSheets.h"

#include "platform/cocoa/CocoaApplication.h"
#include "platform/cocoa/CocoaText.h"
#include "platform/cocoa/Step.h"

#include <utility>

namespace platform {

namespace {

Retained<NSAlert> makeAlert(const Alert& description) {
    auto alert = Retained<NSAlert>::adopt([[NSAlert alloc] init]);
    [alert.get() setAlertStyle:description.style == AlertStyle::Critical ? NSAlertStyleCritical : NSAlertStyleWarning];
    [alert.get() setMessageText:toNSString(description.messageText)];
    [alert.get() setInformativeText:toNSString(description.informativeText)];
    for (const std::string& title : description.buttons)
        [alert.get() addButtonWithTitle:toNSString(title)];
    return alert;
}

TXApplication* application() {
    return static_cast<TXApplication*>(NSApp);
}

} // namespace

void AlertSheets::show(const Alert& alert) {
    close();
    beginLater(makeAlert(alert), alert.escapeButton);
}

void AlertSheets::allEnded(bool programEnds) {
    close();
    if (programEnds)
        [window_ orderOut:nil];
}

void AlertSheets::beginLater(Retained<NSAlert> alert, std::size_t escapeButton) {
    TXStep* step = [TXStep stepWithStep:[this, alert = std::move(alert), escapeButton, number = ++number_] {
        if (number == number_)
            begin(alert.get(), escapeButton);
    }];
    [step performSelectorOnMainThread:@selector(perform) withObject:nil waitUntilDone:NO];
}

void AlertSheets::begin(NSAlert* alert, std::size_t escapeButton) {
    open_ = Retained<NSAlert>(alert);
    // Bounces in the Dock where the person is with another program.
    [NSApp requestUserAttention:NSCriticalRequest];
    if ([window_ isMiniaturized])
        [window_ deminiaturize:nil];
    // An open sheet would keep the system from ending the program, also when the person logs out.
    [[alert window] setPreventsApplicationTerminationWhenModal:NO];
    if (escapeButton < [[alert buttons] count])
        [application() setEscapeButton:[[alert buttons] objectAtIndex:escapeButton]];
    const int number = number_;
    [alert beginSheetModalForWindow:window_
                  completionHandler:^(NSModalResponse returnCode) {
                    sheetEnded(number, returnCode);
                  }];
}

void AlertSheets::sheetEnded(int number, NSInteger returnCode) {
    if (number != number_ || !open_)
        return;
    [application() setEscapeButton:nil];
    const Retained<NSAlert> alert = std::exchange(open_, {});
    // The sheet goes before its answer is carried out, which can begin another one.
    [[alert.get() window] orderOut:nil];
    answer(static_cast<int>(returnCode));
}

void AlertSheets::close() {
    ++number_;
    [application() setEscapeButton:nil];
    const Retained<NSAlert> alert = std::exchange(open_, {});
    if (!alert)
        return;
    [window_ endSheet:[alert.get() window]];
    [[alert.get() window] orderOut:nil];
}

} // namespace platform
