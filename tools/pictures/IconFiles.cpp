#include "tools/pictures/IconFiles.h"

#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

namespace {

bool renderFile(const QString& source, const QString& target, int extent) {
    QSvgRenderer renderer(source);
    QImage image(extent, extent, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    renderer.render(&painter);
    painter.end();
    return renderer.isValid() && image.save(target, "PNG", 0);
}

} // namespace

bool IconFiles::render(const QDir& repository) {
    const QDir icons(repository.filePath("platform/qt/icons"));
    const QDir macIcons(repository.filePath("platform/macos/icons"));
    bool done = true;
    for (const int extent : {16, 24, 32, 48, 64, 128, 256, 512, 1024}) {
        // The smallest have drawings of their own, whose edges lie between pixels.
        const QString source =
            extent < 32 ? QString("resources/icon-%1.svg").arg(extent) : QString("resources/icon.svg");
        const QDir& folder = extent > 256 ? macIcons : icons;
        done &= renderFile(repository.filePath(source), folder.filePath(QString("icon-%1.png").arg(extent)), extent);
    }
    for (const char* name : {"warning", "critical"})
        for (const int extent : {48, 96, 256})
            done &= renderFile(icons.filePath(QString("%1.svg").arg(name)),
                               icons.filePath(QString("%1-%2.png").arg(name).arg(extent)), extent);
    return done;
}
