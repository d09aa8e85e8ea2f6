#pragma once

#include "platform/Platform.h"
#include "tests/support/FakeApplication.h"
#include "tests/support/FakeAuthorization.h"
#include "tests/support/FakeBundles.h"
#include "tests/support/FakeFiles.h"
#include "tests/support/FakePreferences.h"
#include "tests/support/FakeSystem.h"
#include "tests/support/FakeTasks.h"
#include "tests/support/FakeThreads.h"
#include "tests/support/FakeTransfers.h"
#include "tests/support/FakeUserInterface.h"
#include "tests/support/FakeWorkspace.h"

// One fake of every service, in place of the system for as long as it lives.
class FakePlatform {
public:
    FakePlatform() {
        platform::current() = {&threads,   &tasks,         &files,   &files,         &transfers,   &diskImages,
                               &workspace, &authorization, &bundles, &preferences,   &processInfo, &locale,
                               &console,   &application,   &alerts,  &singleInstance};
        for (const char* folder : {"/tmp/me", "/Users/me", "/Applications"}) {
            files.addFolder(folder);
            files.sharedFolders.insert(folder);
        }
    }
    FakePlatform(const FakePlatform&) = delete;
    FakePlatform& operator=(const FakePlatform&) = delete;
    ~FakePlatform() { platform::current() = previous_; }

    FakeThreads threads;
    FakeTasks tasks;
    FakeFiles files;
    FakeTransfers transfers{files};
    FakeDiskImages diskImages;
    FakeWorkspace workspace{files};
    FakeAuthorization authorization{files};
    FakeBundles bundles{files};
    FakePreferences preferences;
    FakeProcessInfo processInfo;
    FakeLocale locale;
    FakeConsole console;
    FakeApplication application{threads};
    FakeAlerts alerts;
    FakeSingleInstance singleInstance;

private:
    platform::Platform previous_ = platform::current();
};
