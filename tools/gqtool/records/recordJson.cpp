#include "recordJson.h"

#include "shared/text.h"
#include "textEncoding.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <nlohmann/json.hpp>

static const int longestText = 65535;
static const int longestSlotText = 256;

class RecordJsonReader : public Fields {
public:
    RecordJsonReader(const Json& value, const QString& valuePath) : path(valuePath) { open.push_back({&value, {}}); }

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
        if (const Json* json = take(name))
            readFloat(*json, name, value);
    }
    void field(const char* name, double& value) override
    {
        if (const Json* json = take(name))
            readDouble(*json, name, value);
    }
    void field(const char* name, std::string& text) override
    {
        text = takeText(name, longestText, takeRecordText).toStdString();
    }
    void field(const char* name, QString& text) override
    {
        const QByteArray bytes = takeText(name, longestText);
        text = QString::fromUtf8(bytes);
        if (text.toUtf8() != bytes)
            fail(name, Text::tr("must be UTF-8: the library writes this text as UTF-8"));
    }
    void slot(const char* name, std::string& text) override
    {
        text = takeText(name, longestSlotText, takeRecordText).toStdString();
    }
    void bytes(const char* name, unsigned char* first, int size) override
    {
        const QByteArray bytes = takeText(name, INT_MAX);
        if (bytes.size() == size)
            std::memcpy(first, bytes.constData(), static_cast<size_t>(size));
        else
            fail(name, Text::tr("must have %1, got %2").arg(bytesText(size)).arg(bytes.size()));
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
        const Json* json = take(name);
        if (json != nullptr && !json->is_object())
            fail(name, Text::tr("must be an object") + gotText(*json));
        enter(name, json);
        if (json != nullptr)
            open.back().names.reserve(json->size());
    }
    void endRecord() override
    {
        const Open& record = open.back();
        if (record.value != nullptr && record.value->is_object() && record.value->size() > record.found)
            failUnknown(record);
        leave();
    }
    unsigned int beginList(const char* name, int countBytes, size_t size) override
    {
        const Json* json = take(name);
        const bool isArray = json != nullptr && json->is_array();
        const auto count = static_cast<unsigned int>(isArray ? json->size() : 0);
        if (json != nullptr && !isArray)
            fail(name, Text::tr("must be an array") + gotText(*json));
        else if (isArray && countBytes == 0 && count != size)
            fail(name, Text::tr("must have %1 items, got %2").arg(size).arg(count));
        else if (countBytes == 2 && count > USHRT_MAX)
            fail(name, Text::tr("must have at most %1 items, got %2").arg(USHRT_MAX).arg(count));
        enter(name, json);
        return countBytes == 0 ? std::min(count, static_cast<unsigned int>(size)) : count;
    }
    bool beginItem(unsigned int index) override
    {
        open.push_back({&(*open.back().value)[index], {}});
        paths.append(path);
        path += QString("[%1]").arg(index);
        return true;
    }
    void endItem() override { leave(); }
    void endList() override { leave(); }

    QStringList errors;

private:
    struct Open {
        const Json* value;              // null if it is missing
        std::vector<const char*> names; // of the fields
        size_t found = 0;               // number of them that it has
    };

    QString pathOf(const char* name) const { return name == nullptr ? path : QString("%1.%2").arg(path, name); }
    void fail(const char* name, const QString& message) { errors.append(pathOf(name) + ' ' + message); }
    void enter(const char* name, const Json* value)
    {
        open.push_back({value, {}});
        paths.append(path);
        if (name != nullptr)
            path = pathOf(name);
    }
    void leave()
    {
        open.pop_back();
        path = paths.takeLast();
    }

    // Returns the value of a field, or the item itself; null and an error if it is missing.
    const Json* take(const char* name)
    {
        Open& parent = open.back();
        if (name == nullptr || parent.value == nullptr || !parent.value->is_object())
            return name == nullptr ? parent.value : nullptr;
        parent.names.push_back(name);
        const auto found = parent.value->find(name);
        if (found == parent.value->end()) {
            fail(name, Text::tr("is missing"));
            return nullptr;
        }
        ++parent.found;
        return &*found;
    }

    void failUnknown(const Open& record)
    {
        QStringList known;
        for (const char* name : record.names)
            known.append(name);
        for (const auto& [name, value] : record.value->items()) {
            if (!known.contains(QString::fromStdString(name)))
                fail(name.c_str(), Text::tr("is unknown; the fields are %1").arg(listText(known)));
        }
    }

    long long takeInteger(const char* name, long long least, long long most)
    {
        const Json* json = take(name);
        const double number = json != nullptr && json->is_number() ? json->get<double>() : 0.5;
        const bool isInside =
            std::floor(number) == number && number >= static_cast<double>(least) && number <= static_cast<double>(most);
        if (json != nullptr && !isInside)
            fail(name, Text::tr("must be an integer from %1 to %2").arg(least).arg(most) + gotText(*json));
        return isInside ? static_cast<long long>(number) : 0;
    }

    QByteArray takeText(const char* name, int most, QString (*read)(const Json&, QByteArray&) = takeUtf8)
    {
        const Json* json = take(name);
        QByteArray bytes;
        const QString fault = json == nullptr ? QString() : read(*json, bytes);
        if (!fault.isEmpty())
            fail(name, fault);
        else if (bytes.size() > most)
            fail(name, Text::tr("must have at most %1 bytes, got %2").arg(most).arg(bytes.size()));
        return bytes;
    }

    // Reads the bits of a NaN, which must have that many digits.
    static bool readNan(const Json& json, int digits, unsigned long long& image)
    {
        if (!json.is_object() || json.size() != 1 || !json.contains("nan") || !json["nan"].is_string())
            return false;
        bool isHex = false;
        const QString text = QString::fromStdString(json["nan"].get_ref<const std::string&>());
        image = text.toULongLong(&isHex, 16);
        return isHex && text.size() == digits;
    }

    // Reads a number, or one of the texts for what is no number in JSON.
    static bool readNumber(const Json& json, double& value)
    {
        if (json.is_number())
            value = json.get<double>();
        else if (json == "inf" || json == "-inf")
            value = (json == "inf" ? 1 : -1) * std::numeric_limits<double>::infinity();
        else if (json == "-0")
            value = -0.0;
        else
            return false;
        return true;
    }

    void readFloat(const Json& json, const char* name, float& value)
    {
        unsigned long long image = 0;
        double number = 0;
        if (readNan(json, 8, image)) {
            const auto bits = static_cast<unsigned int>(image);
            std::memcpy(&value, &bits, sizeof value);
            if (!std::isnan(value))
                errors.append(pathOf(name) + ".nan " + Text::tr("must be the bits of a NaN") + gotText(json["nan"]));
        } else if (!readNumber(json, number)) {
            fail(name, Text::tr("must be a number, \"inf\", \"-inf\", \"-0\" or {\"nan\": 8 DIGITS}") + gotText(json));
        } else if (std::isfinite(number) && std::abs(number) >= 0x1.ffffffp127) { // which would round to infinity
            fail(name, Text::tr("must fit into a float") + gotText(json));
        } else {
            value = static_cast<float>(number);
        }
    }

    void readDouble(const Json& json, const char* name, double& value)
    {
        unsigned long long image = 0;
        if (readNan(json, 16, image)) {
            std::memcpy(&value, &image, sizeof value);
            if (!std::isnan(value))
                errors.append(pathOf(name) + ".nan " + Text::tr("must be the bits of a NaN") + gotText(json["nan"]));
        } else if (!readNumber(json, value)) {
            fail(name, Text::tr("must be a number, \"inf\", \"-inf\", \"-0\" or {\"nan\": 16 DIGITS}") + gotText(json));
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

    std::vector<Open> open;
    QString path;
    QStringList paths; // of the enclosing records and lists
};

void RecordJsonReader::samples(StoredWave& wave)
{
    takeIntegers("marks", INT_MIN, INT_MAX, wave.marks);
    if (wave.marks.size() != wave.head.markCount)
        fail("marks",
             Text::tr("must have markCount items, %1, got %2").arg(wave.head.markCount).arg(wave.marks.size()));
    if (wave.isRaw())
        takeIntegers("stored", SHRT_MIN, SHRT_MAX, wave.stored);
    else if (wave.isQuantised())
        takeIntegers("stored", 0, USHRT_MAX, wave.stored);
    if (wave.hasIntegers() && open.back().value != nullptr && !open.back().value->contains("samples"))
        return; // the stored integers determine them
    const unsigned int count = beginList("samples", 4, 0);
    for (unsigned int i = 0; i < count && beginItem(i); ++i) {
        wave.samples.emplace_back();
        field(nullptr, wave.samples.back());
        endItem();
    }
    endList();
}

QStringList takeJson(const Json& value, Content& content, const QString& path)
{
    RecordJsonReader reader(value, path);
    content.walk(reader);
    return reader.errors;
}
