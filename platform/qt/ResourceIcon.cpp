#include "platform/qt/ResourceIcon.h"

#include <QImageReader>
#include <QPixmap>

// The resources lie in a library, where nothing else refers to them.
static void initializeResources() {
    Q_INIT_RESOURCE(platform_qt);
}

namespace platform {

QIcon ResourceIcon::named(const QString& name, std::initializer_list<int> extents) {
    initializeResources();
    QIcon icon;
    for (const int extent : extents) {
        QImageReader reader(QString(":/platform/qt/icons/%1-%2.png").arg(name).arg(extent), "png");
        // Looking for the format would load all image plugins, for nothing.
        reader.setAutoDetectImageFormat(false);
        icon.addPixmap(QPixmap::fromImageReader(&reader));
    }
    return icon;
}

} // namespace platform
