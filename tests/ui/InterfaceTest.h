#pragma once

#include "platform/qt/QtInterface.h"

#include <gtest/gtest.h>

#include <QList>
#include <QPushButton>
#include <QTimer>
#include <QWidget>

#include <memory>
#include <utility>
#include <vector>

// A running interface, and hands and eyes for it. Widgets are found by their object names.
class InterfaceTest : public testing::Test {
protected:
    struct RecordingApplication : platform::Application {
        void terminate() override { ++quitRequests; }
        void replyToApplicationShouldTerminate(bool /*shouldTerminate*/) override {}
        int quitRequests = 0;
    };

    struct RecordingDelegate : platform::ApplicationDelegate {
        void applicationDidFinishLaunching() override {}
        platform::TerminateReply applicationShouldTerminate() override { return platform::TerminateReply::Cancel; }
        bool applicationShouldTerminateAfterLastWindowClosed() override { return endsWithLastWindow; }
        void showHelp() override { ++helpRequests; }
        bool endsWithLastWindow = true;
        int helpRequests = 0;
    };

    // Makes the interface for the language and shows its window, which then has the keyboard.
    void start(const std::string& language = "en");
    void TearDown() override;

    platform::MainInterface& interface() { return *interface_; }

    QWidget& window() const;
    template <typename Kind = QWidget>
    Kind& part(const char* name) const {
        return *window().findChild<Kind*>(name);
    }
    // The sheets that can be seen.
    static QList<QWidget*> sheets();
    // The only sheet; throws if there is another number of them.
    static QWidget& sheet();
    // In the order of the alert.
    static QList<QPushButton*> buttons();

    // Runs for the moment in which the window does not take an answer; without a test's doing, as long as the moment.
    QTimer& settling() const;
    // Lets the moment be over.
    void letWindowSettle();

    // Shows the alert. The codes of the answers gather until they are taken.
    platform::SheetNumber begin(const platform::Alert& alert);
    // Shows it and waits until it can be answered.
    platform::SheetNumber beginSettled(const platform::Alert& alert);
    std::vector<int> takeCodes() { return std::exchange(codes_, {}); }

    // Runs the event loop until nothing is left to do.
    static void settle();
    static void press(QWidget& widget, Qt::Key key, Qt::KeyboardModifiers modifiers = {});

    RecordingApplication application_;
    RecordingDelegate delegate_;

private:
    std::vector<int> codes_;
    std::unique_ptr<platform::MainInterface> interface_;
};
