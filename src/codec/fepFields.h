#pragma once

#include "fepRecords.h"
#include "recordWalk.h"

// The fields of the front-end records, in wire order. recordWalk.h describes what a walk does with them. When reading,
// a walk returns false if the buffer is too short or a text is incomplete. Internal.
namespace gqdb {

[[gnu::always_inline]] inline bool walk(CRecordWalk& w, NodeHead& head)
{
    if (!w.holds(25))
        return false;
    w.word("nodeId", head.nodeId);
    if (!w.text("text1", head.text1) || !w.text("text2", head.text2) || !w.text("text3", head.text3) ||
        !w.text("text4", head.text4) || !w.holds(24))
        return false;
    w.word("word1", head.word1); // before flag1 on the wire
    w.byte("flag1", head.flag1);
    w.byte("flag2", head.flag2);
    w.byte("flag3", head.flag3);
    w.byte("flag4", head.flag4);
    w.word("word2", head.word2);
    w.word("word3", head.word3);
    w.word("word4", head.word4);
    w.word("word5", head.word5);
    return w.text("text5", head.text5) && w.text("text6", head.text6);
}

// Not for reading: byte2CommItem reads the same fields with its own arithmetic.
[[gnu::always_inline]] inline void walk(CRecordWalk& w, CommItem& item)
{
    w.word("commId", item.commId);
    w.text("text1", item.text1);
    w.text("text2", item.text2);
    w.text("text3", item.text3); // before flag1 on the wire
    w.byte("flag1", item.flag1);
    w.byte("flag2", item.flag2);
    w.text("text4", item.text4);
    w.word("word1", item.word1);
    w.text("text5", item.text5);
}

[[gnu::always_inline]] inline bool walk(CRecordWalk& w, YcItem& item)
{
    if (!w.holds(31))
        return false;
    w.byte("flag1", item.flag1);
    w.word("itemId", item.itemId);
    if (!w.text("text1", item.text1) || !w.text("text2", item.text2) || !w.text("text3", item.text3) ||
        !w.text("text4", item.text4) || !w.holds(32))
        return false;
    w.byte("flag2", item.flag2);
    w.word("word1", item.word1);
    w.word("word2", item.word2);
    w.byte("flag3", item.flag3);
    w.real("coef1", item.coef1);
    w.real("coef2", item.coef2);
    w.real("coef3", item.coef3);
    w.real("coef4", item.coef4);
    w.word("word3", item.word3);
    w.byte("flag4", item.flag4);
    w.byte("flag5", item.flag5);
    return w.text("text5", item.text5);
}

[[gnu::always_inline]] inline bool walk(CRecordWalk& w, YxItem& item)
{
    if (!w.holds(24))
        return false;
    w.word("itemId", item.itemId);
    if (!w.text("text1", item.text1) || !w.text("text2", item.text2) || !w.text("text3", item.text3) || !w.holds(18))
        return false;
    w.byte("flag1", item.flag1);
    w.word("word1", item.word1);
    w.word("word2", item.word2);
    w.byte("flag2", item.flag2);
    w.word("word3", item.word3);
    w.byte("flag3", item.flag3);
    w.byte("flag4", item.flag4);
    w.byte("flag5", item.flag5);
    w.byte("flag6", item.flag6);
    return w.text("text4", item.text4);
}

[[gnu::always_inline]] inline bool walk(CRecordWalk& w, YdItem& item)
{
    if (!w.holds(48))
        return false;
    w.byte("flag1", item.flag1);
    w.word("itemId", item.itemId);
    if (!w.text("text1", item.text1) || !w.text("text2", item.text2) || !w.text("text3", item.text3) ||
        !w.text("text4", item.text4) || !w.holds(42))
        return false;
    w.byte("flag2", item.flag2);
    w.byte("flag3", item.flag3);
    w.word("word1", item.word1);
    w.word("word2", item.word2);
    w.byte("flag4", item.flag4);
    w.byte("flag5", item.flag5);
    w.byte("flag6", item.flag6);
    w.byte("flag7", item.flag7);
    w.real("float1", item.float1);
    w.real("float2", item.float2);
    w.word("word3", item.word3);
    w.real("float3", item.float3);
    w.real("float4", item.float4);
    w.word("word4", item.word4);
    w.word("word5", item.word5);
    return w.text("text5", item.text5);
}

[[gnu::always_inline]] inline bool walk(CRecordWalk& w, YbItem& item)
{
    if (!w.holds(21))
        return false;
    w.word("itemId", item.itemId);
    if (!w.text("text1", item.text1) || !w.text("text2", item.text2) || !w.text("text3", item.text3) || !w.holds(11))
        return false;
    if (w.isWrittenForm())
        w.byte("flag1", item.flag1); // peers whose records are read here leave this byte out
    w.word("word1", item.word1);
    w.word("word2", item.word2);
    w.byte("flag2", item.flag2);
    return w.text("text4", item.text4);
}

} // namespace gqdb
