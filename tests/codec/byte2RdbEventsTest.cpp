#include "byte2Rdb.h"
#include "support/hex.h"
#include "support/recordChecks.h"

#include <gtest/gtest.h>

#include <cstddef>

using gqdb::CByte2Rdb;
using gqdb::EventInfo;
using gqdb::EventState;

// --- Declared fields ------------------------------------------------------------

static_assert(ascending({offsetof(EventInfo, word1), offsetof(EventInfo, word2), offsetof(EventInfo, word3),
                         offsetof(EventInfo, word4), offsetof(EventInfo, switch1), offsetof(EventInfo, text1),
                         offsetof(EventInfo, switch2), offsetof(EventInfo, word5), offsetof(EventInfo, value),
                         offsetof(EventInfo, word6), offsetof(EventInfo, word7), offsetof(EventInfo, word8),
                         offsetof(EventInfo, text2), offsetof(EventInfo, switch3), offsetof(EventInfo, word9),
                         offsetof(EventInfo, word10), offsetof(EventInfo, word11), offsetof(EventInfo, word12),
                         offsetof(EventInfo, word13)}));
static_assert(allAre<unsigned int EventInfo::*>(&EventInfo::word1, &EventInfo::word2, &EventInfo::word3,
                                                &EventInfo::word4, &EventInfo::word5, &EventInfo::word6,
                                                &EventInfo::word7, &EventInfo::word8, &EventInfo::word9,
                                                &EventInfo::word10, &EventInfo::word11, &EventInfo::word12,
                                                &EventInfo::word13));
static_assert(allAre<char EventInfo::*>(&EventInfo::switch1, &EventInfo::switch2, &EventInfo::switch3));
static_assert(allAre<std::string EventInfo::*>(&EventInfo::text1, &EventInfo::text2));
static_assert(allAre<double EventInfo::*>(&EventInfo::value));

static_assert(ascending({offsetof(EventState, word1), offsetof(EventState, switch1), offsetof(EventState, word2),
                         offsetof(EventState, word3), offsetof(EventState, word4)}));
static_assert(allAre<unsigned int EventState::*>(&EventState::word1, &EventState::word2, &EventState::word3,
                                                 &EventState::word4));
static_assert(allAre<char EventState::*>(&EventState::switch1));

namespace gqdb {

static std::string show(const EventInfo& event)
{
    return FieldText()
        .add("word1", event.word1)
        .add("word2", event.word2)
        .add("word3", event.word3)
        .add("word4", event.word4)
        .add("switch1", event.switch1)
        .add("text1", event.text1)
        .add("switch2", event.switch2)
        .add("word5", event.word5)
        .add("value", event.value)
        .add("word6", event.word6)
        .add("word7", event.word7)
        .add("word8", event.word8)
        .add("text2", event.text2)
        .add("switch3", event.switch3)
        .add("word9", event.word9)
        .add("word10", event.word10)
        .add("word11", event.word11)
        .add("word12", event.word12)
        .add("word13", event.word13)
        .text();
}

static std::string show(const EventState& event)
{
    return FieldText()
        .add("word1", event.word1)
        .add("switch1", event.switch1)
        .add("word2", event.word2)
        .add("word3", event.word3)
        .add("word4", event.word4)
        .text();
}

} // namespace gqdb

// --- Defaults -------------------------------------------------------------------

TEST(EventInfo, startsAtZeroAndEmpty)
{
    EXPECT_EQ(showBuilt<EventInfo>(), "word1: 00 00 00 00\n"
                                      "word2: 00 00 00 00\n"
                                      "word3: 00 00 00 00\n"
                                      "word4: 00 00 00 00\n"
                                      "switch1: 00\n"
                                      "text1: \n"
                                      "switch2: 00\n"
                                      "word5: 00 00 00 00\n"
                                      "value: 00 00 00 00 00 00 00 00\n"
                                      "word6: 00 00 00 00\n"
                                      "word7: 00 00 00 00\n"
                                      "word8: 00 00 00 00\n"
                                      "text2: \n"
                                      "switch3: 00\n"
                                      "word9: 00 00 00 00\n"
                                      "word10: 00 00 00 00\n"
                                      "word11: 00 00 00 00\n"
                                      "word12: 00 00 00 00\n"
                                      "word13: 00 00 00 00\n");
}

TEST(EventState, startsAtZero)
{
    EXPECT_EQ(showBuilt<EventState>(), "word1: 00 00 00 00\n"
                                       "switch1: 00\n"
                                       "word2: 00 00 00 00\n"
                                       "word3: 00 00 00 00\n"
                                       "word4: 00 00 00 00\n");
}

// --- Events ---------------------------------------------------------------------

// Each codec has one record, written by hand, and its state after each part that a reader fills.
struct EventInfoCodec {
    using Record = EventInfo;

    static constexpr auto writeOne = &CByte2Rdb::eventInfo2Byte;
    static constexpr auto readOne = &CByte2Rdb::byte2EventInfo;
    static constexpr auto writeList = &CByte2Rdb::eventInfos2Byte;
    static constexpr auto readList = &CByte2Rdb::byte2EventInfos;

    static constexpr int smallest = 59;
    static constexpr int reservedPerItem = 1024;

    static inline const QByteArray bytes = "01020304"            //  0 word1
                                           "11121314"            //  4 word2
                                           "21222324"            //  8 word3
                                           "31323384"            // 12 word4
                                           "41"                  // 16 switch1
                                           "f2"                  // 17 switch2, before text1 on the wire
                                           "51525354"            // 18 word5
                                           "000000000000f83f"    // 22 value 1.5
                                           "61626364"            // 30 word6
                                           "71727374"            // 34 word7
                                           "81828384"            // 38 word8
                                           "91929394"            // 42 word9
                                           "a1a2a3a4"            // 46 word10
                                           "b1"                  // 50 switch3
                                           "c1c2c3c4"            // 51 word13
                                           "0300616263"          // 55 text1 "abc"
                                           "05006465006667"_hex; // 60 text2 "de\0fg", 67 bytes in all

    // The record after a reader was given the first `size` bytes.
    static EventInfo filledFrom(int size)
    {
        EventInfo event;
        if (size < smallest)
            return event;
        event.word1 = 0x04030201;
        event.word2 = 0x14131211;
        event.word3 = 0x24232221;
        event.word4 = 0x84333231;
        event.switch1 = 0x41;
        event.switch2 = char(0xf2);
        event.word5 = 0x54535251;
        event.value = 1.5;
        event.word6 = 0x64636261;
        event.word7 = 0x74737271;
        event.word8 = 0x84838281;
        event.word9 = 0x94939291;
        event.word10 = 0xa4a3a2a1;
        event.switch3 = char(0xb1);
        event.word13 = 0xc4c3c2c1;
        if (size >= 60)
            event.text1 = "abc";
        if (size >= 67)
            event.text2 = std::string("de\0fg", 5);
        return event;
    }

    // The whole record, read into `used`.
    static EventInfo filledOver(const EventInfo& used)
    {
        EventInfo event = filledFrom(67);
        event.text1 = used.text1 + event.text1;
        event.text2 = used.text2 + event.text2;
        event.word11 = used.word11;
        event.word12 = used.word12;
        return event;
    }

    // Differs from the record in every field.
    static EventInfo used()
    {
        EventInfo event;
        event.word1 = event.word2 = event.word3 = event.word4 = event.word5 = event.word6 = event.word7 = 7;
        event.word8 = event.word9 = event.word10 = event.word13 = 7;
        event.switch1 = event.switch2 = event.switch3 = 7;
        event.value = 7;
        event.text1 = "old1";
        event.text2 = "old2";
        event.word11 = 0xd4d3d2d1;
        event.word12 = 0xe4e3e2e1;
        return event;
    }
};

struct EventStateCodec {
    using Record = EventState;

    static constexpr auto writeOne = &CByte2Rdb::eventState2Byte;
    static constexpr auto readOne = &CByte2Rdb::byte2EventState;
    static constexpr auto writeList = &CByte2Rdb::eventStates2Byte;
    static constexpr auto readList = &CByte2Rdb::byte2EventStates;

    static constexpr int smallest = 17;
    static constexpr int reservedPerItem = 17;

    static inline const QByteArray bytes = "01020304"      //  0 word1
                                           "f1"            //  4 switch1
                                           "11121314"      //  5 word2
                                           "21222324"      //  9 word3
                                           "818283f4"_hex; // 13 word4

    static EventState filledFrom(int size)
    {
        EventState event;
        if (size < smallest)
            return event;
        event.word1 = 0x04030201;
        event.switch1 = char(0xf1);
        event.word2 = 0x14131211;
        event.word3 = 0x24232221;
        event.word4 = 0xf4838281;
        return event;
    }

    static EventState filledOver(const EventState&) { return filledFrom(17); }

    static EventState used()
    {
        EventState event;
        event.word1 = event.word2 = event.word3 = event.word4 = 7;
        event.switch1 = 7;
        return event;
    }
};

using EventCodecs = testing::Types<EventInfoCodec, EventStateCodec>;

struct EventNames {
    template <typename Codec>
    static std::string GetName(int)
    {
        return std::is_same_v<Codec, EventInfoCodec> ? "EventInfo" : "EventState";
    }
};

template <typename Codec>
class Event2Byte : public testing::Test {
};
TYPED_TEST_SUITE(Event2Byte, EventCodecs, EventNames);

TYPED_TEST(Event2Byte, appendsTheFieldsInWireOrder)
{
    QByteArray data = "aa55"_hex;
    TypeParam::writeOne(TypeParam::filledFrom(TypeParam::bytes.size()), data);
    EXPECT_EQ(hex(data), hex("aa55"_hex + TypeParam::bytes));
}

TYPED_TEST(Event2Byte, writesTheSmallestSizeForADefaultRecord)
{
    QByteArray data;
    TypeParam::writeOne({}, data);
    EXPECT_EQ(hex(data), hex(QByteArray(TypeParam::smallest, '\0')));
}

TEST(EventInfo2Byte, omitsWord11AndWord12)
{
    EventInfo event = EventInfoCodec::filledFrom(67);
    event.word11 = 0xd4d3d2d1;
    event.word12 = 0xe4e3e2e1;
    QByteArray data;
    CByte2Rdb::eventInfo2Byte(event, data);
    EXPECT_EQ(hex(data), hex(EventInfoCodec::bytes));
}

TEST(EventInfo2Byte, truncatesTheLengthTo16BitsAndWritesTheWholeText)
{
    EventInfo event;
    event.text1 = std::string(65537, 'a');
    QByteArray data;
    CByte2Rdb::eventInfo2Byte(event, data);
    EXPECT_TRUE(data == QByteArray(55, '\0') + "0100"_hex + QByteArray(65537, 'a') + "0000"_hex);
}

template <typename Codec>
class Byte2Event : public testing::Test {
protected:
    using Record = typename Codec::Record;

    static int read(const QByteArray& bytes, Record& event)
    {
        return Codec::readOne(heapBytes(bytes).data(), bytes.size(), event);
    }
};
TYPED_TEST_SUITE(Byte2Event, EventCodecs, EventNames);

TYPED_TEST(Byte2Event, readsTheFieldsAndReturnsTheSize)
{
    typename TypeParam::Record event;
    EXPECT_EQ(TestFixture::read(TypeParam::bytes, event), TypeParam::bytes.size());
    EXPECT_EQ(show(event), show(TypeParam::filledFrom(TypeParam::bytes.size())));
}

TYPED_TEST(Byte2Event, ignoresBytesAfterTheRecord)
{
    typename TypeParam::Record event;
    EXPECT_EQ(TestFixture::read(TypeParam::bytes + "ffffff"_hex, event), TypeParam::bytes.size());
    EXPECT_EQ(show(event), show(TypeParam::filledFrom(TypeParam::bytes.size())));
}

TYPED_TEST(Byte2Event, overwritesNumbersAndAppendsToTexts)
{
    auto event = TypeParam::used();
    EXPECT_EQ(TestFixture::read(TypeParam::bytes, event), TypeParam::bytes.size());
    EXPECT_EQ(show(event), show(TypeParam::filledOver(TypeParam::used())));
}

TYPED_TEST(Byte2Event, acceptsADefaultRecord)
{
    typename TypeParam::Record event;
    EXPECT_EQ(TestFixture::read(QByteArray(TypeParam::smallest, '\0'), event), TypeParam::smallest);
    EXPECT_EQ(show(event), show(typename TypeParam::Record()));
}

TYPED_TEST(Byte2Event, refusesEveryShorterBufferAndKeepsWhatItRead)
{
    for (int size = 0; size < TypeParam::bytes.size(); ++size) {
        SCOPED_TRACE(size);
        typename TypeParam::Record event;
        EXPECT_EQ(TestFixture::read(TypeParam::bytes.left(size), event), 0);
        EXPECT_EQ(show(event), show(TypeParam::filledFrom(size)));
    }
    typename TypeParam::Record event;
    EXPECT_EQ(TypeParam::readOne(TypeParam::bytes.constData(), -1, event), 0);
    EXPECT_EQ(show(event), show(typename TypeParam::Record()));
}

TEST(Byte2EventInfo, refusesAText1ThatLeavesNoRoomForText2)
{
    const QByteArray numbers = EventInfoCodec::bytes.left(55);
    EventInfo expected = EventInfoCodec::filledFrom(59);

    EventInfo event;
    QByteArray bytes = numbers + "0100 61 00"_hex; // 59 bytes: half of the length of text2 is missing
    EXPECT_EQ(CByte2Rdb::byte2EventInfo(heapBytes(bytes).data(), 59, event), 0);
    expected.text1 = "a";
    EXPECT_EQ(show(event), show(expected));

    event = EventInfo();
    bytes = numbers + "0200 6162"_hex; // 59 bytes: nothing after text1
    EXPECT_EQ(CByte2Rdb::byte2EventInfo(heapBytes(bytes).data(), 59, event), 0);
    expected.text1 = "ab";
    EXPECT_EQ(show(event), show(expected));
}

TEST(Byte2EventInfo, refusesATextThatRunsPastTheBuffer)
{
    const QByteArray numbers = EventInfoCodec::bytes.left(55);
    for (const char* length : {"0300", "0080", "ffff"}) {
        SCOPED_TRACE(length);
        EventInfo event;
        QByteArray bytes = numbers + QByteArray::fromHex(length) + "6162"_hex; // text1
        EXPECT_EQ(CByte2Rdb::byte2EventInfo(heapBytes(bytes).data(), bytes.size(), event), 0);
        EXPECT_EQ(show(event), show(EventInfoCodec::filledFrom(59)));

        event = EventInfo();
        bytes = numbers + "0300616263"_hex + QByteArray::fromHex(length) + "6465"_hex; // text2
        EXPECT_EQ(CByte2Rdb::byte2EventInfo(heapBytes(bytes).data(), bytes.size(), event), 0);
        EXPECT_EQ(show(event), show(EventInfoCodec::filledFrom(60)));
    }
}

TEST(Byte2EventInfo, readsTextsOf65535Bytes)
{
    const QByteArray text = "ffff"_hex + QByteArray(65535, 'a');
    const QByteArray bytes = EventInfoCodec::bytes.left(55) + text + text;
    EventInfo event;
    EXPECT_EQ(CByte2Rdb::byte2EventInfo(heapBytes(bytes).data(), bytes.size(), event), 55 + 2 * 65537);
    EXPECT_TRUE(event.text1 == std::string(65535, 'a'));
    EXPECT_TRUE(event.text2 == std::string(65535, 'a'));
}

// --- Lists of events ------------------------------------------------------------

template <typename Codec>
class Events2Byte : public testing::Test {
};
TYPED_TEST_SUITE(Events2Byte, EventCodecs, EventNames);

TYPED_TEST(Events2Byte, appendsCountAndItems)
{
    QByteArray data = "aa55"_hex;
    TypeParam::writeList({TypeParam::filledFrom(TypeParam::bytes.size()), {}}, data);
    EXPECT_EQ(hex(data), hex("aa55"_hex + "02000000"_hex + TypeParam::bytes + QByteArray(TypeParam::smallest, '\0')));
}

TYPED_TEST(Events2Byte, writesOnlyTheCountOfAnEmptyList)
{
    QByteArray data = "aa55"_hex;
    TypeParam::writeList({}, data);
    EXPECT_EQ(hex(data), "aa 55 00 00 00 00");
}

TYPED_TEST(Events2Byte, countsInFourBytes)
{
    QByteArray data;
    TypeParam::writeList(std::vector<typename TypeParam::Record>(0x0203), data);
    EXPECT_TRUE(data == "03020000"_hex + QByteArray(0x0203 * TypeParam::smallest, '\0'));
}

TYPED_TEST(Events2Byte, reservesMemoryForTheItems)
{
    for (int count : {0, 1, 3, 100}) {
        SCOPED_TRACE(count);
        QByteArray data(1000, 'a');
        TypeParam::writeList(std::vector<typename TypeParam::Record>(size_t(count)), data);
        QByteArray reserved(1000, 'a');
        reserved.reserve(1000 + count * TypeParam::reservedPerItem + 4);
        EXPECT_EQ(data.capacity(), reserved.capacity());
    }
}

TYPED_TEST(Events2Byte, keepsALargerReservation)
{
    QByteArray data;
    data.reserve(50000);
    TypeParam::writeList(std::vector<typename TypeParam::Record>(3), data);
    EXPECT_EQ(data.capacity(), 50000);
}

TEST(EventInfos2Byte, writesEventsLargerThanTheReservation)
{
    EventInfo event;
    event.text2 = std::string(5000, 'a');
    QByteArray data;
    CByte2Rdb::eventInfos2Byte({event, EventInfo()}, data);
    EXPECT_TRUE(data ==
                "02000000"_hex + QByteArray(57, '\0') + "8813"_hex + QByteArray(5000, 'a') + QByteArray(59, '\0'));
}

template <typename Codec>
class Byte2Events : public testing::Test {
protected:
    using Record = typename Codec::Record;
    using List = std::vector<Record>;

    static QByteArray twoItems() { return "02000000"_hex + Codec::bytes + QByteArray(Codec::smallest, '\0'); }
    static List twoEvents() { return {Codec::filledFrom(Codec::bytes.size()), Record()}; }

    static List usedEvents(size_t count) { return List(count, Codec::used()); }

    static int read(const QByteArray& bytes, List& list)
    {
        return Codec::readList(heapBytes(bytes).data(), bytes.size(), list);
    }
};
TYPED_TEST_SUITE(Byte2Events, EventCodecs, EventNames);

TYPED_TEST(Byte2Events, fillsAnEmptyVector)
{
    typename TestFixture::List list;
    EXPECT_EQ(TestFixture::read(TestFixture::twoItems(), list), 1);
    EXPECT_EQ(showAll(list), showAll(TestFixture::twoEvents()));
}

TYPED_TEST(Byte2Events, ignoresBytesAfterTheLastItem)
{
    typename TestFixture::List list;
    EXPECT_EQ(TestFixture::read(TestFixture::twoItems() + "ffffff"_hex, list), 1);
    EXPECT_EQ(showAll(list), showAll(TestFixture::twoEvents()));
}

TYPED_TEST(Byte2Events, reusesElementsAndDropsThoseBeyondTheCount)
{
    const QByteArray bytes = "02000000"_hex + TypeParam::bytes + TypeParam::bytes;
    auto list = TestFixture::usedEvents(5);
    list[1] = {};
    EXPECT_EQ(TestFixture::read(bytes, list), 1);
    const typename TestFixture::List expected = {TypeParam::filledOver(TypeParam::used()), TypeParam::filledOver({})};
    EXPECT_EQ(showAll(list), showAll(expected));
}

TYPED_TEST(Byte2Events, reusesElementsAndAddsMissingOnes)
{
    const QByteArray bytes = "03000000"_hex + TypeParam::bytes + TypeParam::bytes + TypeParam::bytes;
    auto list = TestFixture::usedEvents(1);
    EXPECT_EQ(TestFixture::read(bytes, list), 1);
    const typename TestFixture::List expected = {TypeParam::filledOver(TypeParam::used()), TypeParam::filledOver({}),
                                                 TypeParam::filledOver({})};
    EXPECT_EQ(showAll(list), showAll(expected));
}

TYPED_TEST(Byte2Events, emptiesTheVectorOnACountOfZero)
{
    for (const QByteArray& bytes : {"00000000"_hex, "00000000 ffffffff"_hex}) {
        auto list = TestFixture::usedEvents(3);
        EXPECT_EQ(TestFixture::read(bytes, list), 1);
        EXPECT_TRUE(list.empty());
        EXPECT_EQ(TestFixture::read(bytes, list), 1);
        EXPECT_TRUE(list.empty());
    }
}

TYPED_TEST(Byte2Events, refusesABufferBelowTheCountAndLeavesTheVector)
{
    for (int size = 0; size < 4; ++size) {
        SCOPED_TRACE(size);
        auto list = TestFixture::usedEvents(3);
        EXPECT_EQ(TestFixture::read(TestFixture::twoItems().left(size), list), -2);
        EXPECT_EQ(showAll(list), showAll(TestFixture::usedEvents(3)));
    }
    auto list = TestFixture::usedEvents(3);
    EXPECT_EQ(TypeParam::readList(TestFixture::twoItems().constData(), -1, list), -2);
    EXPECT_EQ(showAll(list), showAll(TestFixture::usedEvents(3)));
}

TYPED_TEST(Byte2Events, clearsTheVectorOnATruncatedItem)
{
    const QByteArray bytes = TestFixture::twoItems();
    for (int size = 4; size < bytes.size(); ++size) {
        SCOPED_TRACE(size);
        for (size_t used : {0u, 1u, 5u}) {
            auto list = TestFixture::usedEvents(used);
            EXPECT_EQ(TestFixture::read(bytes.left(size), list), -3);
            EXPECT_TRUE(list.empty());
        }
    }
}

TYPED_TEST(Byte2Events, clearsTheVectorIfItemsAreMissing)
{
    QByteArray bytes = TestFixture::twoItems();
    bytes[0] = 3;
    for (size_t used : {0u, 3u, 9u}) {
        auto list = TestFixture::usedEvents(used);
        EXPECT_EQ(TestFixture::read(bytes, list), -3);
        EXPECT_TRUE(list.empty());
    }
}

TYPED_TEST(Byte2Events, readsAFourByteCount)
{
    const QByteArray bytes = "03020000"_hex + QByteArray(0x0203 * TypeParam::smallest, '\0');
    typename TestFixture::List list;
    EXPECT_EQ(TestFixture::read(bytes, list), 1);
    EXPECT_EQ(list.size(), 0x0203u);

    list.clear();
    EXPECT_EQ(TestFixture::read("00000100"_hex, list), -3); // 65536 elements, none of them in the buffer
    EXPECT_TRUE(list.empty());
}

TYPED_TEST(Byte2Events, propagatesTheAllocationFailureOfAHugeCount)
{
    for (const char* count : {"00000010", "ffffff7f", "00000080", "ffffffff"}) {
        SCOPED_TRACE(count);
        auto list = TestFixture::usedEvents(3);
        EXPECT_TRUE(failsToAllocate([&] { TestFixture::read(QByteArray::fromHex(count), list); }));
        EXPECT_EQ(showAll(list), showAll(TestFixture::usedEvents(3)));
    }
}
