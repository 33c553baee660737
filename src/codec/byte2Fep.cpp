#include "byte2Fep.h"

#include "byteRoom.h"
#include "fepFields.h"
#include "listCount.h"

namespace gqdb {

CByte2Fep::CByte2Fep() = default;

CByte2Fep::~CByte2Fep() = default;

static const int recordRoom = 1024; // reserved for each record except YbItem

// --- NodeHead --------------------------------------------------------------------------------------------------------

void CByte2Fep::nodeHead2Byte(const NodeHead& head, QByteArray& data)
{
    QByteArray texts[6];
    CRecordSize size(texts);
    walk(size, const_cast<NodeHead&>(head));
    reserveMore(data, recordRoom);
    CRecordWriter out(grow(data, size.bytes()), texts);
    walk(out, const_cast<NodeHead&>(head));
}

int CByte2Fep::byte2NodeHead(const char* buf, int size, NodeHead& head)
{
    CRecordReader in(buf, size);
    return walk(in, head) ? in.used() : 0;
}

void CByte2Fep::nodeHeads2Byte(const std::vector<NodeHead>& list, QByteArray& data)
{
    putCount(list.size(), data);
    for (const NodeHead& head : list)
        nodeHead2Byte(head, data);
}

int CByte2Fep::byte2NodeHeads(const char* buf, int size, std::vector<NodeHead>& list)
{
    if (size < 4)
        return 0;
    const size_t first = list.size();
    list.resize(appendedSize(first, load32(buf)));
    if (list.size() < first)
        return 0;
    int pos = 4;
    for (size_t i = first; i < list.size(); ++i) {
        const int used = byte2NodeHead(buf + pos, size - pos, list[i]);
        if (used == 0)
            return 0;
        pos += used;
    }
    return 1;
}

// --- CommItem --------------------------------------------------------------------------------------------------------

void CByte2Fep::commItem2Byte(const CommItem& item, QByteArray& data)
{
    QByteArray texts[5];
    CRecordSize size(texts);
    walk(size, const_cast<CommItem&>(item));
    reserveMore(data, recordRoom);
    CRecordWriter out(grow(data, size.bytes()), texts);
    walk(out, const_cast<CommItem&>(item));
}

// Two errors of arithmetic are deliberate, because peers rely on them: the size of text3 is subtracted twice from the
// bytes left, and the result counts text4 twice but not word1.
int CByte2Fep::byte2CommItem(const char* buf, int size, CommItem& item)
{
    if (size < 25)
        return 0;
    item.commId = byte2Int(buf);
    const char* at = buf + 4;
    int left = size - 4;

    const int size1 = takeString(at, left, item.text1);
    if (size1 == 0)
        return 0;
    at += size1;
    left -= size1;
    const int size2 = takeString(at, left, item.text2);
    if (size2 == 0)
        return 0;
    at += size2;
    left -= size2;
    const int size3 = takeString(at, left, item.text3);
    if (size3 == 0)
        return 0;
    at += size3;
    left -= size3;

    if (left < 4)
        return 0;
    item.flag1 = at[0];
    item.flag2 = at[1];
    at += 2;
    left -= size3; // again, instead of the two flags: a long text3 needs bytes after the record

    const int size4 = takeString(at, left, item.text4);
    if (size4 == 0)
        return 0;
    at += size4;
    left -= size4;
    if (left < 6)
        return 0;
    item.word1 = byte2Int(at);
    const int size5 = takeString(at + 4, left - 4, item.text5);
    if (size5 == 0)
        return 0;
    return 4 + size1 + size2 + size3 + 2 + 2 * size4 + size5; // the record's size only if text4 has 2 bytes
}

void CByte2Fep::commItems2Byte(const std::vector<CommItem>& list, QByteArray& data)
{
    putCount(list.size(), data);
    for (const CommItem& item : list)
        commItem2Byte(item, data);
}

int CByte2Fep::byte2CommItems(const char* buf, int size, std::vector<CommItem>& list)
{
    if (size < 4)
        return 0;
    const size_t first = list.size();
    list.resize(appendedSize(first, load32(buf)));
    if (list.size() < first)
        return 0;
    // Advances by the reader's results, which can lead into the middle of a record or past the end of the bytes.
    long long pos = 4;
    for (size_t i = first; i < list.size(); ++i) {
        const int result = pos < size ? byte2CommItem(buf + pos, static_cast<int>(size - pos), list[i]) : 0;
        if (result == 0)
            return 0;
        pos += result;
    }
    return 1;
}

// --- YcItem ----------------------------------------------------------------------------------------------------------

void CByte2Fep::ycItem2Byte(const YcItem& item, QByteArray& data)
{
    QByteArray texts[5];
    CRecordSize size(texts);
    walk(size, const_cast<YcItem&>(item));
    reserveMore(data, recordRoom);
    CRecordWriter out(grow(data, size.bytes()), texts);
    walk(out, const_cast<YcItem&>(item));
}

int CByte2Fep::byte2YcItem(const char* buf, int size, YcItem& item)
{
    CRecordReader in(buf, size);
    return walk(in, item) ? in.used() : 0;
}

void CByte2Fep::ycItems2Byte(const std::vector<YcItem>& list, QByteArray& data)
{
    putCount(list.size(), data);
    for (const YcItem& item : list)
        ycItem2Byte(item, data);
}

int CByte2Fep::byte2YcItems(const char* buf, int size, std::vector<YcItem>& list)
{
    if (size < 4)
        return 0;
    const size_t first = list.size();
    list.resize(appendedSize(first, load32(buf)));
    if (list.size() < first)
        return 0;
    int pos = 4;
    for (size_t i = first; i < list.size(); ++i) {
        const int used = byte2YcItem(buf + pos, size - pos, list[i]);
        if (used == 0)
            return 0;
        pos += used;
    }
    return 1;
}

// --- YxItem ----------------------------------------------------------------------------------------------------------

void CByte2Fep::yxItem2Byte(const YxItem& item, QByteArray& data)
{
    QByteArray texts[4];
    CRecordSize size(texts);
    walk(size, const_cast<YxItem&>(item));
    reserveMore(data, recordRoom);
    CRecordWriter out(grow(data, size.bytes()), texts);
    walk(out, const_cast<YxItem&>(item));
}

int CByte2Fep::byte2YxItem(const char* buf, int size, YxItem& item)
{
    CRecordReader in(buf, size);
    return walk(in, item) ? in.used() : 0;
}

void CByte2Fep::yxItems2Byte(const std::vector<YxItem>& list, QByteArray& data)
{
    putCount(list.size(), data);
    for (const YxItem& item : list)
        yxItem2Byte(item, data);
}

int CByte2Fep::byte2YxItems(const char* buf, int size, std::vector<YxItem>& list)
{
    if (size < 4)
        return 0;
    const size_t first = list.size();
    list.resize(appendedSize(first, load32(buf)));
    if (list.size() < first)
        return 0;
    int pos = 4;
    for (size_t i = first; i < list.size(); ++i) {
        const int used = byte2YxItem(buf + pos, size - pos, list[i]);
        if (used == 0)
            return 0;
        pos += used;
    }
    return 1;
}

// --- YdItem ----------------------------------------------------------------------------------------------------------

void CByte2Fep::ydItem2Byte(const YdItem& item, QByteArray& data)
{
    QByteArray texts[5];
    CRecordSize size(texts);
    walk(size, const_cast<YdItem&>(item));
    reserveMore(data, recordRoom);
    CRecordWriter out(grow(data, size.bytes()), texts);
    walk(out, const_cast<YdItem&>(item));
}

int CByte2Fep::byte2YdItem(const char* buf, int size, YdItem& item)
{
    CRecordReader in(buf, size);
    return walk(in, item) ? in.used() : 0;
}

void CByte2Fep::ydItems2Byte(const std::vector<YdItem>& list, QByteArray& data)
{
    putCount(list.size(), data);
    for (const YdItem& item : list)
        ydItem2Byte(item, data);
}

int CByte2Fep::byte2YdItems(const char* buf, int size, std::vector<YdItem>& list)
{
    if (size < 4)
        return 0;
    const size_t first = list.size();
    list.resize(appendedSize(first, load32(buf)));
    if (list.size() < first)
        return 0;
    int pos = 4;
    for (size_t i = first; i < list.size(); ++i) {
        const int used = byte2YdItem(buf + pos, size - pos, list[i]);
        if (used == 0)
            return 0;
        pos += used;
    }
    return 1;
}

// --- YbItem ----------------------------------------------------------------------------------------------------------

void CByte2Fep::ybItem2Byte(const YbItem& item, QByteArray& data)
{
    QByteArray texts[4];
    CRecordSize size(texts);
    walk(size, const_cast<YbItem&>(item));
    CRecordWriter out(grow(data, size.bytes()), texts);
    walk(out, const_cast<YbItem&>(item));
}

int CByte2Fep::byte2YbItem(const char* buf, int size, YbItem& item)
{
    CRecordReader in(buf, size);
    return walk(in, item) ? in.used() : 0;
}

void CByte2Fep::ybItems2Byte(const std::vector<YbItem>& list, QByteArray& data)
{
    putCount(list.size(), data);
    for (const YbItem& item : list)
        ybItem2Byte(item, data);
}

int CByte2Fep::byte2YbItems(const char* buf, int size, std::vector<YbItem>& list)
{
    if (size < 4)
        return 0;
    const size_t first = list.size();
    list.resize(appendedSize(first, load32(buf)));
    if (list.size() < first)
        return 0;
    int pos = 4;
    for (size_t i = first; i < list.size(); ++i) {
        const int used = byte2YbItem(buf + pos, size - pos, list[i]);
        if (used == 0)
            return 0;
        pos += used;
    }
    return 1;
}

} // namespace gqdb
