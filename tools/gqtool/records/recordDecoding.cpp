#include "recordDecoding.h"

#include "shared/text.h"
#include "textEncoding.h"
#include "waveBlock.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cstring>
#include <map>

using gqdb::CByte2Val;

static const int slotSize = 258;
static const int longestSlotText = slotSize - 2;
static const unsigned int safeCount = 100000; // items that the library may allocate even if there are fewer bytes

// --- Waves --------------------------------------------------------------------------------------------------------

// Reads the stored integers, if there are any, and the samples of a block.
static void readSamples(const QByteArray& block, StoredWave& wave)
{
    const double high = wave.head.limitHigh;
    const double low = wave.head.limitLow;
    const int size = wave.hasIntegers() ? 2 : 4;
    for (int at = 0; at + size <= block.size(); at += size) {
        const char* bytes = block.constData() + at;
        if (wave.hasIntegers())
            wave.stored.push_back(wave.isRaw() ? CByte2Val::byte2Short(bytes) : CByte2Val::byte2UShort(bytes));
        else
            wave.samples.push_back(CByte2Val::byte2Float(bytes));
    }
    if (wave.isRaw())
        CByte2Val::ad2float(wave.stored, high, low, wave.samples);
    else if (wave.hasIntegers())
        CByte2Val::short2float(wave.stored, static_cast<float>(high), static_cast<float>(low), wave.samples);
}

// --- Fields -----------------------------------------------------------------------------------------------------

class RecordDecoder : public Fields {
public:
    RecordDecoder(ByteWindow& input, DecodeListener& receiver, Decoding& decoding)
        : bytesLeft(input), listener(receiver), result(decoding)
    {
    }

    using Fields::field;
    void field(const char* name, unsigned char& value) override
    {
        if (const char* at = take(name, 1)) {
            value = static_cast<unsigned char>(*at);
            add(name, 1, value);
        }
    }
    void field(const char* name, unsigned int& value) override
    {
        if (const char* at = take(name, 4)) {
            value = CByte2Val::byte2UInt(at);
            add(name, 4, value);
        }
    }
    void field(const char* name, int& value) override
    {
        if (const char* at = take(name, 4)) {
            value = CByte2Val::byte2Int(at);
            add(name, 4, value);
        }
    }
    void field(const char* name, float& value) override
    {
        if (const char* at = take(name, 4)) {
            value = CByte2Val::byte2Float(at);
            add(name, 4, value);
        }
    }
    void field(const char* name, double& value) override
    {
        if (const char* at = take(name, 8)) {
            value = CByte2Val::byte2Double(at);
            add(name, 8, value);
        }
    }
    void field(const char* name, std::string& text) override
    {
        text = takeText(name);
        if (wireSizes[name] > 0)
            add(name, wireSizes[name], RecordText(text).value());
    }
    void field(const char* name, QString& text) override
    {
        const std::string bytes = takeText(name);
        if (wireSizes[name] > 0)
            add(name, wireSizes[name], bytes);
        text = QString::fromUtf8(bytes.c_str()); // up to a zero byte, as in the library
    }
    int wireSize(const char* name) const override
    {
        const auto found = wireSizes.find(name);
        return found == wireSizes.end() ? 0 : found->second;
    }
    void slot(const char* name, std::string& text) override
    {
        const char* at = take(name, slotSize);
        if (at == nullptr)
            return;
        const int size = CByte2Val::byte2UShort(at);
        if (size > longestSlotText)
            fault(Text::tr("%1 has a length of %2, but its slot holds at most %3 bytes")
                      .arg(pathOf(name))
                      .arg(size)
                      .arg(longestSlotText));
        text.assign(at + 2, static_cast<size_t>(std::min(size, longestSlotText)));
        add(name, slotSize, RecordText(text).value());
    }
    void bytes(const char* name, unsigned char* first, int size) override
    {
        if (const char* at = take(name, size)) {
            std::memcpy(first, at, static_cast<size_t>(size));
            add(name, size, std::string_view(at, static_cast<size_t>(size)));
        }
    }
    void bytes(const char* name, std::vector<unsigned char>& value) override
    {
        const char* at = take(name, 4);
        if (at == nullptr)
            return;
        const unsigned int size = CByte2Val::byte2UInt(at);
        if (!bytesLeft.holds(4LL + size)) {
            fault(Text::tr("%1 has a length of %2, but only %3")
                      .arg(pathOf(name))
                      .arg(size)
                      .arg(remainText(bytesLeft.left() - 4)));
            isStopped = true;
            result.isRisky = result.isRisky || size > INT_MAX;
            return;
        }
        at = bytesLeft.at() + 4;
        value.assign(at, at + size);
        add(name, 4 + static_cast<int>(size), std::string_view(at, size));
    }
    void skip() override
    {
        if (isStopped)
            return;
        if (!bytesLeft.holds(1)) {
            stopAtMissing(Text::tr("first byte"), 1);
            return;
        }
        addRow(QT_TRANSLATE_NOOP("Text", "(any byte)"), 1, JsonText());
        bytesLeft.skip(1);
    }
    void samples(StoredWave& wave) override;

    void beginRecord(const char* name) override
    {
        if (name == nullptr)
            recordStart = bytesLeft.offset();
        begin(name, '{');
    }
    void endRecord() override { end('}'); }
    unsigned int beginList(const char* name, int countBytes, size_t size) override;
    bool beginItem(unsigned int index) override
    {
        if (isStopped)
            return false;
        if (resultOffset != 0) {
            fault(Text::tr(
                      "the library's list reader continues at byte %1, because the previous text4 is not 2 bytes long")
                      .arg(bytesLeft.offset() + resultOffset));
            resultOffset = 0;
        }
        paths.push_back(path.size());
        char digits[12];
        const std::to_chars_result index10 = std::to_chars(digits, digits + sizeof digits, index);
        path += '[';
        path.append(digits, index10.ptr);
        path += ']';
        return true;
    }
    void endItem() override { leave(); }
    void endList() override { end(']'); }

    void readerNeeds(int size) override { expectInAll(recordStart + size); }
    void readerNeedsAfter(int size) override { expectInAll(bytesLeft.offset() + size); }
    void resultIsOffBy(int size) override { resultOffset = size; }

    // The library's reader needs that many bytes in total.
    void expectInAll(long long size)
    {
        if (!isStopped && !bytesLeft.holds(size - bytesLeft.offset()))
            faultAt(bytesLeft.size(), Text::tr("the reader needs %1 bytes, got %2; the missing ones may have any value")
                                          .arg(size)
                                          .arg(bytesLeft.size()));
    }

    // Ends the decoding.
    void finish();

private:
    // A count, which is compared with the number of bytes after it once the end of the input is known.
    struct Count {
        size_t faultsBefore;
        long long offset;
        long long end;
        unsigned int count;
        Text name;
    };

    static Text remainText(long long count)
    {
        return count == 1 ? Text::tr("1 byte remains") : Text::tr("%1 bytes remain").arg(count);
    }

    QString pathOf(const char* name) const
    {
        const QString parent = QString::fromStdString(path);
        return parent.isEmpty() || name == nullptr ? parent + name : parent + '.' + name;
    }

    void fault(const Text& text) { faultAt(bytesLeft.offset(), text); }
    void faultAt(long long offset, const Text& text)
    {
        if (!result.faults.add(offset, text) && !isCounting) {
            result.stopAt(bytesLeft);
            isCounting = true;
        }
    }

    // Returns the next bytes, or null if they are missing.
    const char* take(const char* name, int size)
    {
        if (isStopped)
            return nullptr;
        if (bytesLeft.holds(size))
            return bytesLeft.at();
        stopAtMissing(Text::untranslated(pathOf(name)), size);
        return nullptr;
    }

    void stopAtMissing(const Text& name, int size)
    {
        fault(Text::tr("%1 needs %2, but only %3").arg(name, bytesText(size), remainText(bytesLeft.left())));
        isStopped = true;
    }

    std::string takeText(const char* name)
    {
        wireSizes[name] = 0;
        const char* at = take(name, 2);
        if (at == nullptr)
            return std::string();
        const int size = CByte2Val::byte2UShort(at);
        if (!bytesLeft.holds(2 + size)) {
            fault(Text::tr("%1 has a length of %2, but only %3")
                      .arg(pathOf(name))
                      .arg(size)
                      .arg(remainText(bytesLeft.left() - 2)));
            isStopped = true;
            return std::string();
        }
        wireSizes[name] = 2 + size;
        return {bytesLeft.at() + 2, static_cast<size_t>(size)};
    }

    void addRow(const char* name, int size, const FieldValue& value, const Text* remark = nullptr)
    {
        if (!isCounting)
            listener.row({bytesLeft.offset(), {bytesLeft.at(), static_cast<size_t>(size)}, path, name, value, remark});
    }

    // Ends a field: passes it on, and steps over its bytes.
    void add(const char* name, int size, const FieldValue& value)
    {
        addRow(name, size, value);
        if (!isCounting)
            listener.member(name, value);
        bytesLeft.skip(size);
    }

    template <typename Item>
    void addArray(const char* name, const std::vector<Item>& items)
    {
        if (isCounting)
            return;
        listener.begin(name, '[');
        for (const Item& item : items)
            listener.member(nullptr, item);
        listener.end(']');
    }

    // Objects and arrays after a fault are left out.
    void begin(const char* name, char bracket)
    {
        shown.push_back(!isStopped && !isCounting);
        if (shown.back())
            listener.begin(name, bracket);
        paths.push_back(path.size());
        if (name != nullptr && !path.empty())
            path += '.';
        path += name == nullptr ? "" : name;
    }
    void end(char bracket)
    {
        if (shown.back())
            listener.end(bracket);
        shown.pop_back();
        leave();
    }
    void leave()
    {
        path.resize(paths.back());
        paths.pop_back();
    }

    ByteWindow& bytesLeft;
    DecodeListener& listener;
    Decoding& result;
    bool isStopped = false;  // at a field that is incomplete
    bool isCounting = false; // faults alone, after too many of them
    int resultOffset = 0;
    long long recordStart = 0;
    std::vector<Count> counts;
    std::map<std::string_view, int> wireSizes; // of texts by name
    std::string path;
    std::vector<size_t> paths; // lengths of the paths of the enclosing records and lists
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
            counts.push_back({result.faults.listed().size(), bytesLeft.offset(), bytesLeft.offset() + countBytes, count,
                              name == nullptr ? Text::tr("count") : Text::tr("the count of %1").arg(pathOf(name))});
            addRow(countName, countBytes, count);
            bytesLeft.skip(countBytes);
        }
    }
    begin(name, '[');
    return count;
}

void RecordDecoder::samples(StoredWave& wave)
{
    if (isStopped)
        return;
    bytesLeft.holds(LLONG_MAX); // all
    const unsigned int count = wave.head.markCount;
    const Text tooFew = markFault(count, bytesLeft.left());
    if (!tooFew.isEmpty())
        fault(tooFew);
    begin("marks", '[');
    for (unsigned int i = 0; i < count && bytesLeft.left() >= 4; ++i) {
        beginItem(i);
        field(nullptr, wave.marks.emplace_back());
        endItem();
    }
    end(']');

    QByteArray block = QByteArray::fromRawData(bytesLeft.at(), bytesLeft.left());
    const long long blockStart = bytesLeft.offset();
    if (wave.isCompressed()) {
        const UnpackedBlock unpacked = unpackBlock(block);
        block = unpacked.bytes;
        if (!unpacked.fault.isEmpty())
            fault(unpacked.fault);
        const Text remark = Text::tr("%1 unpacked").arg(bytesText(block.size()));
        addRow(QT_TRANSLATE_NOOP("Text", "(zlib stream)"), unpacked.used, remark.english().toStdString(), &remark);
        bytesLeft.skip(unpacked.used);
    }
    readSamples(block, wave);
    const size_t size = wave.hasIntegers() ? 2 : 4;
    for (size_t i = 0; i < wave.samples.size() && !isCounting; ++i) {
        JsonBuilder json;
        if (wave.hasIntegers()) {
            json.begin(nullptr, '{');
            json.add("stored", wave.stored[i]);
            json.add("sample", wave.samples[i]);
            json.end('}');
        } else {
            json.add(nullptr, wave.samples[i]);
        }
        const std::string name = "samples[" + std::to_string(i) + ']';
        const size_t at = i * size;
        const long long offset = wave.isCompressed() ? -1 : blockStart + static_cast<long long>(at);
        listener.row({offset, {block.constData() + at, size}, name, nullptr, JsonText{json.text}});
    }
    if (!wave.isCompressed())
        bytesLeft.skip(static_cast<int>(wave.samples.size() * size));
    if (wave.hasIntegers())
        addArray("stored", wave.stored);
    addArray("samples", wave.samples);
}

void RecordDecoder::finish()
{
    for (const Count& count : counts) {
        const long long after = bytesLeft.size() - count.end;
        if (bytesLeft.isEnded() && count.count > after) {
            result.faults.insert(
                count.faultsBefore, count.offset,
                Text::tr("%1 is %2, but only %3").arg(count.name).arg(count.count).arg(remainText(after)));
            result.isRisky = result.isRisky || count.count > safeCount;
        }
    }
    if (!isCounting)
        result.stopAt(bytesLeft);
}

static void walk(const Form& form, Fields& fields)
{
    const std::unique_ptr<Content> content = form.make();
    if (!isList(form))
        return content->walk(fields);
    walkList(fields, 0, [&](size_t) { content->makeItem()->walk(fields); }); // no item is kept
}

Decoding decode(const Form& form, ByteWindow& bytes, DecodeListener& listener, size_t mostFaults)
{
    Decoding decoding(mostFaults);
    RecordDecoder decoder(bytes, listener, decoding);
    walk(form, decoder);
    decoder.expectInAll(form.leastBytes);
    decoder.finish();
    return decoding;
}

// --- Names --------------------------------------------------------------------------------------------------------

class NameListener : public DecodeListener {
public:
    void row(const DecodedRow& row) override { row.appendName(names.emplace_back()); }
    void begin(const char*, char) override {}
    void end(char) override {}
    void member(const char*, const FieldValue&) override {}

    std::vector<std::string> names;
};

std::vector<std::string> fieldNames(const Form& list)
{
    NameListener listener;
    MemorySource zeros(QByteArray(1 << 16, '\0')); // an item with empty texts
    ByteWindow bytes(zeros);
    Decoding decoding(1);
    RecordDecoder decoder(bytes, listener, decoding);
    list.make()->makeItem()->walk(decoder);
    return listener.names;
}

// --- The library's reader -----------------------------------------------------------------------------------------

static Text meaningOf(const Form& form, int result)
{
    for (const ResultMeaning& failure : *form.failures) {
        if (failure.result == result)
            return Text::tr(failure.meaning);
    }
    return form.onSuccess == returnsBytes ? Text::tr("good, %1").arg(bytesText(result)) : Text::tr("good");
}

void callReader(const Form& form, const ByteWindow& bytes, Decoding& decoding)
{
    if (form.failures == nullptr) {
        decoding.meaning = Text::tr("not called: the library writes this form and has no reader for it");
    } else if (decoding.isRisky) {
        decoding.meaning = Text::tr("not called: the reader trusts this number and would allocate that much memory");
    } else if (!bytes.areAllKept()) {
        decoding.meaning = Text::tr("not called: more than %1 bytes; --library calls it").arg(ByteWindow::smallInput);
    } else {
        decoding.readerCalled = true;
        decoding.result = form.make()->read(bytes.all());
        decoding.meaning = meaningOf(form, decoding.result);
    }
}
