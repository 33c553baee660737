#include "recordDecoding.h"

#include "jsonText.h"
#include "waveBlock.h"

#include <QHash>
#include <QStringList>

#include <algorithm>
#include <cstring>

using gqdb::CByte2Val;

static const int slotSize = 258;
static const int longestSlotText = slotSize - 2;
static const unsigned int safeCount = 100000; // items that the library may allocate even if there are fewer bytes

// --- Waves --------------------------------------------------------------------------------------------------------

// Returns the sample that the library computes from a stored integer.
static float sampleOf(const StoredWave& wave, int stored)
{
    const double high = wave.head.limitHigh;
    const double low = wave.head.limitLow;
    if (wave.isRaw())
        return static_cast<float>(static_cast<double>(static_cast<float>(stored * high)) + low);
    const float share = static_cast<float>(stored / 65535.0);
    return share * (static_cast<float>(high) - static_cast<float>(low)) + static_cast<float>(low);
}

// --- Fields -----------------------------------------------------------------------------------------------------

class RecordDecoder : public Fields {
public:
    RecordDecoder(const QByteArray& bytes, Decoded& decoded) : data(bytes), result(decoded) {}

    using Fields::field;
    void field(const char* name, unsigned char& value) override
    {
        if (const char* at = take(name, 1)) {
            value = static_cast<unsigned char>(*at);
            add(name, 1, QString::number(value));
        }
    }
    void field(const char* name, unsigned int& value) override
    {
        if (const char* at = take(name, 4)) {
            value = CByte2Val::byte2UInt(at);
            add(name, 4, QString::number(value));
        }
    }
    void field(const char* name, int& value) override
    {
        if (const char* at = take(name, 4)) {
            value = CByte2Val::byte2Int(at);
            add(name, 4, QString::number(value));
        }
    }
    void field(const char* name, float& value) override
    {
        if (const char* at = take(name, 4)) {
            value = CByte2Val::byte2Float(at);
            add(name, 4, jsonText(value));
        }
    }
    void field(const char* name, double& value) override
    {
        if (const char* at = take(name, 8)) {
            value = CByte2Val::byte2Double(at);
            add(name, 8, jsonText(value));
        }
    }
    void field(const char* name, std::string& text) override { text = takeText(name).toStdString(); }
    void field(const char* name, QString& text) override
    {
        text = QString::fromUtf8(takeText(name).constData()); // up to a zero byte, as in the library
    }
    int wireSize(const char* name) const override { return wireSizes.value(name); }
    void slot(const char* name, std::string& text) override
    {
        const char* at = take(name, slotSize);
        if (at == nullptr)
            return;
        const int size = CByte2Val::byte2UShort(at);
        if (size > longestSlotText)
            fault(QString("%1 has a length of %2, but its slot holds at most %3 bytes")
                      .arg(pathOf(name))
                      .arg(size)
                      .arg(longestSlotText));
        const QByteArray content(at + 2, std::min(size, longestSlotText));
        text = content.toStdString();
        add(name, slotSize, jsonText(content));
    }
    void bytes(const char* name, unsigned char* first, int size) override
    {
        if (const char* at = take(name, size)) {
            std::memcpy(first, at, static_cast<size_t>(size));
            add(name, size, jsonText(QByteArray(at, size)));
        }
    }
    void bytes(const char* name, std::vector<unsigned char>& value) override
    {
        const char* at = take(name, 4);
        if (at == nullptr)
            return;
        const unsigned int size = CByte2Val::byte2UInt(at);
        if (size > static_cast<unsigned int>(left() - 4)) {
            fault(
                QString("%1 has a length of %2, but only %3").arg(pathOf(name)).arg(size).arg(remainText(left() - 4)));
            isStopped = true;
            isRisky = isRisky || size > INT_MAX;
            return;
        }
        const QByteArray content = data.mid(pos + 4, static_cast<int>(size));
        value.assign(content.begin(), content.end());
        add(name, 4 + content.size(), jsonText(content));
    }
    void skip() override
    {
        if (take("first byte", 1) != nullptr) {
            addRow("(any byte)", 1, QString());
            pos += 1;
        }
    }
    void samples(StoredWave& wave) override;

    void beginRecord(const char* name) override
    {
        if (name == nullptr)
            recordStart = pos;
        begin(name, '{');
    }
    void endRecord() override { end('}'); }
    unsigned int beginList(const char* name, int countBytes, size_t size) override;
    bool beginItem(unsigned int index) override
    {
        if (isStopped)
            return false;
        if (resultOffset != 0) {
            fault(QString(
                      "the library's list reader continues at byte %1, because the previous text4 is not 2 bytes long")
                      .arg(pos + resultOffset));
            resultOffset = 0;
        }
        paths.append(path);
        path += QString("[%1]").arg(index);
        return true;
    }
    void endItem() override { path = paths.takeLast(); }
    void endList() override { end(']'); }

    void readerNeeds(int size) override { expectInAll(recordStart + size); }
    void readerNeedsAfter(int size) override { expectInAll(pos + size); }
    void resultIsOffBy(int size) override { resultOffset = size; }

    // The library's reader needs that many bytes in total.
    void expectInAll(int size)
    {
        if (!isStopped && size > data.size())
            result.faults.push_back(
                {data.size(), QString("the reader needs %1 bytes, got %2; the missing ones may have any value")
                                  .arg(size)
                                  .arg(data.size())});
    }

    int pos = 0;
    int resultOffset = 0;
    bool isRisky = false; // a count or length would make the library's reader allocate too much memory
    JsonBuilder json;

private:
    int left() const { return data.size() - pos; }
    static QString remainText(int count)
    {
        return count == 1 ? "1 byte remains" : QString("%1 bytes remain").arg(count);
    }

    QString pathOf(const char* name) const
    {
        return path.isEmpty() || name == nullptr ? path + name : path + '.' + name;
    }

    void fault(const QString& text) { result.faults.push_back({pos, text}); }

    // Returns the next bytes, or null if they are missing.
    const char* take(const char* name, int size)
    {
        if (isStopped)
            return nullptr;
        if (size > left()) {
            fault(QString("%1 needs %2 %3, but only %4")
                      .arg(pathOf(name))
                      .arg(size)
                      .arg(size == 1 ? "byte" : "bytes")
                      .arg(remainText(left())));
            isStopped = true;
            return nullptr;
        }
        return data.constData() + pos;
    }

    QByteArray takeText(const char* name)
    {
        wireSizes[name] = 0;
        const char* at = take(name, 2);
        if (at == nullptr)
            return QByteArray();
        const int size = CByte2Val::byte2UShort(at);
        if (size > left() - 2) {
            fault(
                QString("%1 has a length of %2, but only %3").arg(pathOf(name)).arg(size).arg(remainText(left() - 2)));
            isStopped = true;
            return QByteArray();
        }
        QByteArray content(at + 2, size);
        add(name, 2 + size, jsonText(content));
        wireSizes[name] = 2 + size;
        return content;
    }

    void addRow(const QString& name, int size, const QString& value)
    {
        result.fields.push_back({pos, data.mid(pos, size), name, value});
    }

    // Ends a field: adds its row and its JSON, and steps over its bytes.
    void add(const char* name, int size, const QString& value)
    {
        addRow(pathOf(name), size, value);
        json.add(name, value);
        pos += size;
    }

    // Objects and arrays after a fault are left out.
    void begin(const char* name, char bracket)
    {
        shown.push_back(!isStopped);
        if (!isStopped)
            json.begin(name, bracket);
        paths.append(path);
        path = pathOf(name);
    }
    void end(char bracket)
    {
        if (shown.back())
            json.end(bracket);
        shown.pop_back();
        path = paths.takeLast();
    }

    const QByteArray& data;
    Decoded& result;
    bool isStopped = false;
    int recordStart = 0;
    QHash<QByteArray, int> wireSizes; // of texts by name
    QString path;
    QStringList paths; // of the enclosing records and lists
    std::vector<bool> shown;
};

unsigned int RecordDecoder::beginList(const char* name, int countBytes, size_t size)
{
    auto count = static_cast<unsigned int>(size);
    if (countBytes > 0) {
        const char* countName = name == nullptr ? "count" : name;
        const char* at = take(countName, countBytes);
        count = at == nullptr ? 0 : countBytes == 2 ? CByte2Val::byte2UShort(at) : CByte2Val::byte2UInt(at);
        if (at != nullptr) {
            if (count > static_cast<unsigned int>(left() - countBytes)) {
                fault(QString("%1 is %2, but only %3")
                          .arg(name == nullptr ? QString("count") : "the count of " + pathOf(name))
                          .arg(count)
                          .arg(remainText(left() - countBytes)));
                isRisky = isRisky || count > safeCount;
            }
            addRow(name == nullptr ? QString("count") : pathOf(name), countBytes, QString::number(count));
            pos += countBytes;
        }
    }
    begin(name, '[');
    return count;
}

void RecordDecoder::samples(StoredWave& wave)
{
    if (isStopped)
        return;
    const unsigned int count = wave.head.markCount;
    const QString tooFew = markFault(count, left());
    if (!tooFew.isEmpty())
        fault(tooFew);
    begin("marks", '[');
    for (unsigned int i = 0; i < count && left() >= 4; ++i) {
        beginItem(i);
        field(nullptr, wave.marks.emplace_back());
        endItem();
    }
    end(']');

    QByteArray block = data.mid(pos);
    const int blockStart = pos;
    if (wave.isCompressed()) {
        const UnpackedBlock unpacked = unpackBlock(block);
        block = unpacked.bytes;
        if (!unpacked.fault.isEmpty())
            fault(unpacked.fault);
        addRow("(zlib stream)", unpacked.used, QString("\"%1 bytes unpacked\"").arg(block.size()));
        pos += unpacked.used;
    }
    const bool isStored = wave.isRaw() || wave.isQuantised();
    const int size = isStored ? 2 : 4;
    for (int at = 0; at + size <= block.size(); at += size) {
        const char* bytes = block.constData() + at;
        QString value;
        if (isStored) {
            wave.stored.push_back(wave.isRaw() ? CByte2Val::byte2Short(bytes) : CByte2Val::byte2UShort(bytes));
            wave.samples.push_back(sampleOf(wave, wave.stored.back()));
            value =
                QString(R"({"stored": %1, "sample": %2})").arg(wave.stored.back()).arg(jsonText(wave.samples.back()));
        } else {
            wave.samples.push_back(CByte2Val::byte2Float(bytes));
            value = jsonText(wave.samples.back());
        }
        result.fields.push_back({wave.isCompressed() ? -1 : blockStart + at, QByteArray(bytes, size),
                                 QString("samples[%1]").arg(at / size), value});
    }
    if (!wave.isCompressed())
        pos += block.size() / size * size;
    if (isStored)
        json.add("stored", jsonText(wave.stored));
    json.add("samples", jsonText(wave.samples));
}

// --- The library's reader -----------------------------------------------------------------------------------------

static QString meaningOf(const Form& form, int result)
{
    for (const ResultMeaning& failure : *form.failures) {
        if (failure.result == result)
            return failure.meaning;
    }
    return form.onSuccess == returnsBytes ? QString("good, %1 bytes").arg(result) : QString("good");
}

static void callReader(const Form& form, const QByteArray& bytes, bool isRisky, Decoded& decoded)
{
    if (form.failures == nullptr) {
        decoded.meaning = "not called: the library writes this form and has no reader for it";
    } else if (isRisky) {
        decoded.meaning = "not called: the reader trusts this number and would allocate that much memory";
    } else {
        decoded.readerCalled = true;
        decoded.result = form.make()->read(bytes);
        decoded.meaning = meaningOf(form, decoded.result);
    }
}

Decoded decode(const Form& form, const QByteArray& bytes)
{
    Decoded decoded;
    RecordDecoder decoder(bytes, decoded);
    decoded.content = form.make();
    decoded.content->walk(decoder);
    decoder.expectInAll(form.leastBytes);
    decoded.value = decoder.json.text;
    decoded.rest = bytes.mid(decoder.pos);
    decoded.restOffset = decoder.pos;
    callReader(form, bytes, decoder.isRisky, decoded);
    return decoded;
}
