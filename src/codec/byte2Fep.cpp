#include "byte2Fep.h"

#include "byteCursor.h"
#include "listCount.h"

namespace gqdb {

CByte2Fep::CByte2Fep() = default;

CByte2Fep::~CByte2Fep() = default;

// --- Shared by the records ----------------------------------------------------------------------------------------
// A list reader appends: the new size is old size plus count, cut to 32 bits. Where that falls below the old size there
// is no room for an item, and the list fails.

// Ahead of each record but YbItem, so that its fields do not move the array one by one.
static void reserveRecord(QByteArray& data)
{
    reserveMore(data, 1024);
}

// --- Node heads ---------------------------------------------------------------------------------------------------

void CByte2Fep::nodeHead2Byte(const NodeHead& head, QByteArray& data)
{
    reserveRecord(data);
    int2Byte(head.nodeId, data);
    str2Byte(head.text1, data);
    str2Byte(head.text2, data);
    str2Byte(head.text3, data);
    str2Byte(head.text4, data);
    {
        CByteWriter out(data, 24);
        out.putInt(head.word1); // ahead of flag1 on the wire
        out.put8(head.flag1);
        out.put8(head.flag2);
        out.put8(head.flag3);
        out.put8(head.flag4);
        out.putInt(head.word2);
        out.putInt(head.word3);
        out.putInt(head.word4);
        out.putInt(head.word5);
    }
    str2Byte(head.text5, data);
    str2Byte(head.text6, data);
}

int CByte2Fep::byte2NodeHead(const char* buf, int size, NodeHead& head)
{
    if (size < 25)
        return 0;
    CByteReader in(buf, size);
    head.nodeId = in.takeInt();
    if (!in.takeText(head.text1) || !in.takeText(head.text2) || !in.takeText(head.text3) || !in.takeText(head.text4) ||
        in.left() < 24)
        return 0;
    head.word1 = in.takeInt();
    head.flag1 = in.take8();
    head.flag2 = in.take8();
    head.flag3 = in.take8();
    head.flag4 = in.take8();
    head.word2 = in.takeInt();
    head.word3 = in.takeInt();
    head.word4 = in.takeInt();
    head.word5 = in.takeInt();
    if (!in.takeText(head.text5) || !in.takeText(head.text6))
        return 0;
    return in.used();
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
    CByteReader in(buf, size);
    const size_t first = list.size();
    list.resize(appendedSize(first, in.take32()));
    if (list.size() < first)
        return 0;
    for (size_t i = first; i < list.size(); ++i) {
        if (!in.skip(byte2NodeHead(in.here(), in.left(), list[i])))
            return 0;
    }
    return 1;
}

// --- Communication entries ----------------------------------------------------------------------------------------

void CByte2Fep::commItem2Byte(const CommItem& item, QByteArray& data)
{
    reserveRecord(data);
    int2Byte(item.commId, data);
    str2Byte(item.text1, data);
    str2Byte(item.text2, data);
    str2Byte(item.text3, data); // ahead of flag1 on the wire
    data.append(item.flag1);
    data.append(item.flag2);
    str2Byte(item.text4, data);
    int2Byte(item.word1, data);
    str2Byte(item.text5, data);
}

// Two faults of arithmetic are deliberate, for peers count on them: text3 is taken off the bytes left twice, and the
// answer counts text4 twice but not word1.
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
    left -= size3; // once more, in place of the two flags: a long text3 wants bytes behind the record

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
    return 4 + size1 + size2 + size3 + 2 + 2 * size4 + size5; // the record's size only where text4 has 2 bytes
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
    // By the reader's answers, which may lead into the midst of a record, or behind the bytes: there is none left then.
    long long pos = 4;
    for (size_t i = first; i < list.size(); ++i) {
        const int answer = pos < size ? byte2CommItem(buf + pos, static_cast<int>(size - pos), list[i]) : 0;
        if (answer == 0)
            return 0;
        pos += answer;
    }
    return 1;
}

// --- Measurements -------------------------------------------------------------------------------------------------

void CByte2Fep::ycItem2Byte(const YcItem& item, QByteArray& data)
{
    reserveRecord(data);
    data.append(item.flag1);
    int2Byte(item.itemId, data);
    str2Byte(item.text1, data);
    str2Byte(item.text2, data);
    str2Byte(item.text3, data);
    str2Byte(item.text4, data);
    {
        CByteWriter out(data, 32);
        out.put8(item.flag2);
        out.putInt(item.word1);
        out.putInt(item.word2);
        out.put8(item.flag3);
        out.putFloat(item.coef1);
        out.putFloat(item.coef2);
        out.putFloat(item.coef3);
        out.putFloat(item.coef4);
        out.putInt(item.word3);
        out.put8(item.flag4);
        out.put8(item.flag5);
    }
    str2Byte(item.text5, data);
}

int CByte2Fep::byte2YcItem(const char* buf, int size, YcItem& item)
{
    if (size < 31)
        return 0;
    CByteReader in(buf, size);
    item.flag1 = in.take8();
    item.itemId = in.takeInt();
    if (!in.takeText(item.text1) || !in.takeText(item.text2) || !in.takeText(item.text3) || !in.takeText(item.text4) ||
        in.left() < 32)
        return 0;
    item.flag2 = in.take8();
    item.word1 = in.takeInt();
    item.word2 = in.takeInt();
    item.flag3 = in.take8();
    item.coef1 = in.takeFloat();
    item.coef2 = in.takeFloat();
    item.coef3 = in.takeFloat();
    item.coef4 = in.takeFloat();
    item.word3 = in.takeInt();
    item.flag4 = in.take8();
    item.flag5 = in.take8();
    if (!in.takeText(item.text5))
        return 0;
    return in.used();
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
    CByteReader in(buf, size);
    const size_t first = list.size();
    list.resize(appendedSize(first, in.take32()));
    if (list.size() < first)
        return 0;
    for (size_t i = first; i < list.size(); ++i) {
        if (!in.skip(byte2YcItem(in.here(), in.left(), list[i])))
            return 0;
    }
    return 1;
}

// --- Signals of a few states --------------------------------------------------------------------------------------

void CByte2Fep::yxItem2Byte(const YxItem& item, QByteArray& data)
{
    reserveRecord(data);
    int2Byte(item.itemId, data);
    str2Byte(item.text1, data);
    str2Byte(item.text2, data);
    str2Byte(item.text3, data);
    {
        CByteWriter out(data, 18);
        out.put8(item.flag1);
        out.putInt(item.word1);
        out.putInt(item.word2);
        out.put8(item.flag2);
        out.putInt(item.word3);
        out.put8(item.flag3);
        out.put8(item.flag4);
        out.put8(item.flag5);
        out.put8(item.flag6);
    }
    str2Byte(item.text4, data);
}

int CByte2Fep::byte2YxItem(const char* buf, int size, YxItem& item)
{
    if (size < 24)
        return 0;
    CByteReader in(buf, size);
    item.itemId = in.takeInt();
    if (!in.takeText(item.text1) || !in.takeText(item.text2) || !in.takeText(item.text3) || in.left() < 18)
        return 0;
    item.flag1 = in.take8();
    item.word1 = in.takeInt();
    item.word2 = in.takeInt();
    item.flag2 = in.take8();
    item.word3 = in.takeInt();
    item.flag3 = in.take8();
    item.flag4 = in.take8();
    item.flag5 = in.take8();
    item.flag6 = in.take8();
    if (!in.takeText(item.text4))
        return 0;
    return in.used();
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
    CByteReader in(buf, size);
    const size_t first = list.size();
    list.resize(appendedSize(first, in.take32()));
    if (list.size() < first)
        return 0;
    for (size_t i = first; i < list.size(); ++i) {
        if (!in.skip(byte2YxItem(in.here(), in.left(), list[i])))
            return 0;
    }
    return 1;
}

// --- Items without a reading of their own -------------------------------------------------------------------------

void CByte2Fep::ydItem2Byte(const YdItem& item, QByteArray& data)
{
    reserveRecord(data);
    data.append(item.flag1);
    int2Byte(item.itemId, data);
    str2Byte(item.text1, data);
    str2Byte(item.text2, data);
    str2Byte(item.text3, data);
    str2Byte(item.text4, data);
    {
        CByteWriter out(data, 42);
        out.put8(item.flag2);
        out.put8(item.flag3);
        out.putInt(item.word1);
        out.putInt(item.word2);
        out.put8(item.flag4);
        out.put8(item.flag5);
        out.put8(item.flag6);
        out.put8(item.flag7);
        out.putFloat(item.float1);
        out.putFloat(item.float2);
        out.putInt(item.word3);
        out.putFloat(item.float3);
        out.putFloat(item.float4);
        out.putInt(item.word4);
        out.putInt(item.word5);
    }
    str2Byte(item.text5, data);
}

int CByte2Fep::byte2YdItem(const char* buf, int size, YdItem& item)
{
    if (size < 48)
        return 0;
    CByteReader in(buf, size);
    item.flag1 = in.take8();
    item.itemId = in.takeInt();
    if (!in.takeText(item.text1) || !in.takeText(item.text2) || !in.takeText(item.text3) || !in.takeText(item.text4) ||
        in.left() < 42)
        return 0;
    item.flag2 = in.take8();
    item.flag3 = in.take8();
    item.word1 = in.takeInt();
    item.word2 = in.takeInt();
    item.flag4 = in.take8();
    item.flag5 = in.take8();
    item.flag6 = in.take8();
    item.flag7 = in.take8();
    item.float1 = in.takeFloat();
    item.float2 = in.takeFloat();
    item.word3 = in.takeInt();
    item.float3 = in.takeFloat();
    item.float4 = in.takeFloat();
    item.word4 = in.takeInt();
    item.word5 = in.takeInt();
    if (!in.takeText(item.text5))
        return 0;
    return in.used();
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
    CByteReader in(buf, size);
    const size_t first = list.size();
    list.resize(appendedSize(first, in.take32()));
    if (list.size() < first)
        return 0;
    for (size_t i = first; i < list.size(); ++i) {
        if (!in.skip(byte2YdItem(in.here(), in.left(), list[i])))
            return 0;
    }
    return 1;
}

// --- Signals with an integer value --------------------------------------------------------------------------------

// Deliberately without the reservation, and with flag1, which the reader does not know.
void CByte2Fep::ybItem2Byte(const YbItem& item, QByteArray& data)
{
    int2Byte(item.itemId, data);
    str2Byte(item.text1, data);
    str2Byte(item.text2, data);
    str2Byte(item.text3, data);
    {
        CByteWriter out(data, 10);
        out.put8(item.flag1);
        out.putInt(item.word1);
        out.putInt(item.word2);
        out.put8(item.flag2);
    }
    str2Byte(item.text4, data);
}

// Deliberately off the writer by its flag1: each field behind the third text is taken one byte earlier.
int CByte2Fep::byte2YbItem(const char* buf, int size, YbItem& item)
{
    if (size < 21)
        return 0;
    CByteReader in(buf, size);
    item.itemId = in.takeInt();
    if (!in.takeText(item.text1) || !in.takeText(item.text2) || !in.takeText(item.text3) || in.left() < 11)
        return 0;
    item.word1 = in.takeInt();
    item.word2 = in.takeInt();
    item.flag2 = in.take8();
    if (!in.takeText(item.text4))
        return 0;
    return in.used();
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
    CByteReader in(buf, size);
    const size_t first = list.size();
    list.resize(appendedSize(first, in.take32()));
    if (list.size() < first)
        return 0;
    for (size_t i = first; i < list.size(); ++i) {
        if (!in.skip(byte2YbItem(in.here(), in.left(), list[i])))
            return 0;
    }
    return 1;
}

} // namespace gqdb
