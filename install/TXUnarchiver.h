#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class TXUnarchiver;

// What an unarchiver tells of its work. Every message is optional.
class TXUnarchiverDelegate {
public:
    virtual ~TXUnarchiverDelegate() = default;
    virtual void unarchiverExtractedLength(TXUnarchiver& /*unarchiver*/, std::int64_t /*extractedLength*/) {}
    // The folder that now holds the contents; on the worker thread, before success is reported.
    virtual void unarchiverDidCopyContentAtPath(const std::string& /*path*/) {}
    // Main thread. Failure can come more than once for one archive.
    virtual void unarchiverDidFinish(TXUnarchiver& /*unarchiver*/) {}
    virtual void unarchiverDidFail(TXUnarchiver& /*unarchiver*/) {}
};

// Turns an archive into a plain folder of files beside it. The registry of kinds is written while the program is
// loaded, before any thread exists, and read afterwards.
class TXUnarchiver : public std::enable_shared_from_this<TXUnarchiver> {
public:
    // One kind of archive: whether it takes a path, and how an unarchiver for it is made.
    struct Implementation {
        std::function<bool(const std::string& path)> canUnarchivePath;
        std::function<std::shared_ptr<TXUnarchiver>(const std::string& path)> make;
    };

    TXUnarchiver(const TXUnarchiver&) = delete;
    TXUnarchiver& operator=(const TXUnarchiver&) = delete;
    virtual ~TXUnarchiver() = default;

    // A new unarchiver of the first kind that takes the path, not yet started; null when none does.
    static std::shared_ptr<TXUnarchiver> unarchiverForPath(const std::string& path);

    static void _registerImplementation(Implementation implementation);
    static std::vector<Implementation> _unarchiverImplementations();

    void setDelegate(std::shared_ptr<TXUnarchiverDelegate> newDelegate);

    // Begins the work and returns at once; the work keeps the unarchiver alive.
    virtual void start();

    // The kind and the archive's path.
    std::string description() const;

protected:
    explicit TXUnarchiver(std::string path);

    virtual std::string className() const;
    void _notifyDelegateOfExtractedLength(std::int64_t length);
    void _notifyDelegateOfSuccess();
    void _notifyDelegateOfFailure();

    std::shared_ptr<TXUnarchiverDelegate> delegate;
    std::string archivePath;
};
