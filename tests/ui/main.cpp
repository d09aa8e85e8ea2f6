#include "tools/pictures/OffscreenDisplay.h"

#include <gtest/gtest.h>

#include <QtGlobal>

int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        OffscreenDisplay::use({1366, 768});
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
