#pragma once

#include "byte2Val.h"
#include "fepRecords.h"

namespace gqdb {

// Conversion of the records of the front-end processors to and from bytes. All operations are static and stateless: any
// thread may call them on distinct arguments.
//
//   writers          append to `data`, never clear it, report nothing. All but ybItem2Byte first reserve 1024 more
//                    bytes, which does not limit the size of a record
//   record readers   take the first byte and the number of bytes available, and replace texts. They return the bytes
//                    consumed; or 0 if the buffer is too short or a text is incomplete: the fields read so far keep
//                    their new values
//   list readers     append to `list`:
//                      1  all items read
//                      0  fewer than 4 bytes: list unchanged
//                      0  an item failed: list at its new size, with the items read so far and defaults after them
//                      0  old size + count overflows 32 bits: list truncated to the low 32 bits of the sum, no item
//                         read
//
// Values are little-endian and packed. Offsets below are bytes from the start of a record. S1 is the encoded size of
// text1, 2 plus the length of its UTF-8 form, S2 that of text2, and so on. A list is a count (4 bytes) and the items,
// without gaps.
//
// A failed allocation is passed on to the caller, also that of a list whose count asks for more elements than memory
// holds. An array that was written to then keeps its previous bytes, possibly followed by bytes to discard. A record
// keeps the fields read so far. A list that is appended to keeps its old elements; the new ones are missing, read, or
// read in part.
class GQLIB_EXPORT CByte2Fep : public CByte2Val {
public:
    CByte2Fep();
    ~CByte2Fep();

    // 0 nodeId, 4 text1 to text4; with A = 4+S1+S2+S3+S4: A word1, A+4 flag1 to flag4 (1 byte each), A+8 word2 to
    // word5, A+24 text5, text6; 28+S1+...+S6 bytes. The reader needs at least 25 bytes.
    static void nodeHead2Byte(const NodeHead& head, QByteArray& data);
    static int byte2NodeHead(const char* buf, int size, NodeHead& head);
    static void nodeHeads2Byte(const std::vector<NodeHead>& list, QByteArray& data);
    static int byte2NodeHeads(const char* buf, int size, std::vector<NodeHead>& list);

    // 0 commId, 4 text1 to text3; with A = 4+S1+S2+S3: A flag1, A+1 flag2 (1 byte each), A+2 text4, A+2+S4 word1,
    // A+6+S4 text5; 10+S1+...+S5 bytes.
    // The reader needs at least 25 bytes, and S3 - 2 bytes of any value after the record. It returns
    // 6+S1+S2+S3+2*S4+S5, which is the size only if text4 has 2 bytes. The list reader advances by that result: after
    // an item with any other text4 it misreads the rest.
    static void commItem2Byte(const CommItem& item, QByteArray& data);
    static int byte2CommItem(const char* buf, int size, CommItem& item);
    static void commItems2Byte(const std::vector<CommItem>& list, QByteArray& data);
    static int byte2CommItems(const char* buf, int size, std::vector<CommItem>& list);

    // 0 flag1 (1 byte), 1 itemId, 5 text1 to text4; with A = 5+S1+S2+S3+S4: A flag2 (1 byte), A+1 word1, A+5 word2,
    // A+9 flag3 (1 byte), A+10 coef1 to coef4, A+26 word3, A+30 flag4, A+31 flag5 (1 byte each), A+32 text5;
    // 37+S1+...+S5 bytes. The reader needs at least 31 bytes.
    static void ycItem2Byte(const YcItem& item, QByteArray& data);
    static int byte2YcItem(const char* buf, int size, YcItem& item);
    static void ycItems2Byte(const std::vector<YcItem>& list, QByteArray& data);
    static int byte2YcItems(const char* buf, int size, std::vector<YcItem>& list);

    // 0 itemId, 4 text1 to text3; with A = 4+S1+S2+S3: A flag1 (1 byte), A+1 word1, A+5 word2, A+9 flag2 (1 byte),
    // A+10 word3, A+14 flag3 to flag6 (1 byte each), A+18 text4; 22+S1+...+S4 bytes. The reader needs at least
    // 24 bytes.
    static void yxItem2Byte(const YxItem& item, QByteArray& data);
    static int byte2YxItem(const char* buf, int size, YxItem& item);
    static void yxItems2Byte(const std::vector<YxItem>& list, QByteArray& data);
    static int byte2YxItems(const char* buf, int size, std::vector<YxItem>& list);

    // 0 flag1 (1 byte), 1 itemId, 5 text1 to text4; with A = 5+S1+S2+S3+S4: A flag2, A+1 flag3 (1 byte each), A+2
    // word1, A+6 word2, A+10 flag4 to flag7 (1 byte each), A+14 float1, A+18 float2, A+22 word3, A+26 float3, A+30
    // float4, A+34 word4, A+38 word5, A+42 text5; 47+S1+...+S5 bytes. The reader needs at least 48 bytes.
    static void ydItem2Byte(const YdItem& item, QByteArray& data);
    static int byte2YdItem(const char* buf, int size, YdItem& item);
    static void ydItems2Byte(const std::vector<YdItem>& list, QByteArray& data);
    static int byte2YdItems(const char* buf, int size, std::vector<YdItem>& list);

    // 0 itemId, 4 text1 to text3; with A = 4+S1+S2+S3: A flag1 (1 byte), A+1 word1, A+5 word2, A+9 flag2 (1 byte),
    // A+10 text4; 14+S1+...+S4 bytes.
    // The reader takes another form: without flag1, so that word1 is at A and the rest one byte earlier. It needs at
    // least 21 bytes, and 11 from A on. It misreads what ybItem2Byte writes from A on, and the items after it in a
    // list: peers whose records are read here leave the byte out. flag1 keeps its value.
    static void ybItem2Byte(const YbItem& item, QByteArray& data);
    static int byte2YbItem(const char* buf, int size, YbItem& item);
    static void ybItems2Byte(const std::vector<YbItem>& list, QByteArray& data);
    static int byte2YbItems(const char* buf, int size, std::vector<YbItem>& list);
};

} // namespace gqdb
