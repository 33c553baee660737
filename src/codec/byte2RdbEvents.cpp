#include "byte2Rdb.h"

#include "byteCursor.h"

namespace gqdb {

// A list reader replaces: elements that stood there are reused as they are.

static const int eventInfoRoom = 1024;

void CByte2Rdb::eventInfo2Byte(const EventInfo& event, QByteArray& data)
{
    CByteWriter out(data, 55 + textSize(event.text1) + textSize(event.text2));
    out.put32(event.word1);
    out.put32(event.word2);
    out.put32(event.word3);
    out.put32(event.word4);
    out.put8(event.switch1);
    out.put8(event.switch2);
    out.put32(event.word5);
    out.putDouble(event.value);
    out.put32(event.word6);
    out.put32(event.word7);
    out.put32(event.word8);
    out.put32(event.word9);
    out.put32(event.word10);
    out.put8(event.switch3);
    out.put32(event.word13);
    out.putText(event.text1);
    out.putText(event.text2);
}

int CByte2Rdb::byte2EventInfo(const char* buf, int size, EventInfo& event)
{
    if (size < 59)
        return 0;
    CByteReader in(buf, size);
    event.word1 = in.take32();
    event.word2 = in.take32();
    event.word3 = in.take32();
    event.word4 = in.take32();
    event.switch1 = in.take8();
    event.switch2 = in.take8();
    event.word5 = in.take32();
    event.value = in.takeDouble();
    event.word6 = in.take32();
    event.word7 = in.take32();
    event.word8 = in.take32();
    event.word9 = in.take32();
    event.word10 = in.take32();
    event.switch3 = in.take8();
    event.word13 = in.take32();
    if (!in.takeText(event.text1) || !in.takeText(event.text2))
        return 0;
    return in.used();
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
    CByteReader in(buf, size);
    list.resize(in.take32());
    for (EventInfo& event : list) {
        if (!in.skip(byte2EventInfo(in.here(), in.left(), event))) {
            list.clear();
            return -3;
        }
    }
    return 1;
}

static inline void put(CByteWriter& out, const EventState& event)
{
    out.put32(event.word1);
    out.put8(event.switch1);
    out.put32(event.word2);
    out.put32(event.word3);
    out.put32(event.word4);
}

void CByte2Rdb::eventState2Byte(const EventState& event, QByteArray& data)
{
    CByteWriter out(data, 17);
    put(out, event);
}

int CByte2Rdb::byte2EventState(const char* buf, int size, EventState& event)
{
    if (size < 17)
        return 0;
    CByteReader in(buf, size);
    event.word1 = in.take32();
    event.switch1 = in.take8();
    event.word2 = in.take32();
    event.word3 = in.take32();
    event.word4 = in.take32();
    return in.used();
}

void CByte2Rdb::eventStates2Byte(const std::vector<EventState>& list, QByteArray& data)
{
    CByteWriter out(data, 17, list.size());
    for (const EventState& event : list)
        put(out, event);
}

int CByte2Rdb::byte2EventStates(const char* buf, int size, std::vector<EventState>& list)
{
    if (size < 4)
        return -2;
    CByteReader in(buf, size);
    list.resize(in.take32());
    for (EventState& event : list) {
        if (!in.skip(byte2EventState(in.here(), in.left(), event))) {
            list.clear();
            return -3;
        }
    }
    return 1;
}

} // namespace gqdb
