// Runs one part of the installer by itself: "download URL FILE" or "copy FROM TO".

#include "platform/curl/CurlTransfers.h"
#include "platform/posix/PosixFileChanges.h"
#include "platform/qtcore/QtThreads.h"

#include <QCoreApplication>

#include <cstdio>
#include <string>

namespace {

class Printing final : public platform::DownloadDelegate {
public:
    void downloadDidReceiveResponse(std::int64_t /*expectedContentLength*/) override {}
    void downloadDidReceiveDataOfLength(std::uint64_t /*length*/) override {}
    bool downloadShouldDecodeSourceDataOfMIMEType(const std::string& /*type*/) override { return false; }
    void downloadDidFinish() override { QCoreApplication::exit(0); }
    void downloadDidFailWithError(const foundation::Error& error) override {
        std::fprintf(stderr, "%s\n", error.description().c_str());
        QCoreApplication::exit(1);
    }
};

int download(const std::string& url, const std::string& file) {
    int argc = 1;
    char name[] = "bench_tool";
    char* argv[] = {name, nullptr};
    const QCoreApplication application(argc, argv);
    platform::QtThreads threads;
    platform::CurlTransfers transfers(threads);
    const auto source = foundation::URL::withString(url);
    if (!source)
        return 1;
    const auto running = transfers.startDownload(*source, std::make_shared<Printing>());
    if (!running)
        return 1;
    running->setDestination(file, true);
    return QCoreApplication::exec();
}

int copy(const std::string& from, const std::string& to) {
    platform::PosixFileChanges changes({});
    std::optional<foundation::Error> error;
    if (changes.copyItem(from, to, &error))
        return 0;
    std::fprintf(stderr, "%s\n", error->description().c_str());
    return 1;
}

} // namespace

int main(int argc, char** argv) {
    const std::string part = argc == 4 ? argv[1] : "";
    if (part == "download")
        return download(argv[2], argv[3]);
    if (part == "copy")
        return copy(argv[2], argv[3]);
    std::fputs("usage: bench_tool download URL FILE | copy FROM TO\n", stderr);
    return 2;
}
