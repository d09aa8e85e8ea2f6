#include "platform/qt/QtInterface.h"

#include "platform/qt/QtMainInterface.h"

namespace platform {

std::unique_ptr<MainInterface> makeQtInterface(const QtInterfaceOptions& options) {
    return std::make_unique<QtMainInterface>(options);
}

} // namespace platform
