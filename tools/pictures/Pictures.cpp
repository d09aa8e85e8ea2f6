#include "tools/pictures/Pictures.h"

#include "platform/qt/QtInterface.h"
#include "tools/pictures/OffscreenDisplay.h"
#include "tools/pictures/SampleAlerts.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QWidget>

#include <memory>

namespace {

void runFor(int milliseconds) {
    QElapsedTimer time;
    time.start();
    while (time.elapsed() < milliseconds)
        QCoreApplication::processEvents(QEventLoop::AllEvents, milliseconds);
}

// Takes pictures of one interface while it is led through its stages.
class Photographer {
public:
    explicit Photographer(const Pictures::Look& look)
        : texts_(look.language),
          interface_(platform::makeQtInterface(
              {.language = look.language, .identifier = "example.tolvix.installer", .name = "Tolvix Installer"})) {
        QApplication::setPalette(look.palette);
        QApplication::setFont(QFont("Noto Sans", look.fontSize));
        interface_->window().setTitle(texts_.text("WINDOW_TITLE"));
        interface_->progressIndicator().setIndeterminate(true);
        interface_->progressIndicator().startAnimation();
        interface_->textIndicator().setStringValue(texts_.text("DOWNLOADING"));
        interface_->start(application_, delegate_);
    }

    std::vector<Pictures::Picture> takeAll() {
        takeStages();
        takeAlerts();
        return std::move(pictures_);
    }

private:
    struct NoApplication : platform::Application {
        void terminate() override {}
        void replyToApplicationShouldTerminate(bool /*shouldTerminate*/) override {}
    };

    struct NoDelegate : platform::ApplicationDelegate {
        void applicationDidFinishLaunching() override {}
        platform::TerminateReply applicationShouldTerminate() override { return platform::TerminateReply::Cancel; }
        bool applicationShouldTerminateAfterLastWindowClosed() override { return false; }
        void showHelp() override {}
    };

    void takeStages() {
        platform::ProgressIndicator& bar = interface_->progressIndicator();
        constexpr int awayFromTheEdge = 500;
        runFor(awayFromTheEdge);
        take("check");
        bar.setIndeterminate(false);
        bar.setDoubleValue(62);
        take("download");
        bar.setIndeterminate(true);
        bar.startAnimation();
        interface_->textIndicator().setStringValue(texts_.text("INSTALLING"));
        runFor(awayFromTheEdge * 2);
        take("install");
        bar.stopAnimation();
        take("stopped");
    }

    void takeAlerts() {
        std::vector<platform::Alert> alerts = SampleAlerts::all(texts_);
        for (std::size_t index = 0; index < alerts.size(); ++index) {
            // The window stays for the next one.
            alerts[index].endsProgram = false;
            const auto sheet = interface_->alerts().beginSheet(alerts[index], [](int) {});
            take(QString("alert-%1").arg(index));
            interface_->alerts().endSheet(sheet, platform::Alert::firstButtonReturn);
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        }
    }

    void take(const QString& name) {
        QCoreApplication::processEvents();
        pictures_.push_back({name, QApplication::topLevelWidgets().constFirst()->grab().toImage()});
    }

    TextTable texts_;
    NoApplication application_;
    NoDelegate delegate_;
    std::unique_ptr<platform::MainInterface> interface_;
    std::vector<Pictures::Picture> pictures_;
};

} // namespace

std::vector<Pictures::Picture> Pictures::take(const Look& look, double scale) {
    OffscreenDisplay::use(look.screen, scale);
    return Photographer(look).takeAll();
}
