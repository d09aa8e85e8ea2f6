#include "ui/TXInstallWindowController.h"

#include "tests/support/FakeProgressWindow.h"
#include "tests/unit/CoreTest.h"

// What the window shows, stage by stage.

TEST_F(CoreTest, TheWindowFollowsTheStages) {
    FakeProgressWindow window;
    TXInstallWindowController controller(window);
    controller.setTextIndicator(&window);
    controller.setProgressIndicator(&window);
    system.bundles.table["MAC_LAUNCHER_INSTALLING"] = "Wird installiert";
    const auto changes = [&] { return std::exchange(window.changes, {}); };

    controller.awakeFromNib();
    EXPECT_EQ(changes(), Texts{"title MAC_LAUNCHER_WINDOW_TITLE"}) << "a missing text shows its key";
    controller.windowDidLoad();
    EXPECT_EQ(changes(), (Texts{"indeterminate", "minimum 0.000000", "maximum 100.000000", "start"}));
    controller.checkWillStart();
    EXPECT_EQ(changes(), Texts{"text MAC_LAUNCHER_DOWNLOADING"});
    controller.checkDidEnd();
    EXPECT_EQ(changes(), Texts());
    controller.downloadWillStart();
    EXPECT_EQ(changes(), (Texts{"determinate", "value 0.000000", "text MAC_LAUNCHER_DOWNLOADING"}));
    controller.downloadProgress(150.5);
    EXPECT_EQ(changes(), Texts{"value 150.500000"}) << "the bar limits, not the controller";
    controller.downloadDidEnd();
    EXPECT_EQ(changes(), Texts{"indeterminate"});
    controller.installWillStart();
    EXPECT_EQ(changes(), (Texts{"indeterminate", "start", "text Wird installiert"}));
    controller.installProgress(20);
    EXPECT_EQ(changes(), Texts{"value 20.000000"});
    controller.installDidEnd();
    EXPECT_EQ(changes(), Texts{"stop"});
}
