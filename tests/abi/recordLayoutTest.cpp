// The records as programs built against version 1 use them. The first position is that with 64-bit pointers, the second
// that with 32-bit ones. Nothing runs: a different record does not compile.

#include "byte2Fep.h"
#include "byte2Rdb.h"

#include <cstddef>

using namespace gqdb;

static constexpr size_t here(size_t wide, size_t narrow)
{
    return sizeof(void*) == 8 ? wide : narrow;
}

#define SIZE(record, wide, narrow) static_assert(sizeof(record) == here(wide, narrow), #record " has another size")
#define AT(record, field, wide, narrow)                                                                                \
    static_assert(offsetof(record, field) == here(wide, narrow), #record "::" #field " has moved")

// --- Records of the database ----------------------------------------------------------------------------------------

SIZE(PointInfo, 80, 64);
AT(PointInfo, pointKind, 0, 0);
AT(PointInfo, pointId, 4, 4);
AT(PointInfo, text1, 8, 8);
AT(PointInfo, text2, 40, 32);
AT(PointInfo, code1, 72, 56);
AT(PointInfo, code2, 76, 60);

SIZE(FloatPoint, 256, 200);
AT(FloatPoint, pointId, 0, 0);
AT(FloatPoint, text1, 8, 4);
AT(FloatPoint, code1, 40, 28);
AT(FloatPoint, text2, 48, 32);
AT(FloatPoint, text3, 80, 56);
AT(FloatPoint, text4, 112, 80);
AT(FloatPoint, code2, 144, 104);
AT(FloatPoint, code3, 148, 108);
AT(FloatPoint, code4, 152, 112);
AT(FloatPoint, text5, 160, 116);
AT(FloatPoint, switch1, 192, 140);
AT(FloatPoint, float1, 196, 144);
AT(FloatPoint, switch2, 200, 148);
AT(FloatPoint, code5, 204, 152);
AT(FloatPoint, code6, 208, 156);
AT(FloatPoint, float2, 212, 160);
AT(FloatPoint, code7, 216, 164);
AT(FloatPoint, levels, 220, 168);

SIZE(IntPoint, 248, 196);
AT(IntPoint, pointId, 0, 0);
AT(IntPoint, text1, 8, 4);
AT(IntPoint, code1, 40, 28);
AT(IntPoint, text2, 48, 32);
AT(IntPoint, text3, 80, 56);
AT(IntPoint, text4, 112, 80);
AT(IntPoint, code2, 144, 104);
AT(IntPoint, code3, 148, 108);
AT(IntPoint, switch0, 152, 112);
AT(IntPoint, code4, 156, 116);
AT(IntPoint, text5, 160, 120);
AT(IntPoint, switch1, 192, 144);
AT(IntPoint, switch2, 193, 145);
AT(IntPoint, code5, 196, 148);
AT(IntPoint, code6, 200, 152);
AT(IntPoint, code7, 204, 156);
AT(IntPoint, code8, 208, 160);
AT(IntPoint, levels, 212, 164);

SIZE(BoolPoint, 176, 132);
AT(BoolPoint, pointId, 0, 0);
AT(BoolPoint, text1, 8, 4);
AT(BoolPoint, code1, 40, 28);
AT(BoolPoint, text2, 48, 32);
AT(BoolPoint, text3, 80, 56);
AT(BoolPoint, code2, 112, 80);
AT(BoolPoint, code3, 116, 84);
AT(BoolPoint, code4, 120, 88);
AT(BoolPoint, text5, 128, 92);
AT(BoolPoint, switch1, 160, 116);
AT(BoolPoint, switch2, 161, 117);
AT(BoolPoint, code5, 164, 120);
AT(BoolPoint, code6, 168, 124);
AT(BoolPoint, switch3, 172, 128);

SIZE(BlobPoint, 208, 152);
AT(BlobPoint, pointId, 0, 0);
AT(BlobPoint, text1, 8, 4);
AT(BlobPoint, code1, 40, 28);
AT(BlobPoint, text2, 48, 32);
AT(BlobPoint, text3, 80, 56);
AT(BlobPoint, text4, 112, 80);
AT(BlobPoint, code2, 144, 104);
AT(BlobPoint, code3, 148, 108);
AT(BlobPoint, code4, 152, 112);
AT(BlobPoint, text5, 160, 116);
AT(BlobPoint, switch1, 192, 140);
AT(BlobPoint, switch2, 193, 141);
AT(BlobPoint, code5, 196, 144);
AT(BlobPoint, code6, 200, 148);

SIZE(FloatRealData, 20, 20);
AT(FloatRealData, pointId, 0, 0);
AT(FloatRealData, stamp1, 4, 4);
AT(FloatRealData, stamp2, 8, 8);
AT(FloatRealData, value, 12, 12);
AT(FloatRealData, flag1, 16, 16);
AT(FloatRealData, flag2, 17, 17);

SIZE(FloatData, 16, 16);
AT(FloatData, stamp1, 0, 0);
AT(FloatData, stamp2, 4, 4);
AT(FloatData, value, 8, 8);
AT(FloatData, flag1, 12, 12);
AT(FloatData, flag2, 13, 13);

SIZE(BoolRealData, 16, 16);
AT(BoolRealData, pointId, 0, 0);
AT(BoolRealData, stamp1, 4, 4);
AT(BoolRealData, stamp2, 8, 8);
AT(BoolRealData, value, 12, 12);
AT(BoolRealData, flag1, 13, 13);

SIZE(BoolData, 12, 12);
AT(BoolData, stamp1, 0, 0);
AT(BoolData, stamp2, 4, 4);
AT(BoolData, value, 8, 8);
AT(BoolData, flag1, 9, 9);

SIZE(IntRealData, 20, 20);
AT(IntRealData, pointId, 0, 0);
AT(IntRealData, stamp1, 4, 4);
AT(IntRealData, stamp2, 8, 8);
AT(IntRealData, value, 12, 12);
AT(IntRealData, flag1, 16, 16);
AT(IntRealData, flag2, 17, 17);

SIZE(IntData, 16, 16);
AT(IntData, stamp1, 0, 0);
AT(IntData, stamp2, 4, 4);
AT(IntData, value, 8, 8);
AT(IntData, flag1, 12, 12);
AT(IntData, flag2, 13, 13);

SIZE(PointRealData, 32, 32);
AT(PointRealData, pointKind, 0, 0);
AT(PointRealData, pointId, 4, 4);
AT(PointRealData, stamp1, 8, 8);
AT(PointRealData, stamp2, 12, 12);
AT(PointRealData, value, 16, 16);
AT(PointRealData, intValue, 24, 24);
AT(PointRealData, flag1, 28, 28);
AT(PointRealData, flag2, 29, 29);

SIZE(BlobDataInfo, 20, 20);
AT(BlobDataInfo, pointId, 0, 0);
AT(BlobDataInfo, stamp1, 4, 4);
AT(BlobDataInfo, stamp2, 8, 8);
AT(BlobDataInfo, word4, 12, 12);
AT(BlobDataInfo, flag1, 16, 16);
AT(BlobDataInfo, flag2, 17, 17);

SIZE(BlobRealData, 48, 28);
AT(BlobRealData, pointId, 0, 0);
AT(BlobRealData, stamp1, 4, 4);
AT(BlobRealData, stamp2, 8, 8);
AT(BlobRealData, bytes, 16, 12);
AT(BlobRealData, flag1, 40, 24);
AT(BlobRealData, flag2, 41, 25);

SIZE(BlobData, 40, 24);
AT(BlobData, stamp1, 0, 0);
AT(BlobData, stamp2, 4, 4);
AT(BlobData, bytes, 8, 8);
AT(BlobData, flag1, 32, 20);
AT(BlobData, flag2, 33, 21);

SIZE(HisQuery, 64, 52);
AT(HisQuery, pointId, 0, 0);
AT(HisQuery, text1, 8, 4);
AT(HisQuery, word1, 40, 28);
AT(HisQuery, word2, 44, 32);
AT(HisQuery, word3, 48, 36);
AT(HisQuery, word4, 52, 40);
AT(HisQuery, word5, 56, 44);
AT(HisQuery, word6, 60, 48);

SIZE(OneSecQuery, 56, 44);
AT(OneSecQuery, pointId, 0, 0);
AT(OneSecQuery, text1, 8, 4);
AT(OneSecQuery, word1, 40, 28);
AT(OneSecQuery, word2, 44, 32);
AT(OneSecQuery, word3, 48, 36);
AT(OneSecQuery, word4, 52, 40);

SIZE(EventInfo, 144, 128);
AT(EventInfo, word1, 0, 0);
AT(EventInfo, word2, 4, 4);
AT(EventInfo, word3, 8, 8);
AT(EventInfo, word4, 12, 12);
AT(EventInfo, switch1, 16, 16);
AT(EventInfo, text1, 24, 20);
AT(EventInfo, switch2, 56, 44);
AT(EventInfo, word5, 60, 48);
AT(EventInfo, value, 64, 56);
AT(EventInfo, word6, 72, 64);
AT(EventInfo, word7, 76, 68);
AT(EventInfo, word8, 80, 72);
AT(EventInfo, text2, 88, 76);
AT(EventInfo, switch3, 120, 100);
AT(EventInfo, word9, 124, 104);
AT(EventInfo, word10, 128, 108);
AT(EventInfo, word11, 132, 112);
AT(EventInfo, word12, 136, 116);
AT(EventInfo, word13, 140, 120);

SIZE(EventState, 20, 20);
AT(EventState, word1, 0, 0);
AT(EventState, switch1, 4, 4);
AT(EventState, word2, 8, 8);
AT(EventState, word3, 12, 12);
AT(EventState, word4, 16, 16);

SIZE(Variant, 56, 48);
AT(Variant, kind, 0, 0);
AT(Variant, intValue, 4, 4);
AT(Variant, floatValue, 8, 8);
AT(Variant, doubleValue, 16, 16);
AT(Variant, textValue, 24, 24);

SIZE(PropertyData, 128, 104);
AT(PropertyData, word1, 0, 0);
AT(PropertyData, word2, 4, 4);
AT(PropertyData, formatText, 8, 8);
AT(PropertyData, valueText, 40, 32);
AT(PropertyData, value, 72, 56);

SIZE(ObjectData, 136, 100);
AT(ObjectData, word1, 0, 0);
AT(ObjectData, word2, 4, 4);
AT(ObjectData, word3, 8, 8);
AT(ObjectData, word4, 12, 12);
AT(ObjectData, text1, 16, 16);
AT(ObjectData, text2, 48, 40);
AT(ObjectData, text3, 80, 64);
AT(ObjectData, properties, 112, 88);

// --- Records of the front-end processors ----------------------------------------------------------------------------

SIZE(NodeHead, 88, 56);
AT(NodeHead, nodeId, 0, 0);
AT(NodeHead, text1, 8, 4);
AT(NodeHead, text2, 16, 8);
AT(NodeHead, text3, 24, 12);
AT(NodeHead, text4, 32, 16);
AT(NodeHead, flag1, 40, 20);
AT(NodeHead, word1, 44, 24);
AT(NodeHead, flag2, 48, 28);
AT(NodeHead, flag3, 49, 29);
AT(NodeHead, flag4, 50, 30);
AT(NodeHead, word2, 52, 32);
AT(NodeHead, word3, 56, 36);
AT(NodeHead, word4, 60, 40);
AT(NodeHead, word5, 64, 44);
AT(NodeHead, text5, 72, 48);
AT(NodeHead, text6, 80, 52);

SIZE(CommItem, 88, 56);
AT(CommItem, commId, 0, 0);
AT(CommItem, text1, 8, 4);
AT(CommItem, text2, 16, 8);
AT(CommItem, flag1, 24, 12);
AT(CommItem, text3, 32, 16);
AT(CommItem, flag2, 40, 20);
AT(CommItem, text4, 48, 24);
AT(CommItem, word1, 56, 28);
AT(CommItem, flag3, 60, 32);
AT(CommItem, state1, 64, 36);
AT(CommItem, state2, 68, 40);
AT(CommItem, state3, 72, 44);
AT(CommItem, state4, 76, 48);
AT(CommItem, text5, 80, 52);

SIZE(YcItem, 104, 80);
AT(YcItem, flag1, 0, 0);
AT(YcItem, itemId, 4, 4);
AT(YcItem, text1, 8, 8);
AT(YcItem, text2, 16, 12);
AT(YcItem, text3, 24, 16);
AT(YcItem, text4, 32, 20);
AT(YcItem, flag2, 40, 24);
AT(YcItem, word1, 44, 28);
AT(YcItem, word2, 48, 32);
AT(YcItem, flag3, 52, 36);
AT(YcItem, coef1, 56, 40);
AT(YcItem, coef2, 60, 44);
AT(YcItem, coef3, 64, 48);
AT(YcItem, coef4, 68, 52);
AT(YcItem, word3, 72, 56);
AT(YcItem, flag4, 76, 60);
AT(YcItem, flag5, 77, 61);
AT(YcItem, text5, 80, 64);
AT(YcItem, state1, 88, 68);
AT(YcItem, state2, 92, 72);
AT(YcItem, state3, 96, 76);

SIZE(YxItem, 80, 56);
AT(YxItem, itemId, 0, 0);
AT(YxItem, text1, 8, 4);
AT(YxItem, text2, 16, 8);
AT(YxItem, text3, 24, 12);
AT(YxItem, flag1, 32, 16);
AT(YxItem, word1, 36, 20);
AT(YxItem, word2, 40, 24);
AT(YxItem, flag2, 44, 28);
AT(YxItem, word3, 48, 32);
AT(YxItem, flag3, 52, 36);
AT(YxItem, flag4, 53, 37);
AT(YxItem, flag5, 54, 38);
AT(YxItem, flag6, 55, 39);
AT(YxItem, text4, 56, 40);
AT(YxItem, state1, 64, 44);
AT(YxItem, state2, 68, 48);
AT(YxItem, state3, 72, 52);

SIZE(YdItem, 96, 72);
AT(YdItem, flag1, 0, 0);
AT(YdItem, itemId, 4, 4);
AT(YdItem, text1, 8, 8);
AT(YdItem, text2, 16, 12);
AT(YdItem, text3, 24, 16);
AT(YdItem, text4, 32, 20);
AT(YdItem, flag2, 40, 24);
AT(YdItem, flag3, 41, 25);
AT(YdItem, word1, 44, 28);
AT(YdItem, word2, 48, 32);
AT(YdItem, flag4, 52, 36);
AT(YdItem, flag5, 53, 37);
AT(YdItem, flag6, 54, 38);
AT(YdItem, flag7, 55, 39);
AT(YdItem, float1, 56, 40);
AT(YdItem, float2, 60, 44);
AT(YdItem, word3, 64, 48);
AT(YdItem, float3, 68, 52);
AT(YdItem, float4, 72, 56);
AT(YdItem, word4, 76, 60);
AT(YdItem, word5, 80, 64);
AT(YdItem, text5, 88, 68);

SIZE(YbItem, 72, 48);
AT(YbItem, itemId, 0, 0);
AT(YbItem, text1, 8, 4);
AT(YbItem, text2, 16, 8);
AT(YbItem, text3, 24, 12);
AT(YbItem, flag1, 32, 16);
AT(YbItem, word1, 36, 20);
AT(YbItem, word2, 40, 24);
AT(YbItem, flag2, 44, 28);
AT(YbItem, text4, 48, 32);
AT(YbItem, state1, 56, 36);
AT(YbItem, state2, 60, 40);
AT(YbItem, state3, 64, 44);
