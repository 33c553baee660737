#include "recordFields.h"
#include "shared/text.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include <byte2Fep.h>
#include <fepFields.h>
#include <rdbFields.h>

using gqdb::CByte2Fep;
using gqdb::CByte2Rdb;
using gqdb::CByte2Val;

// --- Records that are a list of fields ------------------------------------------------------------------------------

template <typename Record>
static void walk(Fields& f, Record& record)
{
    gqdb::CFieldsShown shown(f, gqdb::RecordForm::read);
    gqdb::walk(shown, record);
}

template <typename Record>
static void walkWritten(Fields& f, Record& record)
{
    gqdb::CFieldsShown shown(f, gqdb::RecordForm::written);
    gqdb::walk(shown, record);
}

static void walk(Fields& f, gqdb::IntPoint& point)
{
    walk<gqdb::IntPoint>(f, point);
    f.readerNeeds(81);
}

static void walk(Fields& f, gqdb::OneSecQuery& query)
{
    walk<gqdb::OneSecQuery>(f, query);
    f.readerNeedsAfter(1);
}

static void walk(Fields& f, gqdb::CommItem& item)
{
    walk<gqdb::CommItem>(f, item);
    f.readerNeeds(25);
    f.readerNeedsAfter(f.wireSize("text3") - 2);
    f.resultIsOffBy(f.wireSize("text4") - 4);
}

// --- Variants, properties, objects --------------------------------------------------------------------------------

static void walkVariant(Fields& f, gqdb::Variant& value, bool isBlob)
{
    f.field("kind", value.kind);
    switch (value.kind) {
    case kindInt:
        f.field("intValue", value.intValue);
        break;
    case kindFloat:
        f.field("floatValue", value.floatValue);
        break;
    case kindDouble:
        f.field("doubleValue", value.doubleValue);
        break;
    case kindText:
        if (isBlob)
            f.slot("textValue", value.textValue);
        else
            f.lostText("textValue", value.textValue);
        break;
    case kindTime:
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
    f.resultIsOffBy(-2);
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
            wave.hasIntegers()
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

// Makes `data` longer by `count` bytes and returns the first of them. When this is inlined, g++ 12 warns that storage
// after the QByteArray header is out of bounds.
[[gnu::noinline]] static char* grow(QByteArray& data, int count)
{
    const int end = data.size();
    data.resize(end + count);
    return data.data() + end;
}

template <typename Record>
static void writeReadForm(const Record& record, QByteArray& data)
{
    QByteArray texts[4]; // of a YbItem
    auto& fields = const_cast<Record&>(record);
    gqdb::CRecordSize size(texts, gqdb::RecordForm::read);
    gqdb::walk(size, fields);
    gqdb::CRecordWriter out(grow(data, static_cast<int>(size.bytes())), texts, gqdb::RecordForm::read);
    gqdb::walk(out, fields);
}

template <typename Record>
static void writeReadForms(const std::vector<Record>& list, QByteArray& data)
{
    CByte2Val::int2Byte(static_cast<unsigned int>(list.size()), data);
    for (const Record& record : list)
        writeReadForm(record, data);
}

void writeReadable(const std::vector<gqdb::IntPoint>& list, QByteArray& data)
{
    writeReadForms(list, data);
}

void writeReadable(const std::vector<gqdb::YbItem>& list, QByteArray& data)
{
    writeReadForms(list, data);
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

// The reader of a form that the library only writes.
template <typename Content>
static int noReader(const char*, int, Content&)
{
    return 0;
}

// `itemWriter` writes an item as the list contains it.
template <typename Record, void (*walkFields)(Fields&, Record&), int (*reader)(const char*, int, std::vector<Record>&),
          void (*writer)(const std::vector<Record>&, QByteArray&), void (*itemWriter)(const Record&, QByteArray&)>
class RecordList : public Content {
public:
    void walk(Fields& fields) override
    {
        walkList(fields, list.size(), [&](size_t i) {
            if (i == list.size())
                list.emplace_back();
            fields.beginRecord(nullptr);
            walkFields(fields, list[i]);
            fields.endRecord();
        });
    }
    int read(const QByteArray& bytes) override { return reader(bytes.constData(), bytes.size(), list); }
    bool write(QByteArray& data) const override
    {
        writer(list, data);
        return true;
    }
    std::unique_ptr<Content> makeItem() const override
    {
        return OneRecord<Record, walkFields, noReader, itemWriter>::make();
    }
    static std::unique_ptr<Content> make() { return std::make_unique<RecordList>(); }

private:
    std::vector<Record> list;
};

using Failures = std::vector<ResultMeaning>;

static const Failures definitionFailures = {{0, QT_TRANSLATE_NOOP("Text", "too short, or a text is incomplete")}};
static const Failures definitionListFailures = {
    {-2, QT_TRANSLATE_NOOP("Text", "no count")},
    {-3, QT_TRANSLATE_NOOP("Text", "an item failed, and the list is empty again")}};
static const Failures valueFailures = {{-5, QT_TRANSLATE_NOOP("Text", "too short")}};
static const Failures valueListFailures = {
    {-5, QT_TRANSLATE_NOOP("Text", "fewer bytes than a list must have or than its count needs")}};
static const Failures blobValueFailures = {{-5, QT_TRANSLATE_NOOP("Text", "too short, or the bytes are incomplete")}};
static const Failures blobValueListFailures = {
    {-5, QT_TRANSLATE_NOOP("Text", "no count, or fewer bytes than it needs")},
    {-3, QT_TRANSLATE_NOOP("Text", "an item failed")}};
static const Failures blobSamplesFailures = {
    {-1, QT_TRANSLATE_NOOP("Text", "fewer than 18 bytes, or an item is incomplete")}};
static const Failures hisQueryFailures = {{-2, QT_TRANSLATE_NOOP("Text", "too short")}};
static const Failures oneSecQueryFailures = {
    {-2, QT_TRANSLATE_NOOP("Text", "too short")},
    {0, QT_TRANSLATE_NOOP("Text", "the text is incomplete, or no byte follows it")}};
static const Failures variantFailures = {{-2, QT_TRANSLATE_NOOP("Text", "no bytes")},
                                         {-1, QT_TRANSLATE_NOOP("Text", "the value is incomplete")}};
static const Failures propertyFailures = {{-2, QT_TRANSLATE_NOOP("Text", "too short")},
                                          {-3, QT_TRANSLATE_NOOP("Text", "a text is incomplete")},
                                          {-4, QT_TRANSLATE_NOOP("Text", "the value failed")}};
static const Failures objectFailures = {{-2, QT_TRANSLATE_NOOP("Text", "too short")},
                                        {-3, QT_TRANSLATE_NOOP("Text", "a text is incomplete")},
                                        {-4, QT_TRANSLATE_NOOP("Text", "a property failed")}};
static const Failures objectBlobFailures = {{-2, QT_TRANSLATE_NOOP("Text", "too short, or a text is incomplete")},
                                            {-4, QT_TRANSLATE_NOOP("Text", "a property failed")}};
static const Failures frontEndFailures = {{0, QT_TRANSLATE_NOOP("Text", "too short, or a text is incomplete")}};
static const Failures frontEndListFailures = {{0, QT_TRANSLATE_NOOP("Text", "no count, or an item failed")}};
static const Failures waveFailures = {{0, QT_TRANSLATE_NOOP("Text", "refused: head, marks or samples are incomplete")}};

const std::vector<Form>& recordForms()
{
    using namespace gqdb;
    using Rdb = CByte2Rdb;
    using Fep = CByte2Fep;
    static const std::vector<Form> forms = {
        {"pointInfo", QT_TRANSLATE_NOOP("Text", "a point, short form"),
         OneRecord<PointInfo, walk, Rdb::byte2PointInfo, Rdb::pointInfo2Byte>::make, &definitionFailures, returnsBytes},
        {"pointInfos", QT_TRANSLATE_NOOP("Text", "a list of pointInfo"),
         RecordList<PointInfo, walk, Rdb::byte2PointInfos, Rdb::pointInfos2Byte, Rdb::pointInfo2Byte>::make,
         &definitionListFailures, returnsOne},
        {"floatPoint", QT_TRANSLATE_NOOP("Text", "a point with a floating-point value"),
         OneRecord<FloatPoint, walk, Rdb::byte2FloatPoint, Rdb::floatPoint2Byte>::make, &definitionFailures,
         returnsBytes},
        {"floatPoints", QT_TRANSLATE_NOOP("Text", "a list of floatPoint"),
         RecordList<FloatPoint, walk, Rdb::byte2FloatPoints, Rdb::floatPoints2Byte, Rdb::floatPoint2Byte>::make,
         &definitionListFailures, returnsOne},
        {"intPoint", QT_TRANSLATE_NOOP("Text", "a point with an integer value, as the library reads it"),
         OneRecord<IntPoint, walk, Rdb::byte2IntPoint, writeReadForm>::make, &definitionFailures, returnsBytes},
        {"intPoints", QT_TRANSLATE_NOOP("Text", "a list of intPoint"),
         RecordList<IntPoint, walk, Rdb::byte2IntPoints, writeReadable, writeReadForm>::make, &definitionListFailures,
         returnsOne},
        {"intPointWritten",
         QT_TRANSLATE_NOOP("Text", "a point with an integer value, as the library writes it, with switch0"),
         OneRecord<IntPoint, walkWritten, noReader, Rdb::intPoint2Byte>::make, nullptr, returnsBytes},
        {"intPointsWritten", QT_TRANSLATE_NOOP("Text", "a list of intPointWritten"),
         RecordList<IntPoint, walkWritten, noReader, Rdb::intPoints2Byte, Rdb::intPoint2Byte>::make, nullptr,
         returnsOne},
        {"boolPoint", QT_TRANSLATE_NOOP("Text", "a two-state point"),
         OneRecord<BoolPoint, walk, Rdb::byte2BoolPoint, Rdb::boolPoint2Byte>::make, &definitionFailures, returnsBytes},
        {"boolPoints", QT_TRANSLATE_NOOP("Text", "a list of boolPoint"),
         RecordList<BoolPoint, walk, Rdb::byte2BoolPoints, Rdb::boolPoints2Byte, Rdb::boolPoint2Byte>::make,
         &definitionListFailures, returnsOne},
        {"blobPoint", QT_TRANSLATE_NOOP("Text", "a point whose value is a blob"),
         OneRecord<BlobPoint, walk, Rdb::byte2BlobPoint, Rdb::blobPoint2Byte>::make, &definitionFailures, returnsBytes},
        {"blobPoints", QT_TRANSLATE_NOOP("Text", "a list of blobPoint"),
         RecordList<BlobPoint, walk, Rdb::byte2BlobPoints, Rdb::blobPoints2Byte, Rdb::blobPoint2Byte>::make,
         &definitionListFailures, returnsOne},
        {"floatRealData", QT_TRANSLATE_NOOP("Text", "a float of a point"),
         OneRecord<FloatRealData, walk, Rdb::byte2FloatRealData, Rdb::floatRealData2Byte>::make, &valueFailures,
         returnsBytes},
        {"floatRealDatas", QT_TRANSLATE_NOOP("Text", "a list of floatRealData"),
         RecordList<FloatRealData, walk, Rdb::byte2FloatRealDatas, Rdb::floatRealDatas2Byte,
                    Rdb::floatRealData2Byte>::make,
         &valueListFailures, returnsOne, 22},
        {"floatData", QT_TRANSLATE_NOOP("Text", "a float without its point"),
         OneRecord<FloatData, walk, Rdb::byte2FloatData, Rdb::floatData2Byte>::make, &valueFailures, returnsBytes},
        {"floatDatas", QT_TRANSLATE_NOOP("Text", "a list of floatData"),
         RecordList<FloatData, walk, Rdb::byte2FloatDatas, Rdb::floatDatas2Byte, Rdb::floatData2Byte>::make,
         &valueListFailures, returnsOne, 18},
        {"intRealData", QT_TRANSLATE_NOOP("Text", "an integer of a point"),
         OneRecord<IntRealData, walk, Rdb::byte2IntRealData, Rdb::intRealData2Byte>::make, &valueFailures,
         returnsBytes},
        {"intRealDatas", QT_TRANSLATE_NOOP("Text", "a list of intRealData"),
         RecordList<IntRealData, walk, Rdb::byte2IntRealDatas, Rdb::intRealDatas2Byte, Rdb::intRealData2Byte>::make,
         &valueListFailures, returnsOne, 22},
        {"intData", QT_TRANSLATE_NOOP("Text", "an integer without its point"),
         OneRecord<IntData, walk, Rdb::byte2IntData, Rdb::intData2Byte>::make, &valueFailures, returnsBytes},
        {"intDatas", QT_TRANSLATE_NOOP("Text", "a list of intData"),
         RecordList<IntData, walk, Rdb::byte2IntDatas, Rdb::intDatas2Byte, Rdb::intData2Byte>::make, &valueListFailures,
         returnsOne, 18},
        {"boolRealData", QT_TRANSLATE_NOOP("Text", "a bool of a point"),
         OneRecord<BoolRealData, walk, Rdb::byte2BoolRealData, Rdb::boolRealData2Byte>::make, &valueFailures,
         returnsBytes},
        {"boolRealDatas", QT_TRANSLATE_NOOP("Text", "a list of boolRealData"),
         RecordList<BoolRealData, walk, Rdb::byte2BoolRealDatas, Rdb::boolRealDatas2Byte, Rdb::boolRealData2Byte>::make,
         &valueListFailures, returnsOne, 18},
        {"boolData", QT_TRANSLATE_NOOP("Text", "a bool without its point"),
         OneRecord<BoolData, walk, Rdb::byte2BoolData, Rdb::boolData2Byte>::make, &valueFailures, returnsBytes},
        {"boolDatas", QT_TRANSLATE_NOOP("Text", "a list of boolData"),
         RecordList<BoolData, walk, Rdb::byte2BoolDatas, Rdb::boolDatas2Byte, Rdb::boolData2Byte>::make,
         &valueListFailures, returnsOne, 18},
        {"pointRealData", QT_TRANSLATE_NOOP("Text", "a value of any numeric point"),
         OneRecord<PointRealData, walk, Rdb::byte2PointRealData, Rdb::pointRealData2Byte>::make, &valueFailures,
         returnsBytes},
        {"pointRealDatas", QT_TRANSLATE_NOOP("Text", "a list of pointRealData"),
         RecordList<PointRealData, walk, Rdb::byte2PointRealDatas, Rdb::pointRealDatas2Byte,
                    Rdb::pointRealData2Byte>::make,
         &valueListFailures, returnsOne},
        {"blobDataInfo", QT_TRANSLATE_NOOP("Text", "a blob of a point without its bytes"),
         OneRecord<BlobDataInfo, walk, Rdb::byte2BlobDataInfo, Rdb::blobDataInfo2Byte>::make, &valueFailures,
         returnsBytes},
        {"blobDataInfos", QT_TRANSLATE_NOOP("Text", "a list of blobDataInfo"),
         RecordList<BlobDataInfo, walk, Rdb::byte2BlobDataInfos, Rdb::blobDataInfos2Byte, Rdb::blobDataInfo2Byte>::make,
         &valueListFailures, returnsOne},
        {"blobRealData", QT_TRANSLATE_NOOP("Text", "a blob of a point"),
         OneRecord<BlobRealData, walk, Rdb::byte2BlobRealData, Rdb::blobRealData2Byte>::make, &blobValueFailures,
         returnsBytes},
        {"blobRealDatas", QT_TRANSLATE_NOOP("Text", "a list of blobRealData"),
         RecordList<BlobRealData, walk, Rdb::byte2BlobRealDatas, Rdb::blobRealDatas2Byte, Rdb::blobRealData2Byte>::make,
         &blobValueListFailures, returnsOne},
        {"blobDatas", QT_TRANSLATE_NOOP("Text", "a list of blobs without their point"),
         RecordList<BlobData, walk, Rdb::blob2List, writeReadForms, writeReadForm>::make, &blobSamplesFailures,
         returnsBytes, 18},
        {"hisQuery", QT_TRANSLATE_NOOP("Text", "a query"),
         OneRecord<HisQuery, walk, Rdb::byte2HisQuery, writeReadForm>::make, &hisQueryFailures, returnsOne},
        {"oneSecQuery", QT_TRANSLATE_NOOP("Text", "a query with a text"),
         OneRecord<OneSecQuery, walk, Rdb::byte2OneSecQuery, Rdb::oneSecQuery2Byte>::make, &oneSecQueryFailures,
         returnsBytes},
        {"eventInfo", QT_TRANSLATE_NOOP("Text", "an event"),
         OneRecord<EventInfo, walk, Rdb::byte2EventInfo, Rdb::eventInfo2Byte>::make, &definitionFailures, returnsBytes},
        {"eventInfos", QT_TRANSLATE_NOOP("Text", "a list of eventInfo"),
         RecordList<EventInfo, walk, Rdb::byte2EventInfos, Rdb::eventInfos2Byte, Rdb::eventInfo2Byte>::make,
         &definitionListFailures, returnsOne},
        {"eventState", QT_TRANSLATE_NOOP("Text", "the state of an event"),
         OneRecord<EventState, walk, Rdb::byte2EventState, Rdb::eventState2Byte>::make, &definitionFailures,
         returnsBytes},
        {"eventStates", QT_TRANSLATE_NOOP("Text", "a list of eventState"),
         RecordList<EventState, walk, Rdb::byte2EventStates, Rdb::eventStates2Byte, Rdb::eventState2Byte>::make,
         &definitionListFailures, returnsOne},
        {"variant", QT_TRANSLATE_NOOP("Text", "a tagged value, byte form"),
         OneRecord<Variant, walk, Rdb::byte2Variant, Rdb::variant2Byte>::make, &variantFailures, returnsBytes},
        {"variantBlob", QT_TRANSLATE_NOOP("Text", "the same, blob form"),
         OneRecord<Variant, walkBlob, Rdb::blob2Variant, Rdb::variant2Blob>::make, &variantFailures, returnsBytes},
        {"property", QT_TRANSLATE_NOOP("Text", "a property of an object, byte form"),
         OneRecord<PropertyData, walk, Rdb::byte2Property, Rdb::property2Byte>::make, &propertyFailures, returnsBytes},
        {"propertyBlob", QT_TRANSLATE_NOOP("Text", "the same, blob form"),
         OneRecord<PropertyData, walkBlob, Rdb::blob2Property, Rdb::property2Blob>::make, &propertyFailures,
         returnsBytes},
        {"object", QT_TRANSLATE_NOOP("Text", "an object with its properties, byte form"),
         OneRecord<ObjectData, walk, Rdb::byte2Object, Rdb::object2Byte>::make, &objectFailures, returnsBytes},
        {"objectBlob", QT_TRANSLATE_NOOP("Text", "the same, blob form"),
         OneRecord<ObjectData, walkBlob, Rdb::blob2Object, Rdb::object2Blob>::make, &objectBlobFailures, returnsBytes},
        {"nodeHead", QT_TRANSLATE_NOOP("Text", "the head of a node"),
         OneRecord<NodeHead, walk, Fep::byte2NodeHead, Fep::nodeHead2Byte>::make, &frontEndFailures, returnsBytes},
        {"nodeHeads", QT_TRANSLATE_NOOP("Text", "a list of nodeHead"),
         RecordList<NodeHead, walk, Fep::byte2NodeHeads, Fep::nodeHeads2Byte, Fep::nodeHead2Byte>::make,
         &frontEndListFailures, returnsOne},
        {"commItem", QT_TRANSLATE_NOOP("Text", "a communication entry"),
         OneRecord<CommItem, walk, Fep::byte2CommItem, Fep::commItem2Byte>::make, &frontEndFailures, returnsBytes},
        {"commItems", QT_TRANSLATE_NOOP("Text", "a list of commItem"),
         RecordList<CommItem, walk, Fep::byte2CommItems, Fep::commItems2Byte, Fep::commItem2Byte>::make,
         &frontEndListFailures, returnsOne},
        {"ycItem", QT_TRANSLATE_NOOP("Text", "a measurement with a floating-point value"),
         OneRecord<YcItem, walk, Fep::byte2YcItem, Fep::ycItem2Byte>::make, &frontEndFailures, returnsBytes},
        {"ycItems", QT_TRANSLATE_NOOP("Text", "a list of ycItem"),
         RecordList<YcItem, walk, Fep::byte2YcItems, Fep::ycItems2Byte, Fep::ycItem2Byte>::make, &frontEndListFailures,
         returnsOne},
        {"yxItem", QT_TRANSLATE_NOOP("Text", "a signal of a few states"),
         OneRecord<YxItem, walk, Fep::byte2YxItem, Fep::yxItem2Byte>::make, &frontEndFailures, returnsBytes},
        {"yxItems", QT_TRANSLATE_NOOP("Text", "a list of yxItem"),
         RecordList<YxItem, walk, Fep::byte2YxItems, Fep::yxItems2Byte, Fep::yxItem2Byte>::make, &frontEndListFailures,
         returnsOne},
        {"ydItem", QT_TRANSLATE_NOOP("Text", "an item without a reading of its own"),
         OneRecord<YdItem, walk, Fep::byte2YdItem, Fep::ydItem2Byte>::make, &frontEndFailures, returnsBytes},
        {"ydItems", QT_TRANSLATE_NOOP("Text", "a list of ydItem"),
         RecordList<YdItem, walk, Fep::byte2YdItems, Fep::ydItems2Byte, Fep::ydItem2Byte>::make, &frontEndListFailures,
         returnsOne},
        {"ybItem", QT_TRANSLATE_NOOP("Text", "a signal with an integer value, as the library reads it"),
         OneRecord<YbItem, walk, Fep::byte2YbItem, writeReadForm>::make, &frontEndFailures, returnsBytes},
        {"ybItems", QT_TRANSLATE_NOOP("Text", "a list of ybItem"),
         RecordList<YbItem, walk, Fep::byte2YbItems, writeReadable, writeReadForm>::make, &frontEndListFailures,
         returnsOne},
        {"ybItemWritten",
         QT_TRANSLATE_NOOP("Text", "a signal with an integer value, as the library writes it, with flag1"),
         OneRecord<YbItem, walkWritten, noReader, Fep::ybItem2Byte>::make, nullptr, returnsBytes},
        {"ybItemsWritten", QT_TRANSLATE_NOOP("Text", "a list of ybItemWritten"),
         RecordList<YbItem, walkWritten, noReader, Fep::ybItems2Byte, Fep::ybItem2Byte>::make, nullptr, returnsOne},
        {"wave", QT_TRANSLATE_NOOP("Text", "a stored wave"), makeWave, &waveFailures, returnsOne},
    };
    return forms;
}

QStringList formNames()
{
    QStringList names;
    for (const Form& form : recordForms())
        names.append(form.name);
    return names;
}

const Form* findForm(const QString& name)
{
    for (const Form& form : recordForms()) {
        if (name == form.name)
            return &form;
    }
    return nullptr;
}

bool isList(const Form& form)
{
    return form.make()->makeItem() != nullptr;
}
