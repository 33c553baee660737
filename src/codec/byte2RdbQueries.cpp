#include "byte2Rdb.h"

#include "byteCursor.h"

namespace gqdb {

void CByte2Rdb::hisQuery2Byte(const HisQuery&, QByteArray&) {} // deliberately nothing; callers rely on it

int CByte2Rdb::byte2HisQuery(const char* buf, int size, HisQuery& query)
{
    if (size < 28)
        return -2;
    CByteReader in(buf, size);
    query.pointId = in.take32();
    query.word1 = in.take32();
    query.word2 = in.take32();
    query.word3 = in.take32();
    query.word4 = in.take32();
    query.word5 = in.take32();
    query.word6 = in.take32();
    return 1; // not the size, unlike its siblings
}

void CByte2Rdb::oneSecQuery2Byte(const OneSecQuery& query, QByteArray& data)
{
    CByteWriter out(data, 20 + textSize(query.text1));
    out.put32(query.pointId);
    out.put32(query.word1);
    out.put32(query.word2);
    out.put32(query.word3);
    out.put32(query.word4);
    out.putText(query.text1);
}

int CByte2Rdb::byte2OneSecQuery(const char* buf, int size, OneSecQuery& query)
{
    if (size < 22)
        return -2;
    query.pointId = load32(buf);
    query.word1 = load32(buf + 4);
    query.word2 = load32(buf + 8);
    query.word3 = load32(buf + 12);
    query.word4 = load32(buf + 16);
    // One byte less than there is: a buffer that ends exactly with the record is refused.
    const int used = takeString(buf + 20, size - 21, query.text1);
    return used == 0 ? 0 : 20 + used;
}

} // namespace gqdb
