#pragma once

#include "platform/UserInterface.h"
#include "tools/pictures/TextTable.h"

#include <QImage>
#include <QPalette>
#include <QSize>
#include <QString>

#include <vector>

// Pictures of the real window and its alerts, in one language and one set of colours.
class Pictures {
public:
    struct Look {
        std::string language;
        QPalette palette;
        // The size of the desktop's font in points.
        int fontSize = 10;
        // In logical pixels.
        QSize screen{1920, 1080};
    };

    struct Picture {
        QString name;
        QImage image;
    };

    // The scale is the number of device pixels to a logical one.
    static std::vector<Picture> take(const Look& look, double scale);
};
