#include "byte2Fep.h"
#include "target.h"

#include <algorithm>

using namespace gqdb;
using Fep = CByte2Fep;

// --- Records except CommItem -------------------------------------------------------

static void checkRecord(const Layout& layout, const Reading& reading)
{
    requireResult(reading, recordSize(layout, reading.buf, reading.size));
    if (reading.result > 0 && hasPlainTexts(layout, reading.buf))
        requireWrittenAgain(reading, reading.result);
}

static void checkList(const Layout& layout, const Reading& reading)
{
    if (reading.result == tooMuch)
        return require(countsTooMuch(layout, reading), "a count that fits must not fail to allocate");
    const int used = listSize(layout, reading.buf, reading.size);
    requireResult(reading, used > 0 ? 1 : 0);
    if (used > 0 && hasPlainTextsInList(layout, reading.buf, reading.size))
        requireWrittenAgain(reading, used);
}

static const Layout nodeHead = {{4, textField, textField, textField, textField, 24, textField, textField}};

static const Layout ycItem = {{5, textField, textField, textField, textField, 32, textField}};

static const Layout yxItem = {{4, textField, textField, textField, 18, textField}};

static const Layout ydItem = {{5, textField, textField, textField, textField, 42, textField}};

static const Layout ybItem = {{4, textField, textField, textField, 9, textField}};

// Writes the form that is read, which lacks flag1.
static void appendReadable(const YbItem& item, QByteArray& data)
{
    QByteArray record;
    CByte2Fep::ybItem2Byte(item, record);
    const int texts = item.text1.toUtf8().size() + item.text2.toUtf8().size() + item.text3.toUtf8().size();
    record.remove(10 + texts, 1);
    data.append(record);
}

static void appendReadableList(const std::vector<YbItem>& list, QByteArray& data)
{
    CByte2Val::int2Byte(static_cast<unsigned int>(list.size()), data);
    for (const YbItem& item : list)
        appendReadable(item, data);
}

// --- CommItem: the result is the record's size only where text4 has 2 bytes --------

static const Layout commItem = {{4, textField, textField, textField, 2, textField, 4, textField}};

static int commItemResult(const char* buf, int size)
{
    const int afterText3 = recordSize({{4, textField, textField, textField}}, buf, size);
    if (size < 25 || afterText3 == 0)
        return 0;
    const int text3 = afterText3 - recordSize({{4, textField, textField}}, buf, size);
    const int wanted = text3 - 2; // bytes after the record
    const int used = recordSize(commItem, buf, size - wanted);
    if (used == 0)
        return 0;
    const int text4 = 2 + static_cast<int>(numberOf2(buf + afterText3 + 2));
    return used + text4 - 4;
}

static void checkCommItem(const Layout& layout, const Reading& reading)
{
    requireResult(reading, commItemResult(reading.buf, reading.size));
    if (reading.result > 0 && hasPlainTexts(layout, reading.buf))
        requireWrittenAgain(reading, recordSize(layout, reading.buf, reading.size));
}

static void readCommItems(Reading& reading)
{
    std::vector<CommItem> list(setElementsBefore(reading));
    reading.result = CByte2Fep::byte2CommItems(reading.buf, reading.size, list);
    const size_t leastResult = 18; // for a record of 20 bytes: the next one begins in it
    list.resize(std::min(list.size(), reading.elementsBefore + static_cast<size_t>(reading.size) / leastResult + 1));
    CByte2Fep::commItems2Byte(list, reading.written);
}

static void checkCommItems(const Layout& layout, const Reading& reading)
{
    if (reading.result == tooMuch)
        return require(countsTooMuch(layout, reading), "a count that fits must not fail to allocate");
    if (reading.size < 4)
        return requireResult(reading, 0);
    int at = 4;
    bool isPlain = true;
    QByteArray again(reading.buf, at); // each record at the sum of the results before it
    for (unsigned int left = numberOf4(reading.buf); left > 0; --left) {
        const char* const record = reading.buf + at;
        const int more = at < reading.size ? commItemResult(record, reading.size - at) : 0;
        if (more == 0)
            return requireResult(reading, 0);
        isPlain = isPlain && hasPlainTexts(layout, record);
        again.append(record, recordSize(layout, record, reading.size - at));
        at += more;
    }
    requireResult(reading, 1);
    require(!isPlain || reading.written == again, "the records must be the same when written again");
}

const std::vector<Target> byte2FepTargets = {
    {"byte2NodeHead", readRecord<Fep::byte2NodeHead, Fep::nodeHead2Byte>, checkRecord, nodeHead},
    {"byte2NodeHeads", readResizedList<Fep::byte2NodeHeads, Fep::nodeHeads2Byte, nodeHead>, checkList, nodeHead},
    {"byte2CommItem", readRecord<Fep::byte2CommItem, Fep::commItem2Byte>, checkCommItem, commItem},
    {"byte2CommItems", readCommItems, checkCommItems, commItem},
    {"byte2YcItem", readRecord<Fep::byte2YcItem, Fep::ycItem2Byte>, checkRecord, ycItem},
    {"byte2YcItems", readResizedList<Fep::byte2YcItems, Fep::ycItems2Byte, ycItem>, checkList, ycItem},
    {"byte2YxItem", readRecord<Fep::byte2YxItem, Fep::yxItem2Byte>, checkRecord, yxItem},
    {"byte2YxItems", readResizedList<Fep::byte2YxItems, Fep::yxItems2Byte, yxItem>, checkList, yxItem},
    {"byte2YdItem", readRecord<Fep::byte2YdItem, Fep::ydItem2Byte>, checkRecord, ydItem},
    {"byte2YdItems", readResizedList<Fep::byte2YdItems, Fep::ydItems2Byte, ydItem>, checkList, ydItem},
    {"byte2YbItem", readRecord<Fep::byte2YbItem, appendReadable>, checkRecord, ybItem},
    {"byte2YbItems", readResizedList<Fep::byte2YbItems, appendReadableList, ybItem>, checkList, ybItem},
};
