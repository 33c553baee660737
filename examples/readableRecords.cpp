// Writes and reads back records whose library reader and writer do not match.

#include <gqLib/byte2Fep.h>
#include <gqLib/byte2Rdb.h>

#include <cstdio>

using gqdb::CByte2Fep;
using gqdb::CByte2Rdb;
using gqdb::CByte2Val;

//! [intPoint]
void appendReadableIntPoint(const gqdb::IntPoint& point, QByteArray& data)
{
    QByteArray record;
    CByte2Rdb::intPoint2Byte(point, record);
    const size_t texts = point.text1.size() + point.text2.size() + point.text3.size() + point.text4.size();
    record.remove(24 + static_cast<int>(texts), 1);
    data.append(record);
}
//! [intPoint]

//! [ybItem]
void appendReadableYbItem(const gqdb::YbItem& item, QByteArray& data)
{
    QByteArray record;
    CByte2Fep::ybItem2Byte(item, record);
    const int texts = item.text1.toUtf8().size() + item.text2.toUtf8().size() + item.text3.toUtf8().size();
    record.remove(10 + texts, 1);
    data.append(record);
}
//! [ybItem]

//! [commItems]
// `bytes` contains the list and, after it, at least as many further bytes as the longest text3.
bool readCommItems(const QByteArray& bytes, std::vector<gqdb::CommItem>& list)
{
    if (bytes.size() < 4)
        return false;
    const char* first = bytes.constData();
    int pos = 4;
    for (unsigned int left = CByte2Val::byte2UInt(first); left > 0; --left) {
        gqdb::CommItem item;
        if (CByte2Fep::byte2CommItem(first + pos, bytes.size() - pos, item) < 1)
            return false;
        list.push_back(item);
        pos += 4;                           // commId
        for (int between : {0, 0, 2, 4, 0}) // each text, and the bytes between it and the next one
            pos += 2 + CByte2Val::byte2UShort(first + pos) + between;
    }
    return true;
}
//! [commItems]

//! [values]
// Replaces `values`. Returns 1, or -5 if the list is too short.
int readFloatValues(const char* list, int size, std::vector<gqdb::FloatRealData>& values)
{
    values.clear(); // the reader appends
    if (size == 4 && CByte2Val::byte2UInt(list) == 0)
        return 1; // an empty list, which the reader refuses
    return CByte2Rdb::byte2FloatRealDatas(list, size, values);
}
//! [values]

int main()
{
    gqdb::IntPoint written;
    written.text1 = "PUMPS";
    written.code2 = 2;
    written.text5 = "running pumps";
    QByteArray bytes;
    appendReadableIntPoint(written, bytes);
    gqdb::IntPoint point;
    if (CByte2Rdb::byte2IntPoint(bytes.constData(), bytes.size(), point) > 0)
        std::printf("%s: %s\n", point.text1.c_str(), point.text5.c_str());

    gqdb::YbItem item;
    item.text1 = "level";
    item.text4 = "in the tank";
    bytes.clear();
    appendReadableYbItem(item, bytes);
    gqdb::YbItem yb;
    if (CByte2Fep::byte2YbItem(bytes.constData(), bytes.size(), yb) > 0)
        std::printf("%s: %s\n", qPrintable(yb.text1), qPrintable(yb.text4));

    std::vector<gqdb::CommItem> lines(2);
    lines[0].text3 = "a text of 18 bytes";
    lines[0].text4 = "any length";
    lines[1].text5 = "the second one";
    bytes.clear();
    CByte2Fep::commItems2Byte(lines, bytes);
    bytes.append(18, '\0'); // as many as the longest text3
    std::vector<gqdb::CommItem> read;
    if (readCommItems(bytes, read) && read.size() == 2)
        std::printf("%s, %s\n", qPrintable(read[0].text4), qPrintable(read[1].text5));

    bytes.clear();
    CByte2Rdb::floatRealDatas2Byte({}, bytes);
    std::vector<gqdb::FloatRealData> values;
    std::printf("no values: %d\n", readFloatValues(bytes.constData(), bytes.size(), values));
    return 0;
}
