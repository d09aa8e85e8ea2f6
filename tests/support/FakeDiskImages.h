#pragma once

#include "platform/DiskImages.h"

class FakeDiskImages final : public platform::DiskImages {
public:
    std::string toolPath() override { return "/usr/bin/hdiutil"; }
};
