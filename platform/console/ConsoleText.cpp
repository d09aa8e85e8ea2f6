#include "platform/console/ConsoleText.h"

#include "foundation/MessageText.h"
#include "platform/linux/Terminal.h"

#include <QString>
#include <QStringList>
#include <QTextBoundaryFinder>

#include <algorithm>
#include <clocale>
#include <cwchar>

namespace platform {

namespace {

// How many columns the text takes up: two for most characters of East Asia, none for marks that stand on others.
std::size_t displayWidth(const QString& text) {
    // By a locale that is always there: the program's own need not be installed.
    static const locale_t unicode = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    const locale_t previous = unicode == nullptr ? nullptr : ::uselocale(unicode);
    std::size_t width = 0;
    for (const char32_t character : text.toStdU32String()) {
        const int columns = ::wcwidth(static_cast<wchar_t>(character));
        width += columns < 0 ? 1 : static_cast<std::size_t>(columns);
    }
    if (previous != nullptr)
        ::uselocale(previous);
    return width;
}

QString withoutBlanksAtEnd(QString text) {
    while (text.endsWith(' '))
        text.chop(1);
    return text;
}

QString wrapped(const QString& line, std::size_t columns, std::size_t indent) {
    QTextBoundaryFinder finder(QTextBoundaryFinder::Line, line);
    QString result;
    QString row;
    qsizetype start = 0;
    for (qsizetype end = finder.toNextBoundary(); end >= 0; end = finder.toNextBoundary()) {
        const QString piece = line.mid(start, end - start);
        start = end;
        if (!row.trimmed().isEmpty() && displayWidth(row + withoutBlanksAtEnd(piece)) > columns) {
            result += withoutBlanksAtEnd(row) + '\n';
            row = QString(static_cast<qsizetype>(indent), ' ');
        }
        row += piece;
    }
    return result + withoutBlanksAtEnd(row);
}

} // namespace

std::string consoleLines(int descriptor, const std::string& text, std::size_t indent) {
    std::string lines = foundation::printableText(text);
    std::replace(lines.begin(), lines.end(), '\t', ' ');
    if (terminal::isPlain(descriptor))
        lines = foundation::asciiText(lines);
    if (!terminal::isTerminal(descriptor))
        return lines + '\n';
    const std::size_t columns = std::max(terminal::columns(descriptor), indent + 1);
    QString result;
    for (const QString& line : QString::fromStdString(lines).split('\n'))
        result += wrapped(line, columns, indent) + '\n';
    return result.toStdString();
}

} // namespace platform
