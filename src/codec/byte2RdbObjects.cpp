#include "byte2Rdb.h"

#include "byteRoom.h"
#include "byteText.h"

#include <QDateTime>
#include <QLocale>

namespace gqdb {

enum VariantKind : unsigned char {
    kindInt = 0,
    kindFloat = 5,
    kindDouble = 6,
    kindText = 10,
    kindTime = 11,
    kindZero = 101,
};

static const int slotSize = 258; // of a text in the blob form

// Deliberately passes the string reader the bytes of the text instead of its length field, so that the first two bytes
// of the text count as a length. Ordinary text is shorter than that length and is read as empty.
static void takeMisplacedText(const char* text, int size, std::string& out)
{
    takeString(text, size, out);
}

// Reads a slot at `buf`. Returns false if the text is longer than the slot or incomplete.
static bool takeSlot(const char* buf, int size, std::string& out)
{
    const int used = takeString(buf, size, out);
    return used >= 1 && used <= slotSize;
}

// Writes the value of every kind except text, for both forms.
static void putNumber(const Variant& value, QByteArray& data)
{
    switch (value.kind) {
    case kindInt:
    case kindTime:
        CByte2Val::int2Byte(value.intValue, data);
        break;
    case kindFloat:
        CByte2Val::float2Byte(value.floatValue, data);
        break;
    case kindDouble:
        CByte2Val::double2Byte(value.doubleValue, data);
        break;
    default:
        break;
    }
}

// Reads the value after the kind at `buf[0]`; nothing for text and unknown kinds. Returns the bytes consumed, including
// the kind, or -1.
static int takeNumber(const char* buf, int size, Variant& value)
{
    switch (value.kind) {
    case kindInt:
    case kindTime:
        if (size < 5)
            return -1;
        value.intValue = static_cast<int>(load32(buf + 1));
        return 5;
    case kindFloat:
        if (size < 5)
            return -1;
        value.floatValue = imageFloat(load32(buf + 1));
        return 5;
    case kindDouble:
        if (size < 9)
            return -1;
        value.doubleValue = imageDouble(load64(buf + 1));
        return 9;
    default:
        return 1;
    }
}

void CByte2Rdb::variant2Byte(const Variant& value, QByteArray& data)
{
    data.append(static_cast<char>(value.kind));
    if (value.kind == kindText)
        str2Byte(value.textValue, data);
    else
        putNumber(value, data);
}

int CByte2Rdb::byte2Variant(const char* buf, int size, Variant& value)
{
    if (size < 1)
        return -2;
    value.kind = static_cast<unsigned char>(buf[0]);
    if (value.kind != kindText)
        return takeNumber(buf, size, value);
    if (size < 3)
        return -1;
    const int length = static_cast<int>(load16(buf + 1));
    if (size < length + 3)
        return -1;
    takeMisplacedText(buf + 3, length, value.textValue);
    return length + 3;
}

void CByte2Rdb::variant2Blob(const Variant& value, QByteArray& data)
{
    data.append(static_cast<char>(value.kind));
    if (value.kind == kindText)
        str2Blob(value.textValue, data);
    else
        putNumber(value, data);
}

int CByte2Rdb::blob2Variant(const char* buf, int size, Variant& value)
{
    if (size < 1)
        return -2;
    value.kind = static_cast<unsigned char>(buf[0]);
    if (value.kind != kindText)
        return takeNumber(buf, size, value);
    if (size < 1 + slotSize || !takeSlot(buf + 1, size - 1, value.textValue))
        return -1;
    return 1 + slotSize;
}

void CByte2Rdb::property2Byte(const PropertyData& property, QByteArray& data)
{
    int2Byte(property.word1, data);
    int2Byte(property.word2, data);
    str2Byte(property.formatText, data);
    str2Byte(property.valueText, data);
    variant2Byte(property.value, data);
}

int CByte2Rdb::byte2Property(const char* buf, int size, PropertyData& property)
{
    if (size < 13)
        return -2;
    property.word1 = static_cast<int>(load32(buf));
    property.word2 = static_cast<int>(load32(buf + 4));

    const int length1 = static_cast<int>(load16(buf + 8));
    if (size < length1 + 13)
        return -3;
    takeMisplacedText(buf + 10, length1, property.formatText);

    const int length2 = static_cast<int>(load16(buf + 10 + length1));
    if (size < length1 + length2 + 13)
        return -3;
    takeMisplacedText(buf + 12 + length1, length2, property.valueText);

    const int pos = 12 + length1 + length2;
    const int used = byte2Variant(buf + pos, size - pos, property.value);
    return used < 1 ? -4 : pos + used;
}

void CByte2Rdb::property2Blob(const PropertyData& property, QByteArray& data)
{
    int2Byte(property.word1, data);
    int2Byte(property.word2, data);
    str2Blob(property.formatText, data);
    str2Blob(property.valueText, data);
    variant2Blob(property.value, data);
}

int CByte2Rdb::blob2Property(const char* buf, int size, PropertyData& property)
{
    if (size < 525)
        return -2;
    property.word1 = static_cast<int>(load32(buf));
    property.word2 = static_cast<int>(load32(buf + 4));
    if (!takeSlot(buf + 8, size - 8, property.formatText) || !takeSlot(buf + 266, size - 266, property.valueText))
        return -3;
    const int used = blob2Variant(buf + 524, size - 524, property.value);
    return used < 1 ? -4 : 524 + used;
}

static void putObjectWords(const ObjectData& object, QByteArray& data)
{
    char* at = grow(data, 17);
    at[0] = 0; // a byte that readers skip
    store32(static_cast<unsigned int>(object.word1), at + 1);
    store32(static_cast<unsigned int>(object.word2), at + 5);
    store32(static_cast<unsigned int>(object.word3), at + 9);
    store32(static_cast<unsigned int>(object.word4), at + 13);
}

static void takeObjectWords(const char* buf, ObjectData& object)
{
    object.word1 = static_cast<int>(load32(buf + 1));
    object.word2 = static_cast<int>(load32(buf + 5));
    object.word3 = static_cast<int>(load32(buf + 9));
    object.word4 = static_cast<int>(load32(buf + 13));
}

void CByte2Rdb::object2Byte(const ObjectData& object, QByteArray& data)
{
    putObjectWords(object, data);
    str2Byte(object.text1, data);
    str2Byte(object.text2, data);
    str2Byte(object.text3, data);
    short2Byte(static_cast<unsigned int>(object.properties.size()), data);
    for (const PropertyData& property : object.properties)
        property2Byte(property, data);
}

int CByte2Rdb::byte2Object(const char* buf, int size, ObjectData& object)
{
    if (size < 25)
        return -2;
    takeObjectWords(buf, object);

    int pos = 17;
    int texts = 0; // bytes of the texts so far, without their lengths
    for (std::string* text : {&object.text1, &object.text2, &object.text3}) {
        const int length = static_cast<int>(load16(buf + pos));
        texts += length;
        if (size < texts + 25)
            return -3;
        takeMisplacedText(buf + pos + 2, length, *text);
        pos += 2 + length;
    }

    const unsigned int count = load16(buf + pos);
    pos += 2;
    for (unsigned int i = 0; i < count; ++i) {
        PropertyData property;
        const int used = byte2Property(buf + pos, size - pos, property);
        if (used < 1)
            return -4;
        object.properties.push_back(property);
        pos += used;
    }
    return pos;
}

void CByte2Rdb::object2Blob(const ObjectData& object, QByteArray& data)
{
    putObjectWords(object, data);
    str2Blob(object.text1, data);
    str2Blob(object.text2, data);
    str2Blob(object.text3, data);
    short2Byte(static_cast<unsigned int>(object.properties.size()), data);
    for (const PropertyData& property : object.properties)
        property2Blob(property, data);
}

// Returns the value of a property as text.
static std::string valueText(const PropertyData& property)
{
    const Variant& value = property.value;
    switch (value.kind) {
    case kindTime: {
        const QDateTime time = QDateTime::fromSecsSinceEpoch(static_cast<unsigned int>(value.intValue));
        // A format that begins with a zero byte is not empty: its C string is, so that the text is empty.
        const char* format = property.formatText.empty() ? "yyyy-MM-dd hh:mm:ss" : property.formatText.c_str();
        // QDateTime::toString() of Qt 6 prints English names.
        return QLocale::system().toString(time, QString::fromUtf8(format)).toStdString();
    }
    case kindDouble:
        return std::to_string(value.doubleValue);
    case kindFloat:
        return std::to_string(value.floatValue);
    case kindInt:
    case kindZero: // has no value on the wire, so that intValue is 0
        return std::to_string(value.intValue);
    case kindText:
        return value.textValue;
    default:
        return std::string();
    }
}

int CByte2Rdb::blob2Object(const char* buf, int size, ObjectData& object)
{
    if (size < 793)
        return -2;
    takeObjectWords(buf, object);
    if (!takeSlot(buf + 17, size - 17, object.text1) || !takeSlot(buf + 275, size - 275, object.text2) ||
        !takeSlot(buf + 533, size - 533, object.text3))
        return -2;

    const unsigned int count = load16(buf + 791);
    int pos = 793;
    for (unsigned int i = 0; i < count; ++i) {
        PropertyData property;
        const int used = blob2Property(buf + pos, size - pos, property);
        if (used < 1)
            return -4;
        property.valueText = valueText(property);
        object.properties.push_back(property);
        pos += used;
    }
    return pos - 2; // the count's two bytes are deliberately left out: callers add them
}

void CByte2Rdb::str2Blob(const std::string& text, QByteArray& data)
{
    const int used = str2Byte(text, data);
    if (used < slotSize)
        data.append(slotSize - used, 0);
}

} // namespace gqdb
