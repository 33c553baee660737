#include "recordFields.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include <byte2Fep.h>

using gqdb::CByte2Fep;
using gqdb::CByte2Rdb;
using gqdb::CByte2Val;

// --- Point definitions --------------------------------------------------------------------------------------------

static void walk(Fields& f, gqdb::PointInfo& point)
{
    f.field("pointId", point.pointId);
    f.field("text1", point.text1);
    f.field("code1", point.code1);
    f.field("text2", point.text2);
    f.field("code2", point.code2);
}

static const size_t levelCount = 8;

static void walk(Fields& f, gqdb::FloatPoint& point)
{
    f.field("pointId", point.pointId);
    f.field("text1", point.text1);
    f.field("code1", point.code1);
    f.field("text2", point.text2);
    f.field("text3", point.text3);
    f.field("text4", point.text4);
    f.field("code2", point.code2);
    f.field("code3", point.code3);
    f.field("code4", point.code4);
    f.field("text5", point.text5);
    f.field("switch1", point.switch1);
    f.field("float1", point.float1);
    f.field("switch2", point.switch2);
    f.field("code5", point.code5);
    f.field("code6", point.code6);
    f.field("float2", point.float2);
    f.field("code7", point.code7);
    const unsigned int count = f.beginList("levels", 0, levelCount);
    for (unsigned int i = 0; i < count && f.beginItem(i); ++i) {
        f.field(nullptr, point.levels[i]);
        f.endItem();
    }
    f.endList();
}

static void walkIntPoint(Fields& f, gqdb::IntPoint& point, bool isWritten)
{
    f.field("pointId", point.pointId);
    f.field("text1", point.text1);
    f.field("code1", point.code1);
    f.field("text2", point.text2);
    f.field("text3", point.text3);
    f.field("text4", point.text4);
    f.field("code2", point.code2);
    f.field("code3", point.code3);
    if (isWritten)
        f.field("switch0", point.switch0);
    f.field("code4", point.code4);
    f.field("text5", point.text5);
    f.field("switch1", point.switch1);
    f.field("switch2", point.switch2);
    f.field("code5", point.code5);
    f.field("code6", point.code6);
    f.field("code7", point.code7);
    f.field("code8", point.code8);
    const unsigned int count = f.beginList("levels", 0, levelCount);
    for (unsigned int i = 0; i < count && f.beginItem(i); ++i) {
        f.field(nullptr, point.levels[i]);
        f.endItem();
    }
    f.endList();
}

static void walk(Fields& f, gqdb::IntPoint& point)
{
    walkIntPoint(f, point, false);
    f.wantsInAll(81);
}

static void walkWritten(Fields& f, gqdb::IntPoint& point)
{
    walkIntPoint(f, point, true);
}

static void walk(Fields& f, gqdb::BoolPoint& point)
{
    f.field("pointId", point.pointId);
    f.field("text1", point.text1);
    f.field("code1", point.code1);
    f.field("text2", point.text2);
    f.field("text3", point.text3);
    f.field("code2", point.code2);
    f.field("code3", point.code3);
    f.field("code4", point.code4);
    f.field("text5", point.text5);
    f.field("switch1", point.switch1);
    f.field("switch2", point.switch2);
    f.field("code5", point.code5);
    f.field("code6", point.code6);
    f.field("switch3", point.switch3);
}

static void walk(Fields& f, gqdb::BlobPoint& point)
{
    f.field("pointId", point.pointId);
    f.field("text1", point.text1);
    f.field("code1", point.code1);
    f.field("text2", point.text2);
    f.field("text3", point.text3);
    f.field("text4", point.text4);
    f.field("code2", point.code2);
    f.field("code3", point.code3);
    f.field("code4", point.code4);
    f.field("text5", point.text5);
    f.field("switch1", point.switch1);
    f.field("switch2", point.switch2);
    f.field("code5", point.code5);
    f.field("code6", point.code6);
}

// --- Values -------------------------------------------------------------------------------------------------------

static void walk(Fields& f, gqdb::FloatRealData& record)
{
    f.field("pointId", record.pointId);
    f.field("value", record.value);
    f.field("stamp1", record.stamp1);
    f.field("stamp2", record.stamp2);
    f.field("flag2", record.flag2); // ahead of flag1 in the float records
    f.field("flag1", record.flag1);
}

static void walk(Fields& f, gqdb::FloatData& record)
{
    f.field("value", record.value);
    f.field("stamp1", record.stamp1);
    f.field("stamp2", record.stamp2);
    f.field("flag2", record.flag2);
    f.field("flag1", record.flag1);
}

static void walk(Fields& f, gqdb::IntRealData& record)
{
    f.field("pointId", record.pointId);
    f.field("value", record.value);
    f.field("stamp1", record.stamp1);
    f.field("stamp2", record.stamp2);
    f.field("flag1", record.flag1);
    f.field("flag2", record.flag2);
}

static void walk(Fields& f, gqdb::IntData& record)
{
    f.field("value", record.value);
    f.field("stamp1", record.stamp1);
    f.field("stamp2", record.stamp2);
    f.field("flag1", record.flag1);
    f.field("flag2", record.flag2);
}

static void walk(Fields& f, gqdb::BoolRealData& record)
{
    f.field("pointId", record.pointId);
    f.field("value", record.value);
    f.field("stamp1", record.stamp1);
    f.field("stamp2", record.stamp2);
    f.field("flag1", record.flag1);
}

static void walk(Fields& f, gqdb::BoolData& record)
{
    f.field("value", record.value);
    f.field("stamp1", record.stamp1);
    f.field("stamp2", record.stamp2);
    f.field("flag1", record.flag1);
}

static void walk(Fields& f, gqdb::PointRealData& record)
{
    f.field("pointKind", record.pointKind);
    f.field("pointId", record.pointId);
    f.field("value", record.value);
    f.field("intValue", record.intValue);
    f.field("stamp1", record.stamp1);
    f.field("stamp2", record.stamp2);
    f.field("flag1", record.flag1);
    f.field("flag2", record.flag2);
}

static void walk(Fields& f, gqdb::BlobDataInfo& record)
{
    f.field("pointId", record.pointId);
    f.field("stamp1", record.stamp1);
    f.field("stamp2", record.stamp2);
    f.field("word4", record.word4);
    f.field("flag1", record.flag1);
    f.field("flag2", record.flag2);
}

static void walk(Fields& f, gqdb::BlobRealData& record)
{
    f.field("pointId", record.pointId);
    f.field("stamp1", record.stamp1);
    f.field("stamp2", record.stamp2);
    f.field("flag1", record.flag1);
    f.field("flag2", record.flag2);
    f.bytes("bytes", record.bytes);
}

static void walk(Fields& f, gqdb::BlobData& record)
{
    f.field("stamp1", record.stamp1);
    f.field("stamp2", record.stamp2);
    f.field("flag1", record.flag1);
    f.field("flag2", record.flag2);
    f.bytes("bytes", record.bytes);
}

// --- Queries and events -------------------------------------------------------------------------------------------

static void walk(Fields& f, gqdb::HisQuery& query)
{
    f.field("pointId", query.pointId);
    f.field("word1", query.word1);
    f.field("word2", query.word2);
    f.field("word3", query.word3);
    f.field("word4", query.word4);
    f.field("word5", query.word5);
    f.field("word6", query.word6);
}

static void walk(Fields& f, gqdb::OneSecQuery& query)
{
    f.field("pointId", query.pointId);
    f.field("word1", query.word1);
    f.field("word2", query.word2);
    f.field("word3", query.word3);
    f.field("word4", query.word4);
    f.field("text1", query.text1);
    f.wantsBehind(1);
}

static void walk(Fields& f, gqdb::EventInfo& event)
{
    f.field("word1", event.word1);
    f.field("word2", event.word2);
    f.field("word3", event.word3);
    f.field("word4", event.word4);
    f.field("switch1", event.switch1);
    f.field("switch2", event.switch2);
    f.field("word5", event.word5);
    f.field("value", event.value);
    f.field("word6", event.word6);
    f.field("word7", event.word7);
    f.field("word8", event.word8);
    f.field("word9", event.word9);
    f.field("word10", event.word10);
    f.field("switch3", event.switch3);
    f.field("word13", event.word13);
    f.field("text1", event.text1);
    f.field("text2", event.text2);
}

static void walk(Fields& f, gqdb::EventState& event)
{
    f.field("word1", event.word1);
    f.field("switch1", event.switch1);
    f.field("word2", event.word2);
    f.field("word3", event.word3);
    f.field("word4", event.word4);
}

// --- Variants, properties, objects --------------------------------------------------------------------------------

static void walkVariant(Fields& f, gqdb::Variant& value, bool isBlob)
{
    f.field("kind", value.kind);
    switch (value.kind) {
    case 0:
        f.field("intValue", value.intValue);
        break;
    case 5:
        f.field("floatValue", value.floatValue);
        break;
    case 6:
        f.field("doubleValue", value.doubleValue);
        break;
    case 10:
        if (isBlob)
            f.slot("textValue", value.textValue);
        else
            f.lostText("textValue", value.textValue);
        break;
    case 11:
        f.field("intValue", reinterpret_cast<unsigned int&>(value.intValue)); // seconds, unsigned
        break;
    default:
        break;
    }
}

static void walk(Fields& f, gqdb::Variant& value)
{
    walkVariant(f, value, false);
}

static void walkBlob(Fields& f, gqdb::Variant& value)
{
    walkVariant(f, value, true);
}

static void walkProperty(Fields& f, gqdb::PropertyData& property, bool isBlob, bool isInObject)
{
    f.field("word1", property.word1);
    f.field("word2", property.word2);
    if (!isBlob) {
        f.lostText("formatText", property.formatText);
        f.lostText("valueText", property.valueText);
    } else {
        f.slot("formatText", property.formatText);
        if (isInObject)
            f.lostSlot("valueText", property.valueText); // replaced by the value as text
        else
            f.slot("valueText", property.valueText);
    }
    f.beginRecord("value");
    walkVariant(f, property.value, isBlob);
    f.endRecord();
}

static void walk(Fields& f, gqdb::PropertyData& property)
{
    walkProperty(f, property, false, false);
}

static void walkBlob(Fields& f, gqdb::PropertyData& property)
{
    walkProperty(f, property, true, false);
}

static void walkObject(Fields& f, gqdb::ObjectData& object, bool isBlob)
{
    f.skip();
    f.field("word1", object.word1);
    f.field("word2", object.word2);
    f.field("word3", object.word3);
    f.field("word4", object.word4);
    const std::pair<const char*, std::string*> texts[] = {
        {"text1", &object.text1}, {"text2", &object.text2}, {"text3", &object.text3}};
    for (const auto& [name, text] : texts) {
        if (isBlob)
            f.slot(name, *text);
        else
            f.lostText(name, *text);
    }
    const unsigned int count = f.beginList("properties", 2, object.properties.size());
    for (unsigned int i = 0; i < count && f.beginItem(i); ++i) {
        if (i == object.properties.size())
            object.properties.emplace_back();
        f.beginRecord(nullptr);
        walkProperty(f, object.properties[i], isBlob, true);
        f.endRecord();
        f.endItem();
    }
    f.endList();
}

static void walk(Fields& f, gqdb::ObjectData& object)
{
    walkObject(f, object, false);
}

static void walkBlob(Fields& f, gqdb::ObjectData& object)
{
    walkObject(f, object, true);
    f.answerIsOffBy(-2);
}

// --- Front-end records --------------------------------------------------------------------------------------------

static void walk(Fields& f, gqdb::NodeHead& head)
{
    f.field("nodeId", head.nodeId);
    f.field("text1", head.text1);
    f.field("text2", head.text2);
    f.field("text3", head.text3);
    f.field("text4", head.text4);
    f.field("word1", head.word1);
    f.field("flag1", head.flag1);
    f.field("flag2", head.flag2);
    f.field("flag3", head.flag3);
    f.field("flag4", head.flag4);
    f.field("word2", head.word2);
    f.field("word3", head.word3);
    f.field("word4", head.word4);
    f.field("word5", head.word5);
    f.field("text5", head.text5);
    f.field("text6", head.text6);
}

static void walk(Fields& f, gqdb::CommItem& item)
{
    f.field("commId", item.commId);
    f.field("text1", item.text1);
    f.field("text2", item.text2);
    const int size3 = f.field("text3", item.text3);
    f.field("flag1", item.flag1);
    f.field("flag2", item.flag2);
    const int size4 = f.field("text4", item.text4);
    f.field("word1", item.word1);
    f.field("text5", item.text5);
    f.wantsInAll(25);
    f.wantsBehind(size3 - 2);
    f.answerIsOffBy(size4 - 4);
}

static void walk(Fields& f, gqdb::YcItem& item)
{
    f.field("flag1", item.flag1);
    f.field("itemId", item.itemId);
    f.field("text1", item.text1);
    f.field("text2", item.text2);
    f.field("text3", item.text3);
    f.field("text4", item.text4);
    f.field("flag2", item.flag2);
    f.field("word1", item.word1);
    f.field("word2", item.word2);
    f.field("flag3", item.flag3);
    f.field("coef1", item.coef1);
    f.field("coef2", item.coef2);
    f.field("coef3", item.coef3);
    f.field("coef4", item.coef4);
    f.field("word3", item.word3);
    f.field("flag4", item.flag4);
    f.field("flag5", item.flag5);
    f.field("text5", item.text5);
}

static void walk(Fields& f, gqdb::YxItem& item)
{
    f.field("itemId", item.itemId);
    f.field("text1", item.text1);
    f.field("text2", item.text2);
    f.field("text3", item.text3);
    f.field("flag1", item.flag1);
    f.field("word1", item.word1);
    f.field("word2", item.word2);
    f.field("flag2", item.flag2);
    f.field("word3", item.word3);
    f.field("flag3", item.flag3);
    f.field("flag4", item.flag4);
    f.field("flag5", item.flag5);
    f.field("flag6", item.flag6);
    f.field("text4", item.text4);
}

static void walk(Fields& f, gqdb::YdItem& item)
{
    f.field("flag1", item.flag1);
    f.field("itemId", item.itemId);
    f.field("text1", item.text1);
    f.field("text2", item.text2);
    f.field("text3", item.text3);
    f.field("text4", item.text4);
    f.field("flag2", item.flag2);
    f.field("flag3", item.flag3);
    f.field("word1", item.word1);
    f.field("word2", item.word2);
    f.field("flag4", item.flag4);
    f.field("flag5", item.flag5);
    f.field("flag6", item.flag6);
    f.field("flag7", item.flag7);
    f.field("float1", item.float1);
    f.field("float2", item.float2);
    f.field("word3", item.word3);
    f.field("float3", item.float3);
    f.field("float4", item.float4);
    f.field("word4", item.word4);
    f.field("word5", item.word5);
    f.field("text5", item.text5);
}

static void walkYbItem(Fields& f, gqdb::YbItem& item, bool isWritten)
{
    f.field("itemId", item.itemId);
    f.field("text1", item.text1);
    f.field("text2", item.text2);
    f.field("text3", item.text3);
    if (isWritten)
        f.field("flag1", item.flag1);
    f.field("word1", item.word1);
    f.field("word2", item.word2);
    f.field("flag2", item.flag2);
    f.field("text4", item.text4);
}

static void walk(Fields& f, gqdb::YbItem& item)
{
    walkYbItem(f, item, false);
}

static void walkWritten(Fields& f, gqdb::YbItem& item)
{
    walkYbItem(f, item, true);
}

// --- Waves --------------------------------------------------------------------------------------------------------

class WaveContent : public Content {
public:
    void walk(Fields& f) override
    {
        gqdb::BlobWaveHead& head = wave.head;
        f.beginRecord(nullptr);
        f.field("headByte", head.headByte);
        f.field("waveFlags", head.waveFlags);
        f.bytes("headFill1", head.headFill1, sizeof head.headFill1);
        f.field("limitHigh", head.limitHigh);
        f.field("limitLow", head.limitLow);
        f.field("sampleCount", head.sampleCount);
        f.field("markCount", head.markCount);
        f.bytes("headFill2", head.headFill2, sizeof head.headFill2);
        f.samples(wave);
        f.endRecord();
    }

    int read(const QByteArray& bytes) override
    {
        const bool isCompressed = bytes.size() > 1 && (bytes.at(1) & 4) != 0;
        std::vector<unsigned char> workBuffer(isCompressed ? CByte2Rdb::waveBlockSize : 0);
        return CByte2Rdb::byte2Wave({bytes.begin(), bytes.end()}, workBuffer.data(), wave.head, wave.samples,
                                    wave.marks);
    }

    bool write(QByteArray& data) const override
    {
        gqdb::BlobWaveHead head = wave.head;
        std::vector<unsigned char> rawBuffer(4 * std::max(wave.samples.size(), wave.stored.size()));
        std::vector<unsigned char> packedBuffer(wave.isCompressed() ? CByte2Rdb::waveBlockSize : 0);
        std::vector<unsigned char> bytes;
        const int result =
            wave.isRaw() || wave.isQuantised()
                ? CByte2Rdb::wave2Byte(head, wave.stored, wave.marks, rawBuffer.data(), packedBuffer.data(), bytes)
                : CByte2Rdb::wave2Byte(head, wave.samples, wave.marks, rawBuffer.data(), packedBuffer.data(), bytes);
        if (result != 1)
            return false;
        // The writer puts limits, flags and counts of its own into the head.
        std::memcpy(bytes.data(), &wave.head, sizeof wave.head);
        data.append(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size()));
        return true;
    }

private:
    StoredWave wave;
};

static std::unique_ptr<Content> makeWave()
{
    return std::make_unique<WaveContent>();
}

// --- What the library does not write ------------------------------------------------------------------------------

static void writeCount(size_t count, QByteArray& data)
{
    CByte2Val::int2Byte(static_cast<unsigned int>(count), data);
}

// Without switch0, as the reader takes it.
static void writeReadable(const gqdb::IntPoint& point, QByteArray& data)
{
    QByteArray record;
    CByte2Rdb::intPoint2Byte(point, record);
    const size_t texts = point.text1.size() + point.text2.size() + point.text3.size() + point.text4.size();
    data.append(record.remove(24 + static_cast<int>(texts), 1));
}

static void writeReadable(const std::vector<gqdb::IntPoint>& list, QByteArray& data)
{
    writeCount(list.size(), data);
    for (const gqdb::IntPoint& point : list)
        writeReadable(point, data);
}

// Without flag1, as the reader takes it.
static void writeReadable(const gqdb::YbItem& item, QByteArray& data)
{
    QByteArray record;
    CByte2Fep::ybItem2Byte(item, record);
    const int texts = item.text1.toUtf8().size() + item.text2.toUtf8().size() + item.text3.toUtf8().size();
    data.append(record.remove(10 + texts, 1));
}

static void writeReadable(const std::vector<gqdb::YbItem>& list, QByteArray& data)
{
    writeCount(list.size(), data);
    for (const gqdb::YbItem& item : list)
        writeReadable(item, data);
}

static void writeByHand(const gqdb::HisQuery& query, QByteArray& data)
{
    for (unsigned int value :
         {query.pointId, query.word1, query.word2, query.word3, query.word4, query.word5, query.word6})
        CByte2Val::int2Byte(value, data);
}

static void writeByHand(const std::vector<gqdb::BlobData>& list, QByteArray& data)
{
    writeCount(list.size(), data);
    for (const gqdb::BlobData& item : list) {
        CByte2Val::int2Byte(item.stamp1, data);
        CByte2Val::int2Byte(item.stamp2, data);
        data.append(item.flag1);
        data.append(item.flag2);
        CByte2Val::list2Byte(item.bytes, data);
    }
}

// --- Forms --------------------------------------------------------------------------------------------------------

template <typename Record, void (*walkFields)(Fields&, Record&), int (*reader)(const char*, int, Record&),
          void (*writer)(const Record&, QByteArray&)>
class OneRecord : public Content {
public:
    void walk(Fields& fields) override
    {
        fields.beginRecord(nullptr);
        walkFields(fields, record);
        fields.endRecord();
    }
    int read(const QByteArray& bytes) override { return reader(bytes.constData(), bytes.size(), record); }
    bool write(QByteArray& data) const override
    {
        writer(record, data);
        return true;
    }
    static std::unique_ptr<Content> make() { return std::make_unique<OneRecord>(); }

private:
    Record record;
};

template <typename Record, void (*walkFields)(Fields&, Record&), int (*reader)(const char*, int, std::vector<Record>&),
          void (*writer)(const std::vector<Record>&, QByteArray&)>
class RecordList : public Content {
public:
    void walk(Fields& fields) override
    {
        const unsigned int count = fields.beginList(nullptr, 4, list.size());
        for (unsigned int i = 0; i < count && fields.beginItem(i); ++i) {
            if (i == list.size())
                list.emplace_back();
            fields.beginRecord(nullptr);
            walkFields(fields, list[i]);
            fields.endRecord();
            fields.endItem();
        }
        fields.endList();
    }
    int read(const QByteArray& bytes) override { return reader(bytes.constData(), bytes.size(), list); }
    bool write(QByteArray& data) const override
    {
        writer(list, data);
        return true;
    }
    static std::unique_ptr<Content> make() { return std::make_unique<RecordList>(); }

private:
    std::vector<Record> list;
};

// Of a form that the library writes and does not read.
template <typename Content>
static int noReader(const char*, int, Content&)
{
    return 0;
}

using Failures = std::vector<ResultMeaning>;

static const Failures definitionFailures = {{0, "too short, or a text is not whole"}};
static const Failures definitionListFailures = {{-2, "no count"}, {-3, "an item failed, and the list is empty again"}};
static const Failures valueFailures = {{-5, "too short"}};
static const Failures valueListFailures = {{-5, "below the bytes that a list must have, or that its count wants"}};
static const Failures blobValueFailures = {{-5, "too short, or the bytes are not whole"}};
static const Failures blobValueListFailures = {{-5, "no count, or below the bytes that it wants"},
                                               {-3, "an item failed"}};
static const Failures blobSamplesFailures = {{-1, "below 18 bytes, or an item is not whole"}};
static const Failures hisQueryFailures = {{-2, "too short"}};
static const Failures oneSecQueryFailures = {{-2, "too short"},
                                             {0, "the text is not whole, or no byte stands behind it"}};
static const Failures variantFailures = {{-2, "no bytes"}, {-1, "the value is not whole"}};
static const Failures propertyFailures = {{-2, "too short"}, {-3, "a text is not whole"}, {-4, "the value failed"}};
static const Failures objectFailures = {{-2, "too short"}, {-3, "a text is not whole"}, {-4, "a property failed"}};
static const Failures objectBlobFailures = {{-2, "too short, or a text is not whole"}, {-4, "a property failed"}};
static const Failures frontEndFailures = {{0, "too short, or a text is not whole"}};
static const Failures frontEndListFailures = {{0, "no count, or an item failed"}};
static const Failures waveFailures = {{0, "refused: head, marks or samples are not whole"}};

const std::vector<Form>& recordForms()
{
    using namespace gqdb;
    using Rdb = CByte2Rdb;
    using Fep = CByte2Fep;
    static const std::vector<Form> forms = {
        {"pointInfo", "a point, short form", OneRecord<PointInfo, walk, Rdb::byte2PointInfo, Rdb::pointInfo2Byte>::make,
         &definitionFailures, answersBytes},
        {"pointInfos", "a list of it", RecordList<PointInfo, walk, Rdb::byte2PointInfos, Rdb::pointInfos2Byte>::make,
         &definitionListFailures, answersOne},
        {"floatPoint", "a point with a floating-point value",
         OneRecord<FloatPoint, walk, Rdb::byte2FloatPoint, Rdb::floatPoint2Byte>::make, &definitionFailures,
         answersBytes},
        {"floatPoints", "a list of it",
         RecordList<FloatPoint, walk, Rdb::byte2FloatPoints, Rdb::floatPoints2Byte>::make, &definitionListFailures,
         answersOne},
        {"intPoint", "a point with an integer value, as the library reads it",
         OneRecord<IntPoint, walk, Rdb::byte2IntPoint, writeReadable>::make, &definitionFailures, answersBytes},
        {"intPoints", "a list of it", RecordList<IntPoint, walk, Rdb::byte2IntPoints, writeReadable>::make,
         &definitionListFailures, answersOne},
        {"intPointWritten", "the same as the library writes it, with switch0",
         OneRecord<IntPoint, walkWritten, noReader, Rdb::intPoint2Byte>::make, nullptr, answersBytes},
        {"intPointsWritten", "a list of it", RecordList<IntPoint, walkWritten, noReader, Rdb::intPoints2Byte>::make,
         nullptr, answersOne},
        {"boolPoint", "a two-state point", OneRecord<BoolPoint, walk, Rdb::byte2BoolPoint, Rdb::boolPoint2Byte>::make,
         &definitionFailures, answersBytes},
        {"boolPoints", "a list of it", RecordList<BoolPoint, walk, Rdb::byte2BoolPoints, Rdb::boolPoints2Byte>::make,
         &definitionListFailures, answersOne},
        {"blobPoint", "a point whose value is a blob",
         OneRecord<BlobPoint, walk, Rdb::byte2BlobPoint, Rdb::blobPoint2Byte>::make, &definitionFailures, answersBytes},
        {"blobPoints", "a list of it", RecordList<BlobPoint, walk, Rdb::byte2BlobPoints, Rdb::blobPoints2Byte>::make,
         &definitionListFailures, answersOne},
        {"floatRealData", "a float of a point",
         OneRecord<FloatRealData, walk, Rdb::byte2FloatRealData, Rdb::floatRealData2Byte>::make, &valueFailures,
         answersBytes},
        {"floatRealDatas", "a list of it",
         RecordList<FloatRealData, walk, Rdb::byte2FloatRealDatas, Rdb::floatRealDatas2Byte>::make, &valueListFailures,
         answersOne, 22},
        {"floatData", "the same without the point",
         OneRecord<FloatData, walk, Rdb::byte2FloatData, Rdb::floatData2Byte>::make, &valueFailures, answersBytes},
        {"floatDatas", "a list of it", RecordList<FloatData, walk, Rdb::byte2FloatDatas, Rdb::floatDatas2Byte>::make,
         &valueListFailures, answersOne, 18},
        {"intRealData", "an integer of a point",
         OneRecord<IntRealData, walk, Rdb::byte2IntRealData, Rdb::intRealData2Byte>::make, &valueFailures,
         answersBytes},
        {"intRealDatas", "a list of it",
         RecordList<IntRealData, walk, Rdb::byte2IntRealDatas, Rdb::intRealDatas2Byte>::make, &valueListFailures,
         answersOne, 22},
        {"intData", "the same without the point", OneRecord<IntData, walk, Rdb::byte2IntData, Rdb::intData2Byte>::make,
         &valueFailures, answersBytes},
        {"intDatas", "a list of it", RecordList<IntData, walk, Rdb::byte2IntDatas, Rdb::intDatas2Byte>::make,
         &valueListFailures, answersOne, 18},
        {"boolRealData", "a bool of a point",
         OneRecord<BoolRealData, walk, Rdb::byte2BoolRealData, Rdb::boolRealData2Byte>::make, &valueFailures,
         answersBytes},
        {"boolRealDatas", "a list of it",
         RecordList<BoolRealData, walk, Rdb::byte2BoolRealDatas, Rdb::boolRealDatas2Byte>::make, &valueListFailures,
         answersOne, 18},
        {"boolData", "the same without the point",
         OneRecord<BoolData, walk, Rdb::byte2BoolData, Rdb::boolData2Byte>::make, &valueFailures, answersBytes},
        {"boolDatas", "a list of it", RecordList<BoolData, walk, Rdb::byte2BoolDatas, Rdb::boolDatas2Byte>::make,
         &valueListFailures, answersOne, 18},
        {"pointRealData", "a value of any numeric point",
         OneRecord<PointRealData, walk, Rdb::byte2PointRealData, Rdb::pointRealData2Byte>::make, &valueFailures,
         answersBytes},
        {"pointRealDatas", "a list of it",
         RecordList<PointRealData, walk, Rdb::byte2PointRealDatas, Rdb::pointRealDatas2Byte>::make, &valueListFailures,
         answersOne},
        {"blobDataInfo", "a blob of a point without its bytes",
         OneRecord<BlobDataInfo, walk, Rdb::byte2BlobDataInfo, Rdb::blobDataInfo2Byte>::make, &valueFailures,
         answersBytes},
        {"blobDataInfos", "a list of it",
         RecordList<BlobDataInfo, walk, Rdb::byte2BlobDataInfos, Rdb::blobDataInfos2Byte>::make, &valueListFailures,
         answersOne},
        {"blobRealData", "a blob of a point",
         OneRecord<BlobRealData, walk, Rdb::byte2BlobRealData, Rdb::blobRealData2Byte>::make, &blobValueFailures,
         answersBytes},
        {"blobRealDatas", "a list of it",
         RecordList<BlobRealData, walk, Rdb::byte2BlobRealDatas, Rdb::blobRealDatas2Byte>::make, &blobValueListFailures,
         answersOne},
        {"blobDatas", "a list of blobs without the point",
         RecordList<BlobData, walk, Rdb::blob2List, writeByHand>::make, &blobSamplesFailures, answersBytes, 18},
        {"hisQuery", "a query", OneRecord<HisQuery, walk, Rdb::byte2HisQuery, writeByHand>::make, &hisQueryFailures,
         answersOne},
        {"oneSecQuery", "a query with a text",
         OneRecord<OneSecQuery, walk, Rdb::byte2OneSecQuery, Rdb::oneSecQuery2Byte>::make, &oneSecQueryFailures,
         answersBytes},
        {"eventInfo", "an event", OneRecord<EventInfo, walk, Rdb::byte2EventInfo, Rdb::eventInfo2Byte>::make,
         &definitionFailures, answersBytes},
        {"eventInfos", "a list of it", RecordList<EventInfo, walk, Rdb::byte2EventInfos, Rdb::eventInfos2Byte>::make,
         &definitionListFailures, answersOne},
        {"eventState", "the state of an event",
         OneRecord<EventState, walk, Rdb::byte2EventState, Rdb::eventState2Byte>::make, &definitionFailures,
         answersBytes},
        {"eventStates", "a list of it",
         RecordList<EventState, walk, Rdb::byte2EventStates, Rdb::eventStates2Byte>::make, &definitionListFailures,
         answersOne},
        {"variant", "a tagged value, byte form", OneRecord<Variant, walk, Rdb::byte2Variant, Rdb::variant2Byte>::make,
         &variantFailures, answersBytes},
        {"variantBlob", "the same, blob form", OneRecord<Variant, walkBlob, Rdb::blob2Variant, Rdb::variant2Blob>::make,
         &variantFailures, answersBytes},
        {"property", "a property of an object, byte form",
         OneRecord<PropertyData, walk, Rdb::byte2Property, Rdb::property2Byte>::make, &propertyFailures, answersBytes},
        {"propertyBlob", "the same, blob form",
         OneRecord<PropertyData, walkBlob, Rdb::blob2Property, Rdb::property2Blob>::make, &propertyFailures,
         answersBytes},
        {"object", "an object with its properties, byte form",
         OneRecord<ObjectData, walk, Rdb::byte2Object, Rdb::object2Byte>::make, &objectFailures, answersBytes},
        {"objectBlob", "the same, blob form", OneRecord<ObjectData, walkBlob, Rdb::blob2Object, Rdb::object2Blob>::make,
         &objectBlobFailures, answersBytes},
        {"nodeHead", "the head of a node", OneRecord<NodeHead, walk, Fep::byte2NodeHead, Fep::nodeHead2Byte>::make,
         &frontEndFailures, answersBytes},
        {"nodeHeads", "a list of it", RecordList<NodeHead, walk, Fep::byte2NodeHeads, Fep::nodeHeads2Byte>::make,
         &frontEndListFailures, answersOne},
        {"commItem", "a communication entry", OneRecord<CommItem, walk, Fep::byte2CommItem, Fep::commItem2Byte>::make,
         &frontEndFailures, answersBytes},
        {"commItems", "a list of it", RecordList<CommItem, walk, Fep::byte2CommItems, Fep::commItems2Byte>::make,
         &frontEndListFailures, answersOne},
        {"ycItem", "a measurement with a floating-point value",
         OneRecord<YcItem, walk, Fep::byte2YcItem, Fep::ycItem2Byte>::make, &frontEndFailures, answersBytes},
        {"ycItems", "a list of it", RecordList<YcItem, walk, Fep::byte2YcItems, Fep::ycItems2Byte>::make,
         &frontEndListFailures, answersOne},
        {"yxItem", "a signal of a few states", OneRecord<YxItem, walk, Fep::byte2YxItem, Fep::yxItem2Byte>::make,
         &frontEndFailures, answersBytes},
        {"yxItems", "a list of it", RecordList<YxItem, walk, Fep::byte2YxItems, Fep::yxItems2Byte>::make,
         &frontEndListFailures, answersOne},
        {"ydItem", "an item without a reading of its own",
         OneRecord<YdItem, walk, Fep::byte2YdItem, Fep::ydItem2Byte>::make, &frontEndFailures, answersBytes},
        {"ydItems", "a list of it", RecordList<YdItem, walk, Fep::byte2YdItems, Fep::ydItems2Byte>::make,
         &frontEndListFailures, answersOne},
        {"ybItem", "a signal with an integer value, as the library reads it",
         OneRecord<YbItem, walk, Fep::byte2YbItem, writeReadable>::make, &frontEndFailures, answersBytes},
        {"ybItems", "a list of it", RecordList<YbItem, walk, Fep::byte2YbItems, writeReadable>::make,
         &frontEndListFailures, answersOne},
        {"ybItemWritten", "the same as the library writes it, with flag1",
         OneRecord<YbItem, walkWritten, noReader, Fep::ybItem2Byte>::make, nullptr, answersBytes},
        {"ybItemsWritten", "a list of it", RecordList<YbItem, walkWritten, noReader, Fep::ybItems2Byte>::make, nullptr,
         answersOne},
        {"wave", "a stored wave", makeWave, &waveFailures, answersOne},
    };
    return forms;
}

const Form* findForm(const QString& name)
{
    for (const Form& form : recordForms()) {
        if (name == form.name)
            return &form;
    }
    return nullptr;
}
