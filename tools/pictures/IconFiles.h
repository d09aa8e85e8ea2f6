#pragma once

#include <QDir>

// The rasterised icons that the program carries, because drawing them from their vector sources would cost start-up
// time.
class IconFiles {
public:
    // Draws all of them anew; false when one could not be read or written.
    static bool render(const QDir& repository);
};
