#include "byte2Rdb.h"

#include "byteRoom.h"
#include "rdbFields.h"

namespace gqdb {

// A list reader replaces the list, but reuses its elements without clearing them.

static const int eventInfoRoom = 1024; // reserved for each EventInfo of a list

void CByte2Rdb::eventInfo2Byte(const EventInfo& event, QByteArray& data)
{
    CRecordSize size;
    walk(size, const_cast<EventInfo&>(event));
    CRecordWriter out(grow(data, size.bytes()));
    walk(out, const_cast<EventInfo&>(event));
}

int CByte2Rdb::byte2EventInfo(const char* buf, int size, EventInfo& event)
{
    CRecordReader in(buf, size);
    return walk(in, event) ? in.used() : 0;
}

void CByte2Rdb::eventInfos2Byte(const std::vector<EventInfo>& list, QByteArray& data)
{
    reserveMore(data, 4 + eventInfoRoom * static_cast<long long>(list.size()));
    putCount(list.size(), data);
    for (const EventInfo& event : list)
        eventInfo2Byte(event, data);
}

int CByte2Rdb::byte2EventInfos(const char* buf, int size, std::vector<EventInfo>& list)
{
    if (size < 4)
        return -2;
    list.resize(load32(buf));
    int pos = 4;
    for (EventInfo& event : list) {
        const int used = byte2EventInfo(buf + pos, size - pos, event);
        if (used == 0) {
            list.clear();
            return -3;
        }
        pos += used;
    }
    return 1;
}

void CByte2Rdb::eventState2Byte(const EventState& event, QByteArray& data)
{
    CRecordWriter out(grow(data, 17));
    walk(out, const_cast<EventState&>(event));
}

int CByte2Rdb::byte2EventState(const char* buf, int size, EventState& event)
{
    CRecordReader in(buf, size);
    return walk(in, event) ? in.used() : 0;
}

void CByte2Rdb::eventStates2Byte(const std::vector<EventState>& list, QByteArray& data)
{
    CRecordWriter out(beginList(data, 17, list.size()));
    for (const EventState& event : list)
        walk(out, const_cast<EventState&>(event));
}

int CByte2Rdb::byte2EventStates(const char* buf, int size, std::vector<EventState>& list)
{
    if (size < 4)
        return -2;
    list.resize(load32(buf));
    CRecordReader in(buf + 4, size - 4);
    for (EventState& event : list) {
        if (!walk(in, event)) {
            list.clear();
            return -3;
        }
    }
    return 1;
}

} // namespace gqdb
