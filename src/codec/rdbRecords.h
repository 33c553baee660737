#pragma once

#include "gqLibExport.h"

#include <string>
#include <vector>

// Records of the real-time database: plain data, which CByte2Rdb converts without interpreting it. Strings hold raw
// bytes. Fields are declared in an order that is not always that on the wire, which byte2Rdb.h documents. Each starts
// at zero or empty unless it says otherwise. A field marked 'unset' is deliberately not initialised: set it before
// use.
namespace gqdb {

// --- Point definitions --------------------------------------------------------------------------------------------

// The short form of a point.
struct PointInfo {
    char pointKind = 0; // not on the wire
    unsigned int pointId = 0;
    std::string text1;
    std::string text2;
    unsigned int code1 = 0;
    unsigned int code2 = 0;
};

// A point with a floating-point value.
struct FloatPoint {
    FloatPoint() {} // user-provided, so that T() leaves code2 unset too

    unsigned int pointId = 0;
    std::string text1;
    unsigned int code1 = 0;
    std::string text2;
    std::string text3;
    std::string text4;
    unsigned int code2; // unset
    unsigned int code3 = 0;
    unsigned int code4 = 0;
    std::string text5;
    char switch1 = 1;
    float float1 = 0.05f;
    char switch2 = 0;
    unsigned int code5 = 0;
    unsigned int code6 = 0;
    float float2 = 0;
    unsigned int code7 = 0;
    float levels[8] = {};
};

// A point with an integer value.
struct IntPoint {
    IntPoint() {} // user-provided, so that T() leaves code2 unset too

    unsigned int pointId = 0;
    std::string text1;
    unsigned int code1 = 0;
    std::string text2;
    std::string text3;
    std::string text4;
    unsigned int code2; // unset
    unsigned int code3 = 0;
    char switch0 = 0; // written, but never read
    unsigned int code4 = 0;
    std::string text5;
    char switch1 = 1;
    char switch2 = 0;
    unsigned int code5 = 0;
    unsigned int code6 = 0;
    unsigned int code7 = 0;
    unsigned int code8 = 0;
    int levels[8] = {};
};

// A two-state point.
struct BoolPoint {
    BoolPoint() {} // user-provided, so that T() leaves code4 unset too

    unsigned int pointId = 0;
    std::string text1;
    unsigned int code1 = 0;
    std::string text2;
    std::string text3;
    unsigned int code2 = 0;
    unsigned int code3 = 0;
    unsigned int code4; // unset
    std::string text5;
    char switch1 = 1;
    char switch2 = 0;
    unsigned int code5 = 0;
    unsigned int code6 = 0;
    char switch3 = 0;
};

// A point whose value is a blob.
struct BlobPoint {
    BlobPoint() {} // user-provided, so that T() leaves code4 unset too

    unsigned int pointId = 0;
    std::string text1;
    unsigned int code1 = 0;
    std::string text2;
    std::string text3;
    std::string text4;
    unsigned int code2 = 0;
    unsigned int code3 = 0;
    unsigned int code4; // unset
    std::string text5;
    char switch1 = 1;
    char switch2 = 0;
    unsigned int code5 = 0;
    unsigned int code6 = 0;
};

// --- Values: a RealData is keyed by its point, a Data is the same without the key ---------------------------------

// A value of a FloatPoint.
struct FloatRealData {
    unsigned int pointId = 0;
    unsigned int stamp1 = 0;
    unsigned int stamp2 = 0;
    float value = 0;
    char flag1 = 0;
    char flag2 = 0;
};

// The same without its point.
struct FloatData {
    unsigned int stamp1 = 0;
    unsigned int stamp2 = 0;
    float value = 0;
    char flag1 = 0;
    char flag2 = 0;
};

// A value of a BoolPoint.
struct BoolRealData {
    unsigned int pointId = 0;
    unsigned int stamp1 = 0;
    unsigned int stamp2 = 0;
    char value = 0;
    char flag1 = 0;
};

// The same without its point.
struct BoolData {
    unsigned int stamp1 = 0;
    unsigned int stamp2 = 0;
    char value = 0;
    char flag1 = 0;
};

// A value of an IntPoint.
struct IntRealData {
    unsigned int pointId = 0;
    unsigned int stamp1 = 0;
    unsigned int stamp2 = 0;
    int value = 0;
    char flag1 = 0;
    char flag2 = 0;
};

// The same without its point.
struct IntData {
    unsigned int stamp1 = 0;
    unsigned int stamp2 = 0;
    int value = 0;
    char flag1 = 0;
    char flag2 = 0;
};

// One record type for every numeric point.
struct PointRealData {
    char pointKind = 0;
    unsigned int pointId = 0;
    unsigned int stamp1 = 0;
    unsigned int stamp2 = 0;
    double value = 0;
    unsigned int intValue = 0;
    char flag1 = 0;
    char flag2 = 0;
};

// A blob value's metadata.
struct BlobDataInfo {
    unsigned int pointId = 0;
    unsigned int stamp1 = 0;
    unsigned int stamp2 = 0;
    unsigned int word4 = 0;
    char flag1 = 0;
    char flag2 = 0;
};

// A value of a BlobPoint.
struct BlobRealData {
    unsigned int pointId = 0;
    unsigned int stamp1 = 0;
    unsigned int stamp2 = 0;
    std::vector<unsigned char> bytes;
    char flag1 = 0;
    char flag2 = 0;
};

// The same without its point. Only blob2List reads it, in lists.
struct BlobData {
    unsigned int stamp1 = 0;
    unsigned int stamp2 = 0;
    std::vector<unsigned char> bytes;
    char flag1 = 0;
    char flag2 = 0;
};

// --- Queries and events -------------------------------------------------------------------------------------------

// A query that can be read but not written; byte2Rdb.h describes how to send one.
struct HisQuery {
    unsigned int pointId = 0;
    std::string text1; // not on the wire
    unsigned int word1 = 0;
    unsigned int word2 = 0;
    unsigned int word3 = 0;
    unsigned int word4 = 0;
    unsigned int word5 = 0;
    unsigned int word6 = 0;
};

// A query with a text. It is read only if a byte follows it.
struct OneSecQuery {
    unsigned int pointId = 0;
    std::string text1;
    unsigned int word1 = 0;
    unsigned int word2 = 0;
    unsigned int word3 = 0;
    unsigned int word4 = 0;
};

// An event with its texts and its value.
struct EventInfo {
    unsigned int word1 = 0;
    unsigned int word2 = 0;
    unsigned int word3 = 0;
    unsigned int word4 = 0;
    char switch1 = 0;
    std::string text1;
    char switch2 = 0;
    unsigned int word5 = 0;
    double value = 0;
    unsigned int word6 = 0;
    unsigned int word7 = 0;
    unsigned int word8 = 0;
    std::string text2;
    char switch3 = 0;
    unsigned int word9 = 0;
    unsigned int word10 = 0;
    unsigned int word11 = 0; // not on the wire
    unsigned int word12 = 0; // not on the wire
    unsigned int word13 = 0;
};

// The state of an event, without text and value.
struct EventState {
    unsigned int word1 = 0;
    char switch1 = 0;
    unsigned int word2 = 0;
    unsigned int word3 = 0;
    unsigned int word4 = 0;
};

// --- Objects ------------------------------------------------------------------------------------------------------

// A tagged value. The four values are separate fields; `kind` selects one: 0 intValue, 5 floatValue, 6 doubleValue,
// 10 textValue, 11 intValue as unsigned seconds since 1970.
struct Variant {
    unsigned char kind = 0;
    int intValue = 0;
    float floatValue = 0;
    double doubleValue = 0;
    std::string textValue;
};

// A property of an object: its value, the value as text, and the format of that text.
struct PropertyData {
    int word1 = 0;
    int word2 = 0;
    std::string formatText; // of a date and time, as QDateTime::toString takes it
    std::string valueText;
    Variant value;
};

// An object: numbers, texts and a list of properties.
struct ObjectData {
    int word1 = 0;
    int word2 = 0;
    int word3 = 0;
    int word4 = 0;
    std::string text1;
    std::string text2;
    std::string text3;
    std::vector<PropertyData> properties;
};

// --- Waves --------------------------------------------------------------------------------------------------------

// Head of a stored wave: 96 bytes, stored as they are in memory.
struct BlobWaveHead {
    unsigned char headByte = 0;       //  0 for the caller, copied unchanged
    unsigned char waveFlags = 0;      //  1 bit 0 signed raw samples, bit 1 quantised samples, bit 2 compressed
    unsigned char headFill1[30] = {}; //  2 for the caller, copied unchanged
    double limitHigh = 0;             // 32 largest sample; for raw samples, the scale
    double limitLow = 0;              // 40 smallest sample; for raw samples, the offset
    unsigned int sampleCount = 0;     // 48 set on writing, not used on reading
    unsigned int markCount = 0;       // 52 set on writing, used on reading
    unsigned char headFill2[40] = {}; // 56 for the caller, copied unchanged
};

} // namespace gqdb
