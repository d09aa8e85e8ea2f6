#pragma once

#include "platform/UserInterface.h"

// The alerts that the program shows, in the person's language. Main thread.
namespace InstallerAlerts {

enum class FailedStage { Check, Download, Install };

// Whether to quit although a stage is running. The first button goes on, the second quits.
platform::Alert quitWhileBusy();

// Every answer ends the program. The button for the manual download comes first where it is offered.
platform::Alert failure(FailedStage stage, bool offersManualDownload);

// The product's store edition is there already. Every answer ends the program.
platform::Alert storeEdition(bool offersManualDownload);

} // namespace InstallerAlerts
