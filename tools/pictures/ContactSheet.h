#pragma once

#include "tools/pictures/Pictures.h"

#include <QImage>

#include <vector>

// Many pictures on one sheet, a row for each look.
class ContactSheet {
public:
    // A row of pictures with the text above it.
    void addRow(const QString& title, const std::vector<Pictures::Picture>& pictures);

    // Needs a Qt application object.
    QImage draw() const;

private:
    struct Row {
        QString title;
        std::vector<Pictures::Picture> pictures;

        QSize size() const;
    };

    std::vector<Row> rows_;
};
