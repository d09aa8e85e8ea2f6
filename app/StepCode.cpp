#include "app/StepCode.h"

#include "telemetry/TXInstallerLogController.h"

void logStep(const char* code) {
    if (const auto log = TXInstallerLogController::sharedTXInstallerLogController())
        log->installerLogToServerWithCode(code);
}
