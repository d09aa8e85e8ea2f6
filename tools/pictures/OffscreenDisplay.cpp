#include "tools/pictures/OffscreenDisplay.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryFile>

void OffscreenDisplay::use(QSize size, double scale) {
    // Read anew, like the environment, by each application object.
    static QTemporaryFile configuration;
    const QJsonObject screen{{"name", "Test"},
                             {"x", 0},
                             {"y", 0},
                             {"width", qRound(size.width() * scale)},
                             {"height", qRound(size.height() * scale)},
                             {"logicalDpi", 96},
                             {"logicalBaseDpi", 96},
                             {"dpr", 1}};
    configuration.open();
    configuration.resize(0);
    configuration.write(QJsonDocument(QJsonObject{{"screens", QJsonArray{screen}}}).toJson());
    configuration.flush();
    qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + configuration.fileName().toUtf8());
    qputenv("QT_SCALE_FACTOR", QByteArray::number(scale));
}
