#include "platform/qtcore/PropertyList.h"

#include <QByteArray>
#include <QString>
#include <QXmlStreamReader>

#include <utility>

namespace platform {

namespace {

using foundation::Value;

constexpr int deepestNesting = 100;

// Every operation stands at the start tag of an element and returns at its end tag. At the first fault the reader has
// an error, and results mean nothing any more.
class PropertyListReader {
public:
    explicit PropertyListReader(const QByteArray& bytes) : xml_(bytes) {}

    std::optional<Value> read() {
        std::optional<Value> value;
        if (xml_.readNextStartElement() && xml_.name() == QLatin1String("plist") && xml_.readNextStartElement()) {
            value = readValue(1);
            xml_.skipCurrentElement();
        }
        while (!xml_.atEnd())
            xml_.readNext();
        return xml_.hasError() ? std::nullopt : value;
    }

private:
    Value readValue(int depth) {
        if (depth > deepestNesting)
            return fail();
        const QString name = xml_.name().toString();
        if (name == QLatin1String("dict"))
            return readDictionary(depth);
        if (name == QLatin1String("array")) {
            Value::Array array;
            while (xml_.readNextStartElement())
                array.push_back(readValue(depth + 1));
            return Value(std::move(array));
        }
        return scalar(name, xml_.readElementText());
    }

    Value readDictionary(int depth) {
        Value::Dictionary dictionary;
        while (xml_.readNextStartElement()) {
            if (xml_.name() != QLatin1String("key"))
                return fail();
            const std::string key = xml_.readElementText().toStdString();
            if (!xml_.readNextStartElement())
                return fail();
            dictionary[key] = readValue(depth + 1);
        }
        return Value(std::move(dictionary));
    }

    Value scalar(const QString& name, const QString& text) {
        bool isRight = true;
        if (name == QLatin1String("string"))
            return Value(text.toStdString());
        if (name == QLatin1String("date") || name == QLatin1String("data"))
            return Value(text.trimmed().toStdString());
        if (name == QLatin1String("true") || name == QLatin1String("false"))
            return Value(name == QLatin1String("true"));
        Value number;
        if (name == QLatin1String("integer"))
            number = Value(std::int64_t{text.trimmed().toLongLong(&isRight)});
        else if (name == QLatin1String("real"))
            number = Value(text.trimmed().toDouble(&isRight));
        else
            isRight = false;
        return isRight ? number : fail();
    }

    Value fail() {
        xml_.raiseError();
        return {};
    }

    QXmlStreamReader xml_;
};

} // namespace

std::optional<Value> parsePropertyList(const std::string& bytes) {
    return PropertyListReader(QByteArray::fromRawData(bytes.data(), static_cast<qsizetype>(bytes.size()))).read();
}

} // namespace platform
