#include "byte2Rdb.h"
#include "target.h"

using namespace gqdb;
using Rdb = CByte2Rdb;

const int slotSize = 258; // of a text in the blob form
const char sameAgain[] = "written again, the record must have the same bytes";

// Size of the value that follows a kind other than text.
static int numberSize(char kind)
{
    switch (kind) {
    case 0:
    case 5:
    case 11:
        return 4;
    case 6:
        return 8;
    default:
        return 0;
    }
}

// --- Byte form: texts come back empty or in part, sizes and numbers right ----------

// Returns the text that the reader stores, written again: the reader takes the first two bytes of the text for its
// length.
static QByteArray misplacedText(const char* text, int size)
{
    const int used = recordSize({{textField}}, text, size);
    return used > 0 ? QByteArray(text, used) : QByteArray(2, '\0');
}

// Returns the field at `at` and moves `at` past it.
static QByteArray misplacedField(const char* buf, int& at)
{
    const int size = static_cast<int>(numberOf2(buf + at));
    at += 2 + size;
    return misplacedText(buf + at - size, size);
}

static int variantResult(const char* buf, int size)
{
    if (size < 1)
        return -2;
    const int used = recordSize({{1, buf[0] == 10 ? textField : numberSize(buf[0])}}, buf, size);
    return used > 0 ? used : -1;
}

static int propertyResult(const char* buf, int size)
{
    if (size < 13)
        return -2;
    const int head = recordSize({{8, textField, textField}}, buf, size - 1); // a kind follows at least
    if (head == 0)
        return -3;
    const int value = variantResult(buf + head, size - head);
    return value < 1 ? -4 : head + value;
}

// A good variant or property of `used` bytes, written again.
static QByteArray variantAgain(const char* buf, int used)
{
    return buf[0] == 10 ? buf[0] + misplacedText(buf + 3, used - 3) : QByteArray(buf, used);
}

static QByteArray propertyAgain(const char* buf, int used)
{
    int at = 8;
    QByteArray again(buf, at);
    again += misplacedField(buf, at);
    again += misplacedField(buf, at);
    return again + variantAgain(buf + at, used - at);
}

static void checkVariant(const Layout&, const Reading& reading)
{
    requireResult(reading, variantResult(reading.buf, reading.size));
    if (reading.result > 0)
        require(reading.written == variantAgain(reading.buf, reading.result), sameAgain);
}

static void checkProperty(const Layout&, const Reading& reading)
{
    requireResult(reading, propertyResult(reading.buf, reading.size));
    if (reading.result > 0)
        require(reading.written == propertyAgain(reading.buf, reading.result), sameAgain);
}

static void checkObject(const Layout& head, const Reading& reading)
{
    if (reading.size < 25)
        return requireResult(reading, -2);
    int used = recordSize(head, reading.buf, reading.size);
    if (used == 0)
        return requireResult(reading, -3);
    int at = 17;
    QByteArray again = '\0' + QByteArray(reading.buf + 1, at - 1);
    for (int text = 1; text <= 3; ++text)
        again += misplacedField(reading.buf, at);
    again += QByteArray(reading.buf + at, 2);
    for (unsigned int left = numberOf2(reading.buf + used - 2); left > 0; --left) {
        const int more = propertyResult(reading.buf + used, reading.size - used);
        if (more < 1)
            return requireResult(reading, -4);
        again += propertyAgain(reading.buf + used, more);
        used += more;
    }
    requireResult(reading, used);
    require(reading.written == again, sameAgain);
}

// --- Blob form: texts in slots -----------------------------------------------------

// Returns true if a text lies inside its slot and the `size` bytes.
static bool isSlotGood(const char* buf, int size)
{
    const int used = recordSize({{textField}}, buf, size);
    return used > 0 && used <= slotSize;
}

// Bytes after the text in a slot are ignored.
static void clearAfterText(QByteArray& bytes, int slot)
{
    const int textSize = static_cast<int>(numberOf2(bytes.constData() + slot));
    bytes.replace(slot + 2 + textSize, slotSize - 2 - textSize, QByteArray(slotSize - 2 - textSize, '\0'));
}

static int blobVariantResult(const char* buf, int size)
{
    if (size < 1 || buf[0] != 10)
        return variantResult(buf, size);
    return size < 1 + slotSize || !isSlotGood(buf + 1, size - 1) ? -1 : 1 + slotSize;
}

static int blobPropertyResult(const char* buf, int size)
{
    if (size < 525)
        return -2;
    if (!isSlotGood(buf + 8, size - 8) || !isSlotGood(buf + 266, size - 266))
        return -3;
    const int value = blobVariantResult(buf + 524, size - 524);
    return value < 1 ? -4 : 524 + value;
}

// Returns the bytes that the writer makes from a valid variant or property.
static void tidyVariant(QByteArray& bytes, int at)
{
    if (bytes.at(at) == 10)
        clearAfterText(bytes, at + 1);
}

static void tidyProperty(QByteArray& bytes, int at)
{
    clearAfterText(bytes, at + 8);
    clearAfterText(bytes, at + 266);
    tidyVariant(bytes, at + 524);
}

static void checkBlobVariant(const Layout&, const Reading& reading)
{
    requireResult(reading, blobVariantResult(reading.buf, reading.size));
    if (reading.result < 1)
        return;
    QByteArray tidy(reading.buf, reading.result);
    tidyVariant(tidy, 0);
    require(reading.written == tidy, sameAgain);
}

static void checkBlobProperty(const Layout&, const Reading& reading)
{
    requireResult(reading, blobPropertyResult(reading.buf, reading.size));
    if (reading.result < 1)
        return;
    QByteArray tidy(reading.buf, reading.result);
    tidyProperty(tidy, 0);
    require(reading.written == tidy, sameAgain);
}

static void readBlobObject(Reading& reading)
{
    ObjectData object;
    reading.result = CByte2Rdb::blob2Object(reading.buf, reading.size, object);
    QByteArray shown; // the reader makes these texts from the values; appended to the object here
    for (PropertyData& property : object.properties) {
        CByte2Val::str2Byte(property.valueText, shown);
        property.valueText.clear();
    }
    CByte2Rdb::object2Blob(object, reading.written);
    reading.written.append(shown);
}

static void checkBlobObject(const Layout&, const Reading& reading)
{
    if (reading.size < 793 || !isSlotGood(reading.buf + 17, reading.size - 17) ||
        !isSlotGood(reading.buf + 275, reading.size - 275) || !isSlotGood(reading.buf + 533, reading.size - 533))
        return requireResult(reading, -2);
    QByteArray tidy(reading.buf, reading.size);
    tidy[0] = 0;
    for (const int slot : {17, 275, 533})
        clearAfterText(tidy, slot);
    int used = 793;
    for (unsigned int left = numberOf2(reading.buf + 791); left > 0; --left) {
        const int more = blobPropertyResult(reading.buf + used, reading.size - used);
        if (more < 1)
            return requireResult(reading, -4);
        tidyProperty(tidy, used);
        tidy.replace(used + 266, slotSize, QByteArray(slotSize, '\0'));
        used += more;
    }
    requireResult(reading, used - 2);
    require(reading.written.left(used) == tidy.left(used), sameAgain);
}

const std::vector<Target> byte2RdbObjectTargets = {
    {"byte2Variant", readRecord<Rdb::byte2Variant, Rdb::variant2Byte>, checkVariant, {}},
    {"byte2Property", readRecord<Rdb::byte2Property, Rdb::property2Byte>, checkProperty, {}},
    {"byte2Object",
     readRecord<Rdb::byte2Object, Rdb::object2Byte>,
     checkObject,
     {{17, textField, textField, textField, 2}}},
    {"blob2Variant", readRecord<Rdb::blob2Variant, Rdb::variant2Blob>, checkBlobVariant, {}},
    {"blob2Property", readRecord<Rdb::blob2Property, Rdb::property2Blob>, checkBlobProperty, {}},
    {"blob2Object", readBlobObject, checkBlobObject, {}},
};
