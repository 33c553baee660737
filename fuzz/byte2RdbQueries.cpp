#include "byte2Rdb.h"
#include "target.h"

using namespace gqdb;
using Rdb = CByte2Rdb;

// --- Queries ----------------------------------------------------------------------

static void readHisQuery(Reading& reading)
{
    HisQuery query;
    reading.result = CByte2Rdb::byte2HisQuery(reading.buf, reading.size, query);
    for (const unsigned int word :
         {query.pointId, query.word1, query.word2, query.word3, query.word4, query.word5, query.word6})
        CByte2Val::int2Byte(word, reading.written); // there is no writer
}

static void checkHisQuery(const Layout& layout, const Reading& reading)
{
    const int used = recordSize(layout, reading.buf, reading.size);
    requireResult(reading, used > 0 ? 1 : -2);
    if (used > 0)
        requireWrittenAgain(reading, used);
    else
        require(reading.written == QByteArray(28, '\0'), "a failed reader must not touch the record");
}

// A buffer that ends with the record is refused.
static void checkOneSecQuery(const Layout& layout, const Reading& reading)
{
    if (reading.size < 22)
        return requireResult(reading, -2);
    requireResult(reading, recordSize(layout, reading.buf, reading.size - 1));
    if (reading.result > 0)
        requireWrittenAgain(reading, reading.result);
}

const std::vector<Target> byte2RdbQueryTargets = {
    {"byte2HisQuery", readHisQuery, checkHisQuery, {{28}}},
    {"byte2OneSecQuery", readRecord<Rdb::byte2OneSecQuery, Rdb::oneSecQuery2Byte>, checkOneSecQuery, {{20, textField}}},
};
