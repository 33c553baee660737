#include "byte2Rdb.h"

#include "byteRoom.h"
#include "rdbFields.h"

namespace gqdb {

void CByte2Rdb::hisQuery2Byte(const HisQuery&, QByteArray&) {} // deliberately nothing; callers rely on it

int CByte2Rdb::byte2HisQuery(const char* buf, int size, HisQuery& query)
{
    if (size < 28)
        return -2;
    CRecordReader in(buf, size);
    walk(in, query);
    return 1; // not the size, unlike the other readers
}

void CByte2Rdb::oneSecQuery2Byte(const OneSecQuery& query, QByteArray& data)
{
    CRecordSize size;
    walk(size, const_cast<OneSecQuery&>(query));
    CRecordWriter out(grow(data, size.bytes()));
    walk(out, const_cast<OneSecQuery&>(query));
}

int CByte2Rdb::byte2OneSecQuery(const char* buf, int size, OneSecQuery& query)
{
    if (size < 22)
        return -2;
    CRecordReader in(buf, size - 1); // one byte less than there is: a buffer that ends with the record is refused
    return walk(in, query) ? in.used() : 0;
}

} // namespace gqdb
