#pragma once

#include "platform/cocoa/CocoaBundles.h"
#include "platform/cocoa/CocoaMainInterface.h"
#include "tests/cocoa/MainLoop.h"
#include "tests/cocoa/TestBundle.h"

#include <gtest/gtest.h>

#include <string>

// What a person can find on the screen and press.
namespace screen {

// The visible button with that title; nil when there is none.
NSButton* button(const std::string& title);

// The titles of all visible buttons in windows other than `besides`.
std::vector<std::string> texts(NSWindow* besides);

// Presses the Escape key in the window.
void pressEscape(NSWindow* window);

} // namespace screen

// Counts what the interface asks for.
class CountingApplication : public platform::Application, public platform::ApplicationDelegate {
public:
    void terminate() override { ++quits; }
    void replyToApplicationShouldTerminate(bool) override {}
    void applicationDidFinishLaunching() override {}
    platform::TerminateReply applicationShouldTerminate() override { return platform::TerminateReply::Cancel; }
    bool applicationShouldTerminateAfterLastWindowClosed() override { return true; }
    void showHelp() override { ++helps; }

    int quits = 0;
    int helps = 0;
};

// The interface on screen, with English texts.
class InterfaceTest : public testing::Test {
protected:
    InterfaceTest() { interface.start(application, application); }

    const TestBundle bundle{"", {"en"}};
    platform::CocoaBundles bundles{bundle.path()};
    CountingApplication application;
    platform::CocoaMainInterface interface { bundles };
};
