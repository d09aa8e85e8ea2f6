"""Who may include whom: what must be refused is, and this tree keeps to it."""
import unittest
from pathlib import Path

from tests.tools import TOOLS  # noqa: F401  makes the tools importable

import check_includes

REFUSED = [
    ("app/TXAppDelegate.cpp", "<", "Foundation/Foundation.h"),
    ("app/TXAppDelegate.cpp", "<", "boost/json.hpp"),
    ("app/TXAppDelegate.cpp", "<", "unistd.h"),
    ("app/TXAppDelegate.cpp", '"', "platform/linux/LinuxLocale.h"),
    ("telemetry/Deployment.cpp", '"', "app/TXAppDelegate.h"),
    ("ui/TXLocalizedString.cpp", '"', "install/TXInstallController.h"),
    ("foundation/JSON.cpp", '"', "platform/Platform.h"),
    ("foundation/JSON.cpp", "<", "QString"),
    ("platform/Files.h", '"', "platform/posix/FileDescriptor.h"),
    ("platform/posix/FileCopy.cpp", '"', "platform/qt/MainWindow.h"),
    ("platform/posix/FileCopy.cpp", "<", "sys/prctl.h"),
    ("platform/posix/FileCopy.cpp", "<", "sys/syscall.h"),
    ("platform/linux/hdiutil/main.cpp", '"', "Attach.h"),
    ("platform/qtcore/QtThreads.cpp", "<", "QWidget"),
    ("platform/qtcore/QtThreads.cpp", "<", "QtWidgets/QWidget"),
    ("platform/linux/LinuxLocale.cpp", "<", "QLocale"),
    ("platform/transfers/SourceFile.cpp", "<", "curl/curl.h"),
    ("platform/linux/LinuxLocale.cpp", '"', "app/TXAppDelegate.h"),
]
ALLOWED = [
    ("app/TXAppDelegate.cpp", "<", "optional"),
    ("app/main.cpp", '"', "check/TXCheckController.h"),
    ("check/TXAppDelegate+FeedURL.cpp", '"', "app/TXAppDelegate.h"),
    ("platform/linux/LinuxSystem.cpp", '"', "platform/qt/QtInterface.h"),
    ("platform/qt/MainWindow.cpp", "<", "QWidget"),
]


class CheckIncludesTest(unittest.TestCase):
    def test_refuses_what_does_not_belong(self) -> None:
        for path, kind, name in REFUSED:
            with self.subTest(path=path, name=name):
                self.assertIsNotNone(check_includes.fault(Path(path), kind, name))

    def test_allows_what_does(self) -> None:
        for path, kind, name in ALLOWED:
            with self.subTest(path=path, name=name):
                self.assertIsNone(check_includes.fault(Path(path), kind, name))

    def test_this_tree_is_in_order(self) -> None:
        self.assertEqual(check_includes.main(), 0)


if __name__ == "__main__":
    unittest.main()
