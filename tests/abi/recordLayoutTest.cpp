// The records as programs built against version 1 use them, on 64-bit Linux. Nothing runs: a different record does
// not compile.

#include "byte2Fep.h"
#include "byte2Rdb.h"

#include <cstddef>

using namespace gqdb;

#define AT(record, field, position)                                                                                    \
    static_assert(offsetof(record, field) == (position), #record "::" #field " has moved")

// --- Records of the database ----------------------------------------------------------------------------------------

static_assert(sizeof(PointInfo) == 80);
AT(PointInfo, pointKind, 0);
AT(PointInfo, pointId, 4);
AT(PointInfo, text1, 8);
AT(PointInfo, text2, 40);
AT(PointInfo, code1, 72);
AT(PointInfo, code2, 76);

static_assert(sizeof(FloatPoint) == 256);
AT(FloatPoint, pointId, 0);
AT(FloatPoint, text1, 8);
AT(FloatPoint, code1, 40);
AT(FloatPoint, text2, 48);
AT(FloatPoint, text3, 80);
AT(FloatPoint, text4, 112);
AT(FloatPoint, code2, 144);
AT(FloatPoint, code3, 148);
AT(FloatPoint, code4, 152);
AT(FloatPoint, text5, 160);
AT(FloatPoint, switch1, 192);
AT(FloatPoint, float1, 196);
AT(FloatPoint, switch2, 200);
AT(FloatPoint, code5, 204);
AT(FloatPoint, code6, 208);
AT(FloatPoint, float2, 212);
AT(FloatPoint, code7, 216);
AT(FloatPoint, levels, 220);

static_assert(sizeof(IntPoint) == 248);
AT(IntPoint, pointId, 0);
AT(IntPoint, text1, 8);
AT(IntPoint, code1, 40);
AT(IntPoint, text2, 48);
AT(IntPoint, text3, 80);
AT(IntPoint, text4, 112);
AT(IntPoint, code2, 144);
AT(IntPoint, code3, 148);
AT(IntPoint, switch0, 152);
AT(IntPoint, code4, 156);
AT(IntPoint, text5, 160);
AT(IntPoint, switch1, 192);
AT(IntPoint, switch2, 193);
AT(IntPoint, code5, 196);
AT(IntPoint, code6, 200);
AT(IntPoint, code7, 204);
AT(IntPoint, code8, 208);
AT(IntPoint, levels, 212);

static_assert(sizeof(BoolPoint) == 176);
AT(BoolPoint, pointId, 0);
AT(BoolPoint, text1, 8);
AT(BoolPoint, code1, 40);
AT(BoolPoint, text2, 48);
AT(BoolPoint, text3, 80);
AT(BoolPoint, code2, 112);
AT(BoolPoint, code3, 116);
AT(BoolPoint, code4, 120);
AT(BoolPoint, text5, 128);
AT(BoolPoint, switch1, 160);
AT(BoolPoint, switch2, 161);
AT(BoolPoint, code5, 164);
AT(BoolPoint, code6, 168);
AT(BoolPoint, switch3, 172);

static_assert(sizeof(BlobPoint) == 208);
AT(BlobPoint, pointId, 0);
AT(BlobPoint, text1, 8);
AT(BlobPoint, code1, 40);
AT(BlobPoint, text2, 48);
AT(BlobPoint, text3, 80);
AT(BlobPoint, text4, 112);
AT(BlobPoint, code2, 144);
AT(BlobPoint, code3, 148);
AT(BlobPoint, code4, 152);
AT(BlobPoint, text5, 160);
AT(BlobPoint, switch1, 192);
AT(BlobPoint, switch2, 193);
AT(BlobPoint, code5, 196);
AT(BlobPoint, code6, 200);

static_assert(sizeof(FloatRealData) == 20);
AT(FloatRealData, pointId, 0);
AT(FloatRealData, stamp1, 4);
AT(FloatRealData, stamp2, 8);
AT(FloatRealData, value, 12);
AT(FloatRealData, flag1, 16);
AT(FloatRealData, flag2, 17);

static_assert(sizeof(FloatData) == 16);
AT(FloatData, stamp1, 0);
AT(FloatData, stamp2, 4);
AT(FloatData, value, 8);
AT(FloatData, flag1, 12);
AT(FloatData, flag2, 13);

static_assert(sizeof(BoolRealData) == 16);
AT(BoolRealData, pointId, 0);
AT(BoolRealData, stamp1, 4);
AT(BoolRealData, stamp2, 8);
AT(BoolRealData, value, 12);
AT(BoolRealData, flag1, 13);

static_assert(sizeof(BoolData) == 12);
AT(BoolData, stamp1, 0);
AT(BoolData, stamp2, 4);
AT(BoolData, value, 8);
AT(BoolData, flag1, 9);

static_assert(sizeof(IntRealData) == 20);
AT(IntRealData, pointId, 0);
AT(IntRealData, stamp1, 4);
AT(IntRealData, stamp2, 8);
AT(IntRealData, value, 12);
AT(IntRealData, flag1, 16);
AT(IntRealData, flag2, 17);

static_assert(sizeof(IntData) == 16);
AT(IntData, stamp1, 0);
AT(IntData, stamp2, 4);
AT(IntData, value, 8);
AT(IntData, flag1, 12);
AT(IntData, flag2, 13);

static_assert(sizeof(PointRealData) == 32);
AT(PointRealData, pointKind, 0);
AT(PointRealData, pointId, 4);
AT(PointRealData, stamp1, 8);
AT(PointRealData, stamp2, 12);
AT(PointRealData, value, 16);
AT(PointRealData, intValue, 24);
AT(PointRealData, flag1, 28);
AT(PointRealData, flag2, 29);

static_assert(sizeof(BlobDataInfo) == 20);
AT(BlobDataInfo, pointId, 0);
AT(BlobDataInfo, stamp1, 4);
AT(BlobDataInfo, stamp2, 8);
AT(BlobDataInfo, word4, 12);
AT(BlobDataInfo, flag1, 16);
AT(BlobDataInfo, flag2, 17);

static_assert(sizeof(BlobRealData) == 48);
AT(BlobRealData, pointId, 0);
AT(BlobRealData, stamp1, 4);
AT(BlobRealData, stamp2, 8);
AT(BlobRealData, bytes, 16);
AT(BlobRealData, flag1, 40);
AT(BlobRealData, flag2, 41);

static_assert(sizeof(BlobData) == 40);
AT(BlobData, stamp1, 0);
AT(BlobData, stamp2, 4);
AT(BlobData, bytes, 8);
AT(BlobData, flag1, 32);
AT(BlobData, flag2, 33);

static_assert(sizeof(HisQuery) == 64);
AT(HisQuery, pointId, 0);
AT(HisQuery, text1, 8);
AT(HisQuery, word1, 40);
AT(HisQuery, word2, 44);
AT(HisQuery, word3, 48);
AT(HisQuery, word4, 52);
AT(HisQuery, word5, 56);
AT(HisQuery, word6, 60);

static_assert(sizeof(OneSecQuery) == 56);
AT(OneSecQuery, pointId, 0);
AT(OneSecQuery, text1, 8);
AT(OneSecQuery, word1, 40);
AT(OneSecQuery, word2, 44);
AT(OneSecQuery, word3, 48);
AT(OneSecQuery, word4, 52);

static_assert(sizeof(EventInfo) == 144);
AT(EventInfo, word1, 0);
AT(EventInfo, word2, 4);
AT(EventInfo, word3, 8);
AT(EventInfo, word4, 12);
AT(EventInfo, switch1, 16);
AT(EventInfo, text1, 24);
AT(EventInfo, switch2, 56);
AT(EventInfo, word5, 60);
AT(EventInfo, value, 64);
AT(EventInfo, word6, 72);
AT(EventInfo, word7, 76);
AT(EventInfo, word8, 80);
AT(EventInfo, text2, 88);
AT(EventInfo, switch3, 120);
AT(EventInfo, word9, 124);
AT(EventInfo, word10, 128);
AT(EventInfo, word11, 132);
AT(EventInfo, word12, 136);
AT(EventInfo, word13, 140);

static_assert(sizeof(EventState) == 20);
AT(EventState, word1, 0);
AT(EventState, switch1, 4);
AT(EventState, word2, 8);
AT(EventState, word3, 12);
AT(EventState, word4, 16);

static_assert(sizeof(Variant) == 56);
AT(Variant, kind, 0);
AT(Variant, intValue, 4);
AT(Variant, floatValue, 8);
AT(Variant, doubleValue, 16);
AT(Variant, textValue, 24);

static_assert(sizeof(PropertyData) == 128);
AT(PropertyData, word1, 0);
AT(PropertyData, word2, 4);
AT(PropertyData, formatText, 8);
AT(PropertyData, valueText, 40);
AT(PropertyData, value, 72);

static_assert(sizeof(ObjectData) == 136);
AT(ObjectData, word1, 0);
AT(ObjectData, word2, 4);
AT(ObjectData, word3, 8);
AT(ObjectData, word4, 12);
AT(ObjectData, text1, 16);
AT(ObjectData, text2, 48);
AT(ObjectData, text3, 80);
AT(ObjectData, properties, 112);

// --- Records of the front-end processors ----------------------------------------------------------------------------

static_assert(sizeof(NodeHead) == 88);
AT(NodeHead, nodeId, 0);
AT(NodeHead, text1, 8);
AT(NodeHead, text2, 16);
AT(NodeHead, text3, 24);
AT(NodeHead, text4, 32);
AT(NodeHead, flag1, 40);
AT(NodeHead, word1, 44);
AT(NodeHead, flag2, 48);
AT(NodeHead, flag3, 49);
AT(NodeHead, flag4, 50);
AT(NodeHead, word2, 52);
AT(NodeHead, word3, 56);
AT(NodeHead, word4, 60);
AT(NodeHead, word5, 64);
AT(NodeHead, text5, 72);
AT(NodeHead, text6, 80);

static_assert(sizeof(CommItem) == 88);
AT(CommItem, commId, 0);
AT(CommItem, text1, 8);
AT(CommItem, text2, 16);
AT(CommItem, flag1, 24);
AT(CommItem, text3, 32);
AT(CommItem, flag2, 40);
AT(CommItem, text4, 48);
AT(CommItem, word1, 56);
AT(CommItem, flag3, 60);
AT(CommItem, state1, 64);
AT(CommItem, state2, 68);
AT(CommItem, state3, 72);
AT(CommItem, state4, 76);
AT(CommItem, text5, 80);

static_assert(sizeof(YcItem) == 104);
AT(YcItem, flag1, 0);
AT(YcItem, itemId, 4);
AT(YcItem, text1, 8);
AT(YcItem, text2, 16);
AT(YcItem, text3, 24);
AT(YcItem, text4, 32);
AT(YcItem, flag2, 40);
AT(YcItem, word1, 44);
AT(YcItem, word2, 48);
AT(YcItem, flag3, 52);
AT(YcItem, coef1, 56);
AT(YcItem, coef2, 60);
AT(YcItem, coef3, 64);
AT(YcItem, coef4, 68);
AT(YcItem, word3, 72);
AT(YcItem, flag4, 76);
AT(YcItem, flag5, 77);
AT(YcItem, text5, 80);
AT(YcItem, state1, 88);
AT(YcItem, state2, 92);
AT(YcItem, state3, 96);

static_assert(sizeof(YxItem) == 80);
AT(YxItem, itemId, 0);
AT(YxItem, text1, 8);
AT(YxItem, text2, 16);
AT(YxItem, text3, 24);
AT(YxItem, flag1, 32);
AT(YxItem, word1, 36);
AT(YxItem, word2, 40);
AT(YxItem, flag2, 44);
AT(YxItem, word3, 48);
AT(YxItem, flag3, 52);
AT(YxItem, flag4, 53);
AT(YxItem, flag5, 54);
AT(YxItem, flag6, 55);
AT(YxItem, text4, 56);
AT(YxItem, state1, 64);
AT(YxItem, state2, 68);
AT(YxItem, state3, 72);

static_assert(sizeof(YdItem) == 96);
AT(YdItem, flag1, 0);
AT(YdItem, itemId, 4);
AT(YdItem, text1, 8);
AT(YdItem, text2, 16);
AT(YdItem, text3, 24);
AT(YdItem, text4, 32);
AT(YdItem, flag2, 40);
AT(YdItem, flag3, 41);
AT(YdItem, word1, 44);
AT(YdItem, word2, 48);
AT(YdItem, flag4, 52);
AT(YdItem, flag5, 53);
AT(YdItem, flag6, 54);
AT(YdItem, flag7, 55);
AT(YdItem, float1, 56);
AT(YdItem, float2, 60);
AT(YdItem, word3, 64);
AT(YdItem, float3, 68);
AT(YdItem, float4, 72);
AT(YdItem, word4, 76);
AT(YdItem, word5, 80);
AT(YdItem, text5, 88);

static_assert(sizeof(YbItem) == 72);
AT(YbItem, itemId, 0);
AT(YbItem, text1, 8);
AT(YbItem, text2, 16);
AT(YbItem, text3, 24);
AT(YbItem, flag1, 32);
AT(YbItem, word1, 36);
AT(YbItem, word2, 40);
AT(YbItem, flag2, 44);
AT(YbItem, text4, 48);
AT(YbItem, state1, 56);
AT(YbItem, state2, 60);
AT(YbItem, state3, 64);
