#include "recordDecoding.h"

#include "jsonText.h"
#include "recordJson.h"

#include <QStringList>

#include <algorithm>
#include <array>
#include <cstring>
#include <zlib.h>

using gqdb::CByte2Rdb;
using gqdb::CByte2Val;

static const int slotSize = 258;
static const int longestSlotText = slotSize - 2;
static const int leastMarkedBlock = 96;       // bytes of samples, where a wave has marks
static const unsigned int safeCount = 100000; // items that the library may make room for, whatever the bytes hold

// --- The sample block of a wave -----------------------------------------------------------------------------------

// Unpacks the zlib stream that `packed` begins with; `used` are its bytes. What is wrong with it, or nothing.
static QString unpack(const QByteArray& packed, QByteArray& block, int& used)
{
    z_stream zlib = {};
    if (inflateInit(&zlib) != Z_OK)
        return "zlib has no memory";
    zlib.next_in = reinterpret_cast<unsigned char*>(const_cast<char*>(packed.constData())); // is not written to
    zlib.avail_in = static_cast<unsigned int>(packed.size());
    std::array<unsigned char, 65536> part;
    int result = Z_OK;
    while (result == Z_OK && block.size() <= CByte2Rdb::waveBlockSize) {
        zlib.next_out = part.data();
        zlib.avail_out = part.size();
        result = inflate(&zlib, Z_NO_FLUSH);
        block.append(reinterpret_cast<const char*>(part.data()), static_cast<int>(part.size() - zlib.avail_out));
    }
    used = static_cast<int>(zlib.total_in);
    const QString message = zlib.msg == nullptr ? QString("wants a dictionary") : QString(zlib.msg);
    inflateEnd(&zlib);
    if (block.size() > CByte2Rdb::waveBlockSize)
        return QString("the samples unpack to more than %1 bytes").arg(CByte2Rdb::waveBlockSize);
    if (result == Z_STREAM_END)
        return QString();
    return result == Z_BUF_ERROR ? QString("the zlib stream is cut") : QString("no zlib stream: %1").arg(message);
}

static float sampleOf(const StoredWave& wave, int stored)
{
    const double high = wave.head.limitHigh;
    const double low = wave.head.limitLow;
    if (wave.isRaw())
        return static_cast<float>(static_cast<double>(static_cast<float>(stored * high)) + low);
    const float share = static_cast<float>(stored / 65535.0);
    return share * (static_cast<float>(high) - static_cast<float>(low)) + static_cast<float>(low);
}

// --- The walk -----------------------------------------------------------------------------------------------------

class BytesWalk : public Fields {
public:
    BytesWalk(const QByteArray& walked, Decoded& decoded) : data(walked), result(decoded) {}

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
    int field(const char* name, std::string& text) override
    {
        QByteArray content;
        const int size = takeText(name, content);
        text = content.toStdString();
        return size;
    }
    int field(const char* name, QString& text) override
    {
        QByteArray content;
        const int size = takeText(name, content);
        text = QString::fromUtf8(content.constData()); // ends at a zero byte, as it does for the library
        return size;
    }
    void slot(const char* name, std::string& text) override
    {
        const char* at = take(name, slotSize);
        if (at == nullptr)
            return;
        const int size = CByte2Val::byte2UShort(at);
        if (size > longestSlotText)
            fault(
                QString("%1 has %2 bytes, and its slot room for %3").arg(pathOf(name)).arg(size).arg(longestSlotText));
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
            fault(QString("%1 has %2 bytes, %3 are left").arg(pathOf(name)).arg(size).arg(left() - 4));
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
        if (answerOffset != 0) {
            fault(QString("the library's list reader goes on at byte %1, for the text4 ahead has not 2 bytes")
                      .arg(pos + answerOffset));
            losesStep = true;
            answerOffset = 0;
        }
        paths.append(path);
        path += QString("[%1]").arg(index);
        return true;
    }
    void endItem() override { path = paths.takeLast(); }
    void endList() override { end(']'); }

    void wantsInAll(int size) override { wants(recordStart + size); }
    void wantsBehind(int size) override { wants(pos + size); }
    void answerIsOffBy(int size) override { answerOffset = size; }

    // The library's reader wants so many bytes of the whole.
    void wants(int size)
    {
        if (!isStopped && size > data.size())
            result.faults.push_back({data.size(), QString("the library's reader wants %1 bytes, and there are %2; the "
                                                          "others may have any value")
                                                      .arg(size)
                                                      .arg(data.size())});
    }

    int pos = 0;
    int answerOffset = 0;
    bool isRisky = false;   // the library's reader would ask for memory without end
    bool losesStep = false; // its list reader does, so that nobody knows what it finds
    JsonBuilder json;

private:
    int left() const { return data.size() - pos; }

    QString pathOf(const char* name) const
    {
        return path.isEmpty() || name == nullptr ? path + name : path + '.' + name;
    }

    void fault(const QString& text) { result.faults.push_back({pos, text}); }

    // The next bytes, or null if they are not there.
    const char* take(const char* name, int size)
    {
        if (isStopped)
            return nullptr;
        if (size > left()) {
            fault(QString("%1 wants %2 %3, %4 %5 left")
                      .arg(pathOf(name))
                      .arg(size)
                      .arg(size == 1 ? "byte" : "bytes")
                      .arg(left())
                      .arg(left() == 1 ? "is" : "are"));
            isStopped = true;
            return nullptr;
        }
        return data.constData() + pos;
    }

    int takeText(const char* name, QByteArray& content)
    {
        const char* at = take(name, 2);
        if (at == nullptr)
            return 0;
        const int size = CByte2Val::byte2UShort(at);
        if (size > left() - 2) {
            fault(QString("%1 has %2 bytes, %3 are left").arg(pathOf(name)).arg(size).arg(left() - 2));
            isStopped = true;
            return 0;
        }
        content = QByteArray(at + 2, size);
        add(name, 2 + size, jsonText(content));
        return 2 + size;
    }

    void addRow(const QString& name, int size, const QString& value)
    {
        result.fields.push_back({pos, data.mid(pos, size), name, value});
    }

    // A field that is done with.
    void add(const char* name, int size, const QString& value)
    {
        addRow(pathOf(name), size, value);
        json.add(name, value);
        pos += size;
    }

    // Objects and arrays that a fault lies ahead of are left out.
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
    QString path;
    QStringList paths; // of what is open around it
    std::vector<bool> shown;
};

unsigned int BytesWalk::beginList(const char* name, int countBytes, size_t size)
{
    auto count = static_cast<unsigned int>(size);
    if (countBytes > 0) {
        const char* countName = name == nullptr ? "count" : name;
        const char* at = take(countName, countBytes);
        count = at == nullptr ? 0 : countBytes == 2 ? CByte2Val::byte2UShort(at) : CByte2Val::byte2UInt(at);
        if (at != nullptr) {
            if (count > static_cast<unsigned int>(left() - countBytes)) {
                fault(QString("%1 items can't be in the %2 bytes that are left").arg(count).arg(left() - countBytes));
                isRisky = isRisky || count > safeCount;
            }
            addRow(name == nullptr ? QString("count") : pathOf(name), countBytes, QString::number(count));
            pos += countBytes;
        }
    }
    begin(name, '[');
    return count;
}

void BytesWalk::samples(StoredWave& wave)
{
    if (isStopped)
        return;
    const unsigned int count = wave.head.markCount;
    const long long need = 4LL * count + leastMarkedBlock;
    if (count > 0 && left() < need)
        fault(QString("%1 marks, and the %2 bytes of samples that the library's reader wants behind marks, are %3 "
                      "bytes; %4 are left")
                  .arg(count)
                  .arg(leastMarkedBlock)
                  .arg(need)
                  .arg(left()));
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
        const QByteArray packed = std::exchange(block, QByteArray());
        int used = 0;
        const QString wrong = unpack(packed, block, used);
        if (!wrong.isEmpty())
            fault(wrong);
        addRow("(zlib stream)", used, QString("\"%1 bytes unpacked\"").arg(block.size()));
        pos += used;
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
    return form.answer == answersBytes ? QString("good, %1 bytes").arg(result) : QString("good");
}

static void askLibrary(const Form& form, const QByteArray& bytes, Content& walked, const BytesWalk& walk,
                       Decoded& decoded)
{
    if (form.failures == nullptr) {
        decoded.meaning = "not asked: the library writes this form, and does not read it";
        return;
    }
    if (walk.isRisky) {
        decoded.meaning = "not asked: it believes the number, and would ask for that much memory";
        return;
    }
    const std::unique_ptr<Content> read = form.make();
    decoded.isAsked = true;
    decoded.result = read->read(bytes);
    decoded.meaning = meaningOf(form, decoded.result);

    const int good = form.answer == answersBytes ? walk.pos + walk.answerOffset : 1;
    if (!decoded.faults.empty()) {
        if (decoded.result > 0 && !walk.losesStep)
            decoded.disagreement = "the library's reader takes what has a fault here";
    } else if (decoded.result != good) {
        decoded.disagreement = QString("the library's reader should have answered %1").arg(good);
    } else if (comparableJsonOf(*read) != comparableJsonOf(walked)) {
        decoded.disagreement = "the library's reader found other values: " + comparableJsonOf(*read);
    }
}

Decoded decode(const Form& form, const QByteArray& bytes)
{
    Decoded decoded;
    BytesWalk walk(bytes, decoded);
    const std::unique_ptr<Content> content = form.make();
    content->walk(walk);
    walk.wants(form.leastBytes);
    decoded.value = walk.json.text;
    decoded.behind = bytes.mid(walk.pos);
    decoded.behindOffset = walk.pos;
    askLibrary(form, bytes, *content, walk, decoded);
    return decoded;
}
