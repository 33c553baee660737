#pragma once

#include "rdbRecords.h"
#include "recordWalk.h"

// The fields of the database records, in wire order. recordWalk.h describes what a walk does with them. When reading, a
// walk returns false if the buffer is too short or a text is incomplete. A walk that returns nothing belongs to a
// record of fixed size, which the caller has checked. Internal.
namespace gqdb {

// --- Point definitions --------------------------------------------------------------------------------------------

[[gnu::always_inline]] inline bool walk(CRecordWalk& w, PointInfo& point)
{
    if (!w.holds(16))
        return false;
    w.word("pointId", point.pointId);
    if (!w.text("text1", point.text1) || !w.holds(10))
        return false;
    w.word("code1", point.code1); // before text2 on the wire
    if (!w.text("text2", point.text2) || !w.holds(4))
        return false;
    w.word("code2", point.code2);
    return true;
}

[[gnu::always_inline]] inline bool walk(CRecordWalk& w, FloatPoint& point)
{
    if (!w.holds(84))
        return false;
    w.word("pointId", point.pointId);
    if (!w.text("text1", point.text1) || !w.holds(57))
        return false;
    w.word("code1", point.code1);
    if (!w.text("text2", point.text2) || !w.text("text3", point.text3) || !w.text("text4", point.text4) || !w.holds(62))
        return false;
    w.word("code2", point.code2);
    w.word("code3", point.code3);
    w.word("code4", point.code4);
    if (!w.text("text5", point.text5) || !w.holds(54))
        return false;
    w.byte("switch1", point.switch1);
    w.real("float1", point.float1);
    w.byte("switch2", point.switch2);
    w.word("code5", point.code5);
    w.word("code6", point.code6);
    w.real("float2", point.float2);
    w.word("code7", point.code7);
    w.reals("levels", point.levels, 8);
    return true;
}

[[gnu::always_inline]] inline bool walk(CRecordWalk& w, IntPoint& point)
{
    if (!w.holds(81)) // deliberately one byte more than the shortest record that is read
        return false;
    w.word("pointId", point.pointId);
    if (!w.text("text1", point.text1) || !w.holds(57))
        return false;
    w.word("code1", point.code1);
    if (!w.text("text2", point.text2) || !w.text("text3", point.text3) || !w.text("text4", point.text4) || !w.holds(50))
        return false;
    w.word("code2", point.code2);
    w.word("code3", point.code3);
    if (w.isWrittenForm())
        w.byte("switch0", point.switch0); // peers whose records are read here leave this byte out
    w.word("code4", point.code4);
    if (!w.text("text5", point.text5) || !w.holds(50))
        return false;
    w.byte("switch1", point.switch1);
    w.byte("switch2", point.switch2);
    w.word("code5", point.code5);
    w.word("code6", point.code6);
    w.word("code7", point.code7);
    w.word("code8", point.code8);
    w.words("levels", point.levels, 8);
    return true;
}

[[gnu::always_inline]] inline bool walk(CRecordWalk& w, BoolPoint& point)
{
    if (!w.holds(39))
        return false;
    w.word("pointId", point.pointId);
    if (!w.text("text1", point.text1) || !w.holds(27))
        return false;
    w.word("code1", point.code1);
    if (!w.text("text2", point.text2) || !w.text("text3", point.text3) || !w.holds(24))
        return false;
    w.word("code2", point.code2);
    w.word("code3", point.code3);
    w.word("code4", point.code4);
    if (!w.text("text5", point.text5) || !w.holds(11))
        return false;
    w.byte("switch1", point.switch1);
    w.byte("switch2", point.switch2);
    w.word("code5", point.code5);
    w.word("code6", point.code6);
    w.byte("switch3", point.switch3);
    return true;
}

[[gnu::always_inline]] inline bool walk(CRecordWalk& w, BlobPoint& point)
{
    if (!w.holds(40))
        return false;
    w.word("pointId", point.pointId);
    if (!w.text("text1", point.text1) || !w.holds(27))
        return false;
    w.word("code1", point.code1);
    if (!w.text("text2", point.text2) || !w.text("text3", point.text3) || !w.text("text4", point.text4) || !w.holds(24))
        return false;
    w.word("code2", point.code2);
    w.word("code3", point.code3);
    w.word("code4", point.code4);
    if (!w.text("text5", point.text5) || !w.holds(10))
        return false;
    w.byte("switch1", point.switch1);
    w.byte("switch2", point.switch2);
    w.word("code5", point.code5);
    w.word("code6", point.code6);
    return true;
}

// --- Values -------------------------------------------------------------------------------------------------------

[[gnu::always_inline]] inline void walk(CRecordWalk& w, FloatRealData& record)
{
    w.word("pointId", record.pointId);
    w.real("value", record.value);
    w.word("stamp1", record.stamp1);
    w.word("stamp2", record.stamp2);
    w.byte("flag2", record.flag2); // before flag1 in the two float records only
    w.byte("flag1", record.flag1);
}

[[gnu::always_inline]] inline void walk(CRecordWalk& w, FloatData& record)
{
    w.real("value", record.value);
    w.word("stamp1", record.stamp1);
    w.word("stamp2", record.stamp2);
    w.byte("flag2", record.flag2);
    w.byte("flag1", record.flag1);
}

[[gnu::always_inline]] inline void walk(CRecordWalk& w, BoolRealData& record)
{
    w.word("pointId", record.pointId);
    w.byte("value", record.value);
    w.word("stamp1", record.stamp1);
    w.word("stamp2", record.stamp2);
    w.byte("flag1", record.flag1);
}

[[gnu::always_inline]] inline void walk(CRecordWalk& w, BoolData& record)
{
    w.byte("value", record.value);
    w.word("stamp1", record.stamp1);
    w.word("stamp2", record.stamp2);
    w.byte("flag1", record.flag1);
}

[[gnu::always_inline]] inline void walk(CRecordWalk& w, IntRealData& record)
{
    w.word("pointId", record.pointId);
    w.word("value", record.value);
    w.word("stamp1", record.stamp1);
    w.word("stamp2", record.stamp2);
    w.byte("flag1", record.flag1);
    w.byte("flag2", record.flag2);
}

[[gnu::always_inline]] inline void walk(CRecordWalk& w, IntData& record)
{
    w.word("value", record.value);
    w.word("stamp1", record.stamp1);
    w.word("stamp2", record.stamp2);
    w.byte("flag1", record.flag1);
    w.byte("flag2", record.flag2);
}

[[gnu::always_inline]] inline void walk(CRecordWalk& w, PointRealData& record)
{
    w.byte("pointKind", record.pointKind);
    w.word("pointId", record.pointId);
    w.real("value", record.value);
    w.word("intValue", record.intValue);
    w.word("stamp1", record.stamp1);
    w.word("stamp2", record.stamp2);
    w.byte("flag1", record.flag1);
    w.byte("flag2", record.flag2);
}

[[gnu::always_inline]] inline void walk(CRecordWalk& w, BlobDataInfo& record)
{
    w.word("pointId", record.pointId);
    w.word("stamp1", record.stamp1);
    w.word("stamp2", record.stamp2);
    w.word("word4", record.word4);
    w.byte("flag1", record.flag1);
    w.byte("flag2", record.flag2);
}

[[gnu::always_inline]] inline bool walk(CRecordWalk& w, BlobRealData& record)
{
    if (!w.holds(18))
        return false;
    w.word("pointId", record.pointId);
    w.word("stamp1", record.stamp1);
    w.word("stamp2", record.stamp2);
    w.byte("flag1", record.flag1);
    w.byte("flag2", record.flag2);
    return w.bytes("bytes", record.bytes);
}

[[gnu::always_inline]] inline bool walk(CRecordWalk& w, BlobData& record)
{
    if (!w.holds(14))
        return false;
    w.word("stamp1", record.stamp1);
    w.word("stamp2", record.stamp2);
    w.byte("flag1", record.flag1);
    w.byte("flag2", record.flag2);
    return w.bytes("bytes", record.bytes);
}

// --- Queries and events -------------------------------------------------------------------------------------------

[[gnu::always_inline]] inline void walk(CRecordWalk& w, HisQuery& query)
{
    w.word("pointId", query.pointId);
    w.word("word1", query.word1);
    w.word("word2", query.word2);
    w.word("word3", query.word3);
    w.word("word4", query.word4);
    w.word("word5", query.word5);
    w.word("word6", query.word6);
}

[[gnu::always_inline]] inline bool walk(CRecordWalk& w, OneSecQuery& query)
{
    w.word("pointId", query.pointId); // the reader has checked the room for the numbers
    w.word("word1", query.word1);
    w.word("word2", query.word2);
    w.word("word3", query.word3);
    w.word("word4", query.word4);
    return w.text("text1", query.text1);
}

[[gnu::always_inline]] inline bool walk(CRecordWalk& w, EventInfo& event)
{
    if (!w.holds(59))
        return false;
    w.word("word1", event.word1);
    w.word("word2", event.word2);
    w.word("word3", event.word3);
    w.word("word4", event.word4);
    w.byte("switch1", event.switch1);
    w.byte("switch2", event.switch2);
    w.word("word5", event.word5);
    w.real("value", event.value);
    w.word("word6", event.word6);
    w.word("word7", event.word7);
    w.word("word8", event.word8);
    w.word("word9", event.word9);
    w.word("word10", event.word10);
    w.byte("switch3", event.switch3);
    w.word("word13", event.word13);
    return w.text("text1", event.text1) && w.text("text2", event.text2);
}

[[gnu::always_inline]] inline bool walk(CRecordWalk& w, EventState& event)
{
    if (!w.holds(17))
        return false;
    w.word("word1", event.word1);
    w.byte("switch1", event.switch1);
    w.word("word2", event.word2);
    w.word("word3", event.word3);
    w.word("word4", event.word4);
    return true;
}

} // namespace gqdb
