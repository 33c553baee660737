#pragma once

#include "byte2Val.h"
#include "rdbRecords.h"

namespace gqdb {

// Conversion of the records of the real-time database to and from bytes. All operations are static and stateless: any
// thread may call them on distinct arguments.
//
//   writers  append to `data`, never clear it, report nothing
//   readers  take the first byte, the number of bytes available, and a fresh record: texts are appended to. On failure
//            the fields read so far keep their new values
//
// Values are little-endian and packed. Offsets below are bytes from the start of a record. S1 is the encoded size of
// text1, 2 plus its length, S2 that of text2, and so on. A list is a count (4 bytes) and the items, without gaps.
//
// A failed allocation is passed on to the caller, also that of a list whose count asks for more elements than memory
// holds. An array that was written to then keeps its previous bytes, possibly followed by bytes to discard. A record
// keeps the fields read so far. A list that is appended to keeps its old elements; the new ones are missing, read, or
// read in part.
//
// Result codes differ between the families; docs/guide/records.md compares them.
class GQLIB_EXPORT CByte2Rdb : public CByte2Val {
public:
    CByte2Rdb();
    ~CByte2Rdb();

    // --- Point definitions ---
    //
    // Readers of one record return the bytes consumed, or 0 if the buffer is too short or a text is incomplete.
    // Readers of a list append to it:
    //    1  all items read
    //   -2  fewer than 4 bytes: list unchanged
    //   -2  old size + count overflows 32 bits: list truncated to the low 32 bits of the sum, no item read
    //   -3  an item failed: list cleared, old elements included

    // 0 pointId, 4 text1, 4+S1 code1, 8+S1 text2, 8+S1+S2 code2; 12+S1+S2 bytes. pointKind is not on the wire.
    // The reader needs at least 16 bytes.
    static void pointInfo2Byte(const PointInfo& point, QByteArray& data);
    static int byte2PointInfo(const char* buf, int size, PointInfo& point);
    static void pointInfos2Byte(const std::vector<PointInfo>& list, QByteArray& data);
    static int byte2PointInfos(const char* buf, int size, std::vector<PointInfo>& list);

    // 0 pointId, 4 text1, 4+S1 code1, 8+S1 text2, text3, text4; with A = 8+S1+S2+S3+S4: A code2, A+4 code3, A+8 code4,
    // A+12 text5; with B = A+12+S5: B switch1 (1 byte), B+1 float1, B+5 switch2 (1 byte), B+6 code5, B+10 code6,
    // B+14 float2, B+18 code7, B+22 the eight levels; 74+S1+...+S5 bytes.
    static void floatPoint2Byte(const FloatPoint& point, QByteArray& data);
    static int byte2FloatPoint(const char* buf, int size, FloatPoint& point);
    static void floatPoints2Byte(const std::vector<FloatPoint>& list, QByteArray& data);
    static int byte2FloatPoints(const char* buf, int size, std::vector<FloatPoint>& list);

    // As FloatPoint up to A+4 code3; then A+8 switch0 (1 byte), A+9 code4, A+13 text5; with B = A+13+S5: B switch1,
    // B+1 switch2 (1 byte each), B+2 code5 to code8, B+18 the eight levels; 71+S1+...+S5 bytes.
    // The reader takes another form: without switch0, so that code4 is at A+8 and the rest one byte earlier,
    // 70+S1+...+S5 bytes. It needs at least 81 bytes, one more than its shortest record. It misreads what intPoint2Byte
    // writes from A+8 on: peers whose records are read here leave the byte out.
    static void intPoint2Byte(const IntPoint& point, QByteArray& data);
    static int byte2IntPoint(const char* buf, int size, IntPoint& point);
    static void intPoints2Byte(const std::vector<IntPoint>& list, QByteArray& data);
    static int byte2IntPoints(const char* buf, int size, std::vector<IntPoint>& list);

    // 0 pointId, 4 text1, 4+S1 code1, 8+S1 text2, text3; with A = 8+S1+S2+S3: A code2, A+4 code3, A+8 code4,
    // A+12 text5; with B = A+12+S5: B switch1, B+1 switch2 (1 byte each), B+2 code5, B+6 code6, B+10 switch3 (1 byte);
    // 31+S1+S2+S3+S5 bytes.
    static void boolPoint2Byte(const BoolPoint& point, QByteArray& data);
    static int byte2BoolPoint(const char* buf, int size, BoolPoint& point);
    static void boolPoints2Byte(const std::vector<BoolPoint>& list, QByteArray& data);
    static int byte2BoolPoints(const char* buf, int size, std::vector<BoolPoint>& list);

    // As FloatPoint up to A+12 text5; with B = A+12+S5: B switch1, B+1 switch2 (1 byte each), B+2 code5, B+6 code6;
    // 30+S1+...+S5 bytes.
    static void blobPoint2Byte(const BlobPoint& point, QByteArray& data);
    static int byte2BlobPoint(const char* buf, int size, BlobPoint& point);
    static void blobPoints2Byte(const std::vector<BlobPoint>& list, QByteArray& data);
    static int byte2BlobPoints(const char* buf, int size, std::vector<BlobPoint>& list);

    // --- Values ---
    //
    // Readers of one record return its size, or -5 if the buffer is shorter, with the record unchanged.
    // Readers of a list append to it:
    //    1  all items read
    //   -5  fewer bytes than the list's minimum, or than count and items need: list unchanged
    //   -5  the need overflows 32 bits and so passes that test, but the items do not fit: list resized, no item read
    //   -5  old size + count overflows 32 bits: list truncated to the low 32 bits of the sum, no item read
    // The minimum of the float, bool and int lists includes one item: an empty list, 4 bytes, is refused.

    // 18 bytes: 0 pointId, 4 value, 8 stamp1, 12 stamp2, 16 flag2, 17 flag1 (1 byte each).
    // flag2 precedes flag1 in the two float records only. A list has at least 22 bytes.
    static void floatRealData2Byte(const FloatRealData& record, QByteArray& data);
    static int byte2FloatRealData(const char* buf, int size, FloatRealData& record);
    static void floatRealDatas2Byte(const std::vector<FloatRealData>& list, QByteArray& data);
    static int byte2FloatRealDatas(const char* buf, int size, std::vector<FloatRealData>& list);

    // 14 bytes: 0 value, 4 stamp1, 8 stamp2, 12 flag2, 13 flag1 (1 byte each). A list has at least 18 bytes.
    static void floatData2Byte(const FloatData& record, QByteArray& data);
    static int byte2FloatData(const char* buf, int size, FloatData& record);
    static void floatDatas2Byte(const std::vector<FloatData>& list, QByteArray& data);
    static int byte2FloatDatas(const char* buf, int size, std::vector<FloatData>& list);

    // 14 bytes: 0 pointId, 4 value (1 byte), 5 stamp1, 9 stamp2, 13 flag1 (1 byte). A list has at least 18 bytes.
    // The count of a bool list is signed, and so is the new size, old size + count. A negative count
    //   - that needs more than `size` bytes, computed in 32 bits, gives -5: list unchanged
    //   - up to the list's size removes that many elements from its end: 1
    //   - above it, like any negative new size, makes the vector raise std::length_error
    static void boolRealData2Byte(const BoolRealData& record, QByteArray& data);
    static int byte2BoolRealData(const char* buf, int size, BoolRealData& record);
    static void boolRealDatas2Byte(const std::vector<BoolRealData>& list, QByteArray& data);
    static int byte2BoolRealDatas(const char* buf, int size, std::vector<BoolRealData>& list);

    // 10 bytes: 0 value (1 byte), 1 stamp1, 5 stamp2, 9 flag1 (1 byte). A list has at least 18 bytes, so that one item
    // in its 14 bytes is refused. A negative count as above.
    static void boolData2Byte(const BoolData& record, QByteArray& data);
    static int byte2BoolData(const char* buf, int size, BoolData& record);
    static void boolDatas2Byte(const std::vector<BoolData>& list, QByteArray& data);
    static int byte2BoolDatas(const char* buf, int size, std::vector<BoolData>& list);

    // 18 bytes: 0 pointId, 4 value, 8 stamp1, 12 stamp2, 16 flag1, 17 flag2 (1 byte each).
    // A list has at least 22 bytes.
    static void intRealData2Byte(const IntRealData& record, QByteArray& data);
    static int byte2IntRealData(const char* buf, int size, IntRealData& record);
    static void intRealDatas2Byte(const std::vector<IntRealData>& list, QByteArray& data);
    static int byte2IntRealDatas(const char* buf, int size, std::vector<IntRealData>& list);

    // 14 bytes: 0 value, 4 stamp1, 8 stamp2, 12 flag1, 13 flag2 (1 byte each). A list has at least 18 bytes.
    static void intData2Byte(const IntData& record, QByteArray& data);
    static int byte2IntData(const char* buf, int size, IntData& record);
    static void intDatas2Byte(const std::vector<IntData>& list, QByteArray& data);
    static int byte2IntDatas(const char* buf, int size, std::vector<IntData>& list);

    // 27 bytes: 0 pointKind (1 byte), 1 pointId, 5 value (8 bytes), 13 intValue, 17 stamp1, 21 stamp2, 25 flag1,
    // 26 flag2 (1 byte each). A list has at least 4 bytes.
    static void pointRealData2Byte(const PointRealData& record, QByteArray& data);
    static int byte2PointRealData(const char* buf, int size, PointRealData& record);
    static void pointRealDatas2Byte(const std::vector<PointRealData>& list, QByteArray& data);
    static int byte2PointRealDatas(const char* buf, int size, std::vector<PointRealData>& list);

    // 18 bytes: 0 pointId, 4 stamp1, 8 stamp2, 12 word4, 16 flag1, 17 flag2 (1 byte each). A list has at least 4 bytes.
    static void blobDataInfo2Byte(const BlobDataInfo& record, QByteArray& data);
    static int byte2BlobDataInfo(const char* buf, int size, BlobDataInfo& record);
    static void blobDataInfos2Byte(const std::vector<BlobDataInfo>& list, QByteArray& data);
    static int byte2BlobDataInfos(const char* buf, int size, std::vector<BlobDataInfo>& list);

    // 18+L bytes: 0 pointId, 4 stamp1, 8 stamp2, 12 flag1, 13 flag2 (1 byte each), 14 L (4 bytes), 18 the L bytes.
    // The reader of one record replaces `bytes`. It returns 18+L, or -5 if the buffer is shorter; the five leading
    // fields are overwritten if it has 18 bytes. An L of 2^31 or more makes the vector raise std::length_error.
    // The reader of a list:
    //    1  all items read
    //   -5  fewer bytes than 4 and 18 for each item: list unchanged
    //   -5  old size + count overflows 32 bits, as above
    //   -3  an item failed: list at its new size, with the items read so far
    static void blobRealData2Byte(const BlobRealData& record, QByteArray& data);
    static int byte2BlobRealData(const char* buf, int size, BlobRealData& record);
    static void blobRealDatas2Byte(const std::vector<BlobRealData>& list, QByteArray& data);
    static int byte2BlobRealDatas(const char* buf, int size, std::vector<BlobRealData>& list);

    // A list of blob samples: count (4 bytes), then each sample: 0 stamp1, 4 stamp2, 8 flag1, 9 flag2 (1 byte each),
    // 10 L (4 bytes), 14 the L bytes. Unrelated to the blob form of objects.
    // Resizes the list to the count and overwrites its elements. Returns
    //   the bytes consumed, 4 for a count of 0
    //   -1  fewer than 18 bytes: list unchanged
    //   -1  an item does not fit: list at its new size, with the items read so far
    // A negative count or an L of 2^31 or more makes the vector raise std::length_error.
    static int blob2List(const char* buf, int size, std::vector<BlobData>& list);

    // --- Queries ---

    // Writes nothing: this form has no writer. A program that sends one writes the 28 bytes itself.
    static void hisQuery2Byte(const HisQuery& query, QByteArray& data);
    // 28 bytes: 0 pointId, 4 word1 to word6. Returns 1, not the size; or -2 if size < 28, with the record unchanged.
    static int byte2HisQuery(const char* buf, int size, HisQuery& query);

    // 20+S1 bytes: 0 pointId, 4 word1 to word4, 20 text1. The reader returns
    //   20+S1
    //   -2  size < 22: record unchanged
    //    0  text1 does not fit with one byte to spare: the other fields are set. A buffer that ends with the record is
    //       refused, so pass at least one byte more
    static void oneSecQuery2Byte(const OneSecQuery& query, QByteArray& data);
    static int byte2OneSecQuery(const char* buf, int size, OneSecQuery& query);

    // --- Events ---
    //
    // Readers of one record return the bytes consumed, or 0 if the buffer is too short or a text is incomplete.
    // Readers of a list replace it: they resize it to the count and reuse its elements, whose texts are appended to.
    // Pass an empty list to get clean records.
    //    1  all items read
    //   -2  fewer than 4 bytes: list unchanged
    //   -3  an item failed: list cleared

    // 0 word1 to word4, 16 switch1, 17 switch2 (1 byte each), 18 word5, 22 value (8 bytes), 30 word6, 34 word7,
    // 38 word8, 42 word9, 46 word10, 50 switch3 (1 byte), 51 word13, 55 text1, 55+S1 text2; 55+S1+S2 bytes.
    // word11 and word12 are not on the wire.
    static void eventInfo2Byte(const EventInfo& event, QByteArray& data);
    static int byte2EventInfo(const char* buf, int size, EventInfo& event);
    static void eventInfos2Byte(const std::vector<EventInfo>& list, QByteArray& data);
    static int byte2EventInfos(const char* buf, int size, std::vector<EventInfo>& list);

    // 17 bytes: 0 word1, 4 switch1 (1 byte), 5 word2, 9 word3, 13 word4.
    static void eventState2Byte(const EventState& event, QByteArray& data);
    static int byte2EventState(const char* buf, int size, EventState& event);
    static void eventStates2Byte(const std::vector<EventState>& list, QByteArray& data);
    static int byte2EventStates(const char* buf, int size, std::vector<EventState>& list);

    // --- Variants, properties, objects ---
    //
    // There are two forms. The byte form stores texts at their length, but its readers take the first two bytes of a
    // text for its length, so that ordinary text is read as empty; numbers, kinds and sizes are right. The blob form
    // gives each text a slot of 258 bytes, and texts of up to 256 bytes are read back unchanged: use it for texts. Its
    // readers store a longer text and then report that it does not fit.
    // No reader here returns 0.

    // 0 kind (1 byte), 1 the value: kind 0 and 11 intValue, 5 floatValue (4 bytes), 6 doubleValue (8 bytes),
    // 10 textValue (string, or slot in the blob form), others nothing. The readers return
    //   the bytes consumed
    //   -2  size < 1
    //   -1  the value does not fit: `kind` is stored
    static void variant2Byte(const Variant& value, QByteArray& data);
    static int byte2Variant(const char* buf, int size, Variant& value);
    static void variant2Blob(const Variant& value, QByteArray& data);
    static int blob2Variant(const char* buf, int size, Variant& value);

    // Byte form: 0 word1, 4 word2, 8 formatText, 8+S1 valueText, 8+S1+S2 value; S1 of formatText, S2 of valueText.
    // Blob form: 0 word1, 4 word2, 8 formatText, 266 valueText, 524 value. The readers return
    //   the bytes consumed
    //   -2  size < 13, or < 525 in the blob form
    //   -3  a text does not fit
    //   -4  the value failed
    static void property2Byte(const PropertyData& property, QByteArray& data);
    static int byte2Property(const char* buf, int size, PropertyData& property);
    static void property2Blob(const PropertyData& property, QByteArray& data);
    static int blob2Property(const char* buf, int size, PropertyData& property);

    // Byte form: 0 a zero byte, 1 word1, 5 word2, 9 word3, 13 word4, 17 text1, text2, text3, 17+S1+S2+S3 number of
    // properties (2 bytes, the low 16 bits), then the properties.
    // Blob form: the same with text1 at 17, text2 at 275, text3 at 533, the number at 791, the properties from 793.
    // The readers append to `properties`; if one fails, those before it are kept. byte2Object returns
    //   the bytes consumed
    //   -2  size < 25
    //   -3  a text does not fit
    //   -4  a property failed
    // blob2Object returns
    //   the bytes consumed minus 2
    //   -2  size < 793, or a text does not fit
    //   -4  a property failed
    // blob2Object also replaces each valueText by the value as text:
    //   kind 0, 5, 6  %d or %f, with the decimal point of the program's locale
    //   kind 11       local date and time in the format of formatText, or yyyy-MM-dd hh:mm:ss if that is empty
    //   kind 10       the text itself
    //   kind 101      0
    //   others        nothing
    static void object2Byte(const ObjectData& object, QByteArray& data);
    static int byte2Object(const char* buf, int size, ObjectData& object);
    static void object2Blob(const ObjectData& object, QByteArray& data);
    static int blob2Object(const char* buf, int size, ObjectData& object);

    // Writes a text in a slot of 258 bytes: 0 length (2 bytes), 2 the text, then zero bytes. A text above 256 bytes is
    // written whole: its slot is longer and shifts all that follows. byte2Str reads a slot.
    static void str2Blob(const std::string& text, QByteArray& data);

    // --- Waves ---

    // A stored wave: 0 the head, 96 the marks (4 bytes each), then the samples up to the end: 2 bytes each if bit 0 or
    // 1 of waveFlags is set, otherwise floats of 4 bytes. If bit 2 is set, the samples are one zlib stream.
    //
    // The caller provides the buffers, whose size is not checked: rawBuffer holds the samples uncompressed, 2 or 4
    // bytes each; packedBuffer and workBuffer hold waveBlockSize bytes if bit 2 is set, and are not used otherwise.
    static constexpr int waveBlockSize = 5000000;

    // Packs floats: sets sampleCount, markCount and, if there are samples, the limits in `head`, and replaces `stored`.
    // With bit 1 each sample is quantised to 16 bits between the limits. Clear bit 0 first: it is ignored here, but the
    // wave would be read as raw values. Returns
    //    1  packed
    //   -1  zlib failed or needs more than waveBlockSize bytes: `stored` unchanged, sampleCount and limits set
    static int wave2Byte(BlobWaveHead& head, const std::vector<float>& samples, const std::vector<int>& marks,
                         unsigned char* rawBuffer, unsigned char* packedBuffer, std::vector<unsigned char>& stored);

    // Packs raw values, the low 16 bits of each, and sets bit 0 in `head`. The caller sets the limits: a reader returns
    // value * limitHigh + limitLow. Returns
    //    1  packed
    //   -1  zlib failed, as above: `stored` unchanged, sampleCount and bit 0 set
    static int wave2Byte(BlobWaveHead& head, const std::vector<int>& samples, const std::vector<int>& marks,
                         unsigned char* rawBuffer, unsigned char* packedBuffer, std::vector<unsigned char>& stored);

    // Unpacks; the number of samples follows from the bytes, not from the head. Returns
    //   1  unpacked. `marks` is unchanged if the wave has none, `samples` if it has none and bit 0 or 1 is set
    //   0  fewer than 96 bytes: nothing changed
    //   0  the marks do not fit: `head` overwritten. If there are marks, the reader needs 96 bytes of samples after
    //      them: it refuses a wave with marks and fewer samples, although wave2Byte writes it
    //   0  zlib refuses the stream, lacks memory, or unpacks to more than waveBlockSize bytes, which wave2Byte does not
    //      check: `head` and `marks` overwritten
    static int byte2Wave(const std::vector<unsigned char>& stored, unsigned char* workBuffer, BlobWaveHead& head,
                         std::vector<float>& samples, std::vector<int>& marks);
};

} // namespace gqdb
