#include "recordJson.h"

#include "jsonText.h"

#include <QJsonArray>
#include <QJsonObject>

#include <cmath>
#include <cstring>
#include <limits>

// --- Records to JSON ----------------------------------------------------------------------------------------------

static QByteArray arrayOf(const std::vector<unsigned char>& bytes)
{
    return {reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size())};
}

class RecordJsonWriter : public Fields {
public:
    explicit RecordJsonWriter(bool comparesOnly) : isComparable(comparesOnly) {}

    using Fields::field;
    void field(const char* name, unsigned char& value) override { json.add(name, QString::number(value)); }
    void field(const char* name, unsigned int& value) override { json.add(name, QString::number(value)); }
    void field(const char* name, int& value) override { json.add(name, QString::number(value)); }
    void field(const char* name, float& value) override { json.add(name, jsonText(value)); }
    void field(const char* name, double& value) override { json.add(name, jsonText(value)); }
    void field(const char* name, std::string& text) override
    {
        json.add(name, jsonText(QByteArray::fromStdString(text)));
    }
    void field(const char* name, QString& text) override { json.add(name, jsonText(text.toUtf8())); }
    void slot(const char* name, std::string& text) override { field(name, text); }
    void bytes(const char* name, unsigned char* first, int size) override
    {
        json.add(name, jsonText(QByteArray(reinterpret_cast<const char*>(first), size)));
    }
    void bytes(const char* name, std::vector<unsigned char>& value) override
    {
        json.add(name, jsonText(arrayOf(value)));
    }
    void skip() override {}
    void samples(StoredWave& wave) override
    {
        json.add("marks", jsonText(wave.marks));
        if (!isComparable && (wave.isRaw() || wave.isQuantised()))
            json.add("stored", jsonText(wave.stored));
        json.add("samples", jsonText(wave.samples));
    }
    void lostText(const char* name, std::string& text) override
    {
        if (!isComparable)
            field(name, text);
    }
    void lostSlot(const char* name, std::string& text) override { lostText(name, text); }

    void beginRecord(const char* name) override { json.begin(name, '{'); }
    void endRecord() override { json.end('}'); }
    unsigned int beginList(const char* name, int, size_t size) override
    {
        json.begin(name, '[');
        return static_cast<unsigned int>(size);
    }
    bool beginItem(unsigned int) override { return true; }
    void endItem() override {}
    void endList() override { json.end(']'); }

    JsonBuilder json;

private:
    bool isComparable;
};

QString jsonOf(Content& content)
{
    RecordJsonWriter writer(false);
    content.walk(writer);
    return writer.json.text;
}

QString comparableJsonOf(Content& content)
{
    RecordJsonWriter writer(true);
    content.walk(writer);
    return writer.json.text;
}

// --- JSON to records ----------------------------------------------------------------------------------------------

static const int longestText = 65535;
static const int longestSlotText = 256;

class RecordJsonReader : public Fields {
public:
    explicit RecordJsonReader(const QJsonValue& value) : path("value") { open.append({value, {}}); }

    using Fields::field;
    void field(const char* name, unsigned char& value) override
    {
        value = static_cast<unsigned char>(takeInteger(name, 0, UCHAR_MAX));
    }
    void field(const char* name, unsigned int& value) override
    {
        value = static_cast<unsigned int>(takeInteger(name, 0, UINT_MAX));
    }
    void field(const char* name, int& value) override { value = static_cast<int>(takeInteger(name, INT_MIN, INT_MAX)); }
    void field(const char* name, float& value) override
    {
        const QJsonValue json = take(name);
        if (!json.isUndefined())
            readFloat(json, pathOf(name), value);
    }
    void field(const char* name, double& value) override
    {
        const QJsonValue json = take(name);
        if (!json.isUndefined())
            readDouble(json, pathOf(name), value);
    }
    void field(const char* name, std::string& text) override { text = takeText(name, longestText).toStdString(); }
    void field(const char* name, QString& text) override
    {
        const QByteArray bytes = takeText(name, longestText);
        text = QString::fromUtf8(bytes);
        if (text.toUtf8() != bytes)
            fail(name, "must be UTF-8: the library writes this text as UTF-8");
    }
    void slot(const char* name, std::string& text) override { text = takeText(name, longestSlotText).toStdString(); }
    void bytes(const char* name, unsigned char* first, int size) override
    {
        const QByteArray bytes = takeText(name, INT_MAX);
        if (bytes.size() == size)
            std::memcpy(first, bytes.constData(), static_cast<size_t>(size));
        else
            fail(name, QString("must have %1 bytes, got %2").arg(size).arg(bytes.size()));
    }
    void bytes(const char* name, std::vector<unsigned char>& value) override
    {
        const QByteArray bytes = takeText(name, INT_MAX);
        value.assign(bytes.begin(), bytes.end());
    }
    void skip() override {}
    void samples(StoredWave& wave) override;

    void beginRecord(const char* name) override
    {
        const QJsonValue json = take(name);
        if (!json.isUndefined() && !json.isObject())
            fail(name, "must be an object" + gotText(json));
        enter(name);
        open.append({json, {}});
    }
    void endRecord() override
    {
        for (const QString& name : open.last().value.toObject().keys()) {
            if (!open.last().taken.contains(name))
                errors.append(
                    QString("%1.%2 is unknown; the fields are %3").arg(path, name, open.last().taken.join(", ")));
        }
        leave();
    }
    unsigned int beginList(const char* name, int countBytes, size_t size) override
    {
        const QJsonValue json = take(name);
        const auto count = static_cast<unsigned int>(json.toArray().size());
        if (!json.isUndefined() && !json.isArray())
            fail(name, "must be an array" + gotText(json));
        else if (json.isArray() && countBytes == 0 && count != size)
            fail(name, QString("must have %1 items, got %2").arg(size).arg(count));
        else if (countBytes == 2 && count > USHRT_MAX)
            fail(name, QString("must have at most %1 items, got %2").arg(USHRT_MAX).arg(count));
        enter(name);
        open.append({json, {}});
        return countBytes == 0 ? std::min(count, static_cast<unsigned int>(size)) : count;
    }
    bool beginItem(unsigned int index) override
    {
        open.append({open.last().value.toArray().at(static_cast<int>(index)), {}});
        paths.append(path);
        path += QString("[%1]").arg(index);
        return true;
    }
    void endItem() override { leave(); }
    void endList() override { leave(); }

    QStringList errors;

private:
    struct Open {
        QJsonValue value;
        QStringList taken; // names of its members
    };

    QString pathOf(const char* name) const { return name == nullptr ? path : QString("%1.%2").arg(path, name); }
    void fail(const char* name, const QString& message) { errors.append(pathOf(name) + ' ' + message); }
    void enter(const char* name)
    {
        paths.append(path);
        path = pathOf(name);
    }
    void leave()
    {
        open.removeLast();
        path = paths.takeLast();
    }

    // Returns the value of a field, or the item itself; undefined and an error if it is missing.
    QJsonValue take(const char* name)
    {
        if (name == nullptr)
            return open.last().value;
        open.last().taken.append(name);
        QJsonValue value = open.last().value.toObject().value(QString(name));
        if (value.isUndefined() && open.last().value.isObject())
            fail(name, "is missing");
        return value;
    }

    long long takeInteger(const char* name, long long least, long long most)
    {
        const QJsonValue json = take(name);
        const double number = json.toDouble();
        const bool isInside = json.isDouble() && std::floor(number) == number && number >= static_cast<double>(least) &&
                              number <= static_cast<double>(most);
        if (!json.isUndefined() && !isInside)
            fail(name, QString("must be an integer from %1 to %2").arg(least).arg(most) + gotText(json));
        return isInside ? static_cast<long long>(number) : 0;
    }

    QByteArray takeText(const char* name, int most)
    {
        const QJsonValue json = take(name);
        QByteArray bytes;
        if (!json.isUndefined() && !takeBytes(json, bytes))
            fail(name, "must be a string of valid Unicode or {\"hex\": DIGITS}" + gotText(json));
        else if (bytes.size() > most)
            fail(name, QString("must have at most %1 bytes, got %2").arg(most).arg(bytes.size()));
        return bytes;
    }

    // Reads the bits of a NaN, which must have that many digits.
    static bool readNan(const QJsonValue& json, int digits, unsigned long long& image)
    {
        bool isHex = false;
        const QString text = json.toObject()["nan"].toString();
        image = text.toULongLong(&isHex, 16);
        return isHex && text.size() == digits && json.toObject().size() == 1;
    }

    // Reads a number, or one of the texts for what is no number in JSON.
    static bool readNumber(const QJsonValue& json, double& value)
    {
        const QString text = json.toString();
        if (text == "inf" || text == "-inf")
            value = (text == "inf" ? 1 : -1) * std::numeric_limits<double>::infinity();
        else if (text == "-0")
            value = -0.0;
        else if (json.isDouble())
            value = json.toDouble();
        else
            return false;
        return true;
    }

    void readFloat(const QJsonValue& json, const QString& place, float& value)
    {
        unsigned long long image = 0;
        double number = 0;
        if (readNan(json, 8, image)) {
            const auto bits = static_cast<unsigned int>(image);
            std::memcpy(&value, &bits, sizeof value);
            if (std::isnan(value))
                return;
            errors.append(place + ".nan must be the bits of a NaN" + gotText(json.toObject()["nan"]));
        } else if (!readNumber(json, number)) {
            errors.append(place + " must be a number, \"inf\", \"-inf\", \"-0\" or {\"nan\": 8 DIGITS}" +
                          gotText(json));
        } else if (std::isfinite(number) && std::abs(number) >= 0x1.ffffffp127) { // which would round to infinity
            errors.append(place + " must fit into a float" + gotText(json));
        } else {
            value = static_cast<float>(number);
        }
    }

    void readDouble(const QJsonValue& json, const QString& place, double& value)
    {
        unsigned long long image = 0;
        if (readNan(json, 16, image)) {
            std::memcpy(&value, &image, sizeof value);
            if (!std::isnan(value))
                errors.append(place + ".nan must be the bits of a NaN" + gotText(json.toObject()["nan"]));
        } else if (!readNumber(json, value)) {
            errors.append(place + " must be a number, \"inf\", \"-inf\", \"-0\" or {\"nan\": 16 DIGITS}" +
                          gotText(json));
        }
    }

    void takeIntegers(const char* name, int least, int most, std::vector<int>& values)
    {
        const unsigned int count = beginList(name, 4, 0);
        for (unsigned int i = 0; i < count && beginItem(i); ++i) {
            values.push_back(static_cast<int>(takeInteger(nullptr, least, most)));
            endItem();
        }
        endList();
    }

    QList<Open> open;
    QString path;
    QStringList paths; // of the enclosing records and lists
};

void RecordJsonReader::samples(StoredWave& wave)
{
    takeIntegers("marks", INT_MIN, INT_MAX, wave.marks);
    if (wave.marks.size() != wave.head.markCount)
        fail("marks", QString("must have markCount items, %1, got %2").arg(wave.head.markCount).arg(wave.marks.size()));
    if (wave.isRaw())
        takeIntegers("stored", SHRT_MIN, SHRT_MAX, wave.stored);
    else if (wave.isQuantised())
        takeIntegers("stored", 0, USHRT_MAX, wave.stored);
    const bool isNeeded = !wave.isRaw() && !wave.isQuantised();
    if (!isNeeded && !open.last().value.toObject().contains("samples"))
        return; // the stored integers determine them
    const unsigned int count = beginList("samples", 4, 0);
    for (unsigned int i = 0; i < count && beginItem(i); ++i) {
        wave.samples.emplace_back();
        field(nullptr, wave.samples.back());
        endItem();
    }
    endList();
}

QStringList takeJson(const QJsonValue& value, Content& content)
{
    RecordJsonReader reader(value);
    content.walk(reader);
    return reader.errors;
}
