#pragma once

#include "install/TXUnarchiver.h"

// Unarchives disk images: attaches the image at a private mount point, copies the volume's top-level entries into a
// fresh folder beside the image, and detaches. It registers itself while the program is loaded.
class TXDiskImageUnarchiver final : public TXUnarchiver {
public:
    explicit TXDiskImageUnarchiver(std::string path);

    // Whether the path's extension is exactly "dmg".
    static bool _canUnarchivePath(const std::string& path);

    void start() override;

protected:
    std::string className() const override;

private:
    static bool load();

    void _extractDMG();
    void giveUp(const std::string& mountPoint);
    bool attach(const std::string& mountPoint);
    void copyVolume(const std::string& mountPoint);
    bool copyEntries(const std::string& mountPoint, const std::string& extractionFolder);
    static void detach(const std::string& mountPoint);
    void postFailure();

    static const bool loaded;
};
