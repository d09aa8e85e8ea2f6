#include "app/StepCode.h"

#include "telemetry/TXInstallerLogController.h"

void logStep(const char* code) {
    TXInstallerLogController::sharedTXInstallerLogController()->installerLogToServerWithCode(code);
}
