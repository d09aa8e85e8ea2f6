#include "platform/qt/ResourceIcon.h"

#include <QCoreApplication>
#include <QFile>
#include <QImageReader>

// The resources lie in a library, where nothing else refers to them.
static void initializeResources() {
    Q_INIT_RESOURCE(platform_qt);
}

namespace platform {

namespace {

// A branded bundle has pictures of its own in place of the program's.
QString fileName(const QString& name, int extent) {
    const QString file = QString("icons/%1-%2.png").arg(name).arg(extent);
    const QString branded = QCoreApplication::applicationDirPath() + "/../Resources/" + file;
    return QFile::exists(branded) ? branded : ":/platform/qt/" + file;
}

QPixmap load(const QString& file) {
    QImageReader reader(file, "png");
    // Looking for the format would load all image plugins, for nothing.
    reader.setAutoDetectImageFormat(false);
    return QPixmap::fromImageReader(&reader);
}

} // namespace

QIcon ResourceIcon::named(const QString& name, std::initializer_list<int> extents) {
    initializeResources();
    QIcon icon;
    for (const int extent : extents)
        icon.addPixmap(load(fileName(name, extent)));
    return icon;
}

QPixmap ResourceIcon::picture(const QString& name, int extent) {
    initializeResources();
    QString found;
    for (const int candidate : {48, 64, 96, 128, 256}) {
        const QString file = fileName(name, candidate);
        if (!QFile::exists(file))
            continue;
        found = file;
        if (candidate >= extent)
            break;
    }
    return load(found);
}

} // namespace platform
