#include "gqtool/frames/frameText.h"

#include "gqtool/frames/frameMembers.h"
#include "support/goldenFile.h"
#include "support/hex.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

static StreamItem itemOf(const QByteArray& stream)
{
    FrameStream frames;
    std::vector<StreamItem> items = frames.feed(stream);
    for (const StreamItem& item : frames.end())
        items.push_back(item);
    return items.at(0);
}

static std::string textOf(const QByteArray& stream)
{
    return itemText(itemOf(stream)).toStdString();
}

TEST(FrameText, namesTheReadyMadeCommands)
{
    EXPECT_EQ(textOf("68 04000000 0100 00 00 01 03000000 0000 16"_hex), "systemState, sequence 1, 4 bytes: 3");
    EXPECT_EQ(textOf("68 04000000 0100 00 00 02 03000000 0000 16"_hex), "systemTime, sequence 1, 4 bytes: 3");
    EXPECT_EQ(textOf("68 04000000 0100 00 00 03 03000000 0000 16"_hex), "clear, sequence 1, 4 bytes: 3");
    EXPECT_EQ(textOf("68 04000000 0100 00 00 06 ffffffff 0000 16"_hex), "setState, sequence 1, 4 bytes: -1");
    EXPECT_EQ(textOf("68 04000000 0100 00 00 04 03000000 0000 16"_hex), "command 0x04, sequence 1, 4 bytes: 3");
}

TEST(FrameText, printsTheTwoIntegersOfSetTime)
{
    EXPECT_EQ(textOf("68 08000000 0400 00 00 05 e8030000 d0070000 0000 16"_hex),
              "setTime, sequence 4, 8 bytes: 1000, 2000");
}

TEST(FrameText, printsTheCodeOfAnErrorFrame)
{
    EXPECT_EQ(textOf("68 04000000 0a00 00 00 ff f9ffffff 0000 16"_hex), "error, sequence 10, 4 bytes: code -7");
    EXPECT_EQ(textOf("68 01000000 0a00 00 00 ff f9 0000 16"_hex), "error, sequence 10, 1 byte: no code");
    EXPECT_EQ(textOf("68 00000000 0a00 00 00 ff 0000 16"_hex), "error, sequence 10, 0 bytes: no code");
}

TEST(FrameText, printsPayloadsByTheFormThatTheyFit)
{
    EXPECT_EQ(textOf("68 00000000 0000 00 00 20 0000 16"_hex), "command 0x20, sequence 0, 0 bytes");
    EXPECT_EQ(textOf("68 02000000 0000 00 00 20 0102 0000 16"_hex), "command 0x20, sequence 0, 2 bytes: 01 02");
    EXPECT_EQ(textOf("68 10000000 0700 00 00 20 03000000 64000000 ffffffff 70110100 0000 16"_hex),
              "command 0x20, sequence 7, 16 bytes: 3 integers: 100, -1, 70000");
    EXPECT_EQ(textOf("68 07000000 0800 00 00 21 03000000 0102fe 0000 16"_hex),
              "command 0x21, sequence 8, 7 bytes: 3 bytes: 01 02 fe");
    EXPECT_EQ(textOf("68 05000000 0800 00 00 21 01000000 09 0000 16"_hex),
              "command 0x21, sequence 8, 5 bytes: 1 byte: 09");
    EXPECT_EQ(textOf("68 15000000 0900 00 00 22 02000000 0400 0200 6f6e 0900 0700 4772c3b6c39f65 0000 16"_hex),
              "command 0x22, sequence 9, 21 bytes: 2 texts: \"on\", \"Größe\"");
    EXPECT_EQ(textOf("68 06000000 0000 00 00 20 ffffffff 0102 0000 16"_hex),
              "command 0x20, sequence 0, 6 bytes: ff ff ff ff 01 02");
}

TEST(FrameText, printsThePayloadBeforeTheDatagramsPadding)
{
    const auto datagram = [](const QByteArray& payload) {
        return "68 33000000 0000 00 00 20"_hex + payload + QByteArray(51 - payload.size(), '\0') + "0000 16"_hex;
    };
    const std::string head = "command 0x20, sequence 0, 51 bytes: ";
    EXPECT_EQ(textOf(datagram("05000000"_hex)), head + "5");
    EXPECT_EQ(textOf(datagram("01000000 05000000"_hex)), head + "1 integer: 5");
    EXPECT_EQ(textOf(datagram("02000000 e8030000 d0070000"_hex)), head + "2 integers: 1000, 2000");
    EXPECT_EQ(textOf(datagram("03000000 010203"_hex)), head + "3 bytes: 01 02 03");
    EXPECT_EQ(textOf(datagram("01000000 0400 0200 6f6e"_hex)), head + "1 text: \"on\"");
}

TEST(FrameText, keepsLongPayloadsOnAShortLine)
{
    QByteArray ints = "68 2c000000 0000 00 00 20 0a000000"_hex;
    for (int i = 0; i < 10; ++i)
        ints += "07000000"_hex;
    EXPECT_EQ(textOf(ints + "0000 16"_hex),
              "command 0x20, sequence 0, 44 bytes: 10 integers: 7, 7, 7, 7, 7, 7, 7, 7, ...");
    EXPECT_EQ(textOf("68 15000000 0000 00 00 21 11000000 0102030405060708090a0b0c0d0e0f1011 0000 16"_hex),
              "command 0x21, sequence 0, 21 bytes: 17 bytes: 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10 ...");
    const QByteArray text = "68 31000000 0000 00 00 22 01000000 2b00 2900"_hex + QByteArray(41, 'x') + "0000 16"_hex;
    EXPECT_EQ(textOf(text), "command 0x22, sequence 0, 49 bytes: 1 text: \"" + std::string(40, 'x') + "...\"");
}

TEST(FrameText, escapesControlCharacters)
{
    EXPECT_EQ(textOf("68 0b000000 0000 00 00 22 01000000 0500 0300 1b5b22 0000 16"_hex),
              "command 0x22, sequence 0, 11 bytes: 1 text: \"\\u001b[\\u0022\"");
}

TEST(FrameText, printsFaultsAndGarbageInWords)
{
    EXPECT_EQ(textOf("0d0a"_hex), "garbage, 2 bytes: 0d 0a");
    EXPECT_EQ(textOf("68 04000000 0100 00 00 01 03000000 0000 17"_hex),
              "wrong end 0x17 instead of 0x16: systemState, sequence 1, 4 bytes: 3");
    EXPECT_EQ(textOf("68 ffffffff 0100 00 00 01"_hex), "bad length 4294967295; a client would wait for the rest of it");
    EXPECT_EQ(textOf("68 0400"_hex), "cut, 3 of the 10 bytes of a header: 68 04 00");
    EXPECT_EQ(textOf("68 04000000 0100 00 00 01 0300"_hex),
              "cut, 12 of 17 bytes: systemState, sequence 1, 4 bytes: 03 00");
    EXPECT_EQ(textOf("68 00000004 0001 00 00 01 00000003 0000 16"_hex),
              "length in the wrong byte order, 67108864 instead of 4; a client would wait for the rest of it");
}

// Compares the parts of a golden stream, without the keys that need transport, direction and form.
static void expectGolden(const QString& name)
{
    FrameStream frames;
    std::vector<StreamItem> items = frames.feed(goldenFile("frames/" + name.toStdString() + ".hex"));
    for (const StreamItem& item : frames.end())
        items.push_back(item);
    QJsonArray parts;
    for (const StreamItem& item : items)
        parts.append(jsonOf(item));

    QFile file(GQLIB_GOLDEN "/frames/" + name + ".json");
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QJsonArray expected;
    for (const QJsonValue& value : QJsonDocument::fromJson(file.readAll()).object()["value"].toArray()) {
        QJsonObject part = value.toObject();
        if (part.value("fault") == "form")
            part.remove("fault");
        for (const char* key : {"form", "content", "rest"})
            part.remove(key);
        expected.append(part);
    }
    EXPECT_EQ(QJsonDocument(parts).toJson().toStdString(), QJsonDocument(expected).toJson().toStdString());
}

TEST(FrameJson, matchesTheGoldenFrames)
{
    const QStringList files = QDir(GQLIB_GOLDEN "/frames").entryList({"*.hex"});
    EXPECT_GT(files.size(), 40);
    for (const QString& file : files) {
        SCOPED_TRACE(file.toStdString());
        expectGolden(file.chopped(4));
    }
}

// --- Maps ---------------------------------------------------------------------------------------------------------

class MappedFrameText : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(map.add("0x20 levels ints bytes\n"
                            "0x21 pair intPair strings\n"
                            "0x22 any hex int\n"
                            "0x23 nothing - ints\n"
                            "0x35 currentValues int bytes:boolDatas\n"
                            "0x36 state int bytes:boolData\n"
                            "1 stateOfAll int ints\n")
                        .isEmpty());
    }

    std::string requestText(const QByteArray& stream) const
    {
        return itemText(itemOf(stream), {false, true, {}, &map}).toStdString();
    }
    std::string replyText(const QByteArray& stream) const
    {
        return itemText(itemOf(stream), {false, false, {}, &map}).toStdString();
    }

    CommandMap map;
};

TEST_F(MappedFrameText, namesCommandsAndReadsPayloadsInTheirForms)
{
    const QByteArray list = "68 08000000 0100 00 00 20 01000000 03000000 0000 16"_hex;
    EXPECT_EQ(requestText(list), "levels, sequence 1, 8 bytes: 1 integer: 3");
    EXPECT_EQ(replyText(list), "levels, sequence 1, 8 bytes: 1 byte: 03");
    EXPECT_EQ(requestText("68 08000000 0100 00 00 21 04000000 03000000 0000 16"_hex),
              "pair, sequence 1, 8 bytes: 4, 3");
    EXPECT_EQ(replyText("68 0a000000 0100 00 00 21 01000000 0400 0200 6f6e 0000 16"_hex),
              "pair, sequence 1, 10 bytes: 1 text: \"on\"");
    EXPECT_EQ(requestText("68 04000000 0100 00 00 22 04000000 0000 16"_hex), "any, sequence 1, 4 bytes: 04 00 00 00");
    EXPECT_EQ(requestText("68 04000000 0100 00 00 23 04000000 0000 16"_hex),
              "nothing, sequence 1, 4 bytes: 04 00 00 00");
    EXPECT_EQ(replyText("68 08000000 0100 00 00 01 01000000 03000000 0000 16"_hex),
              "stateOfAll, sequence 1, 8 bytes: 1 integer: 3");
}

TEST_F(MappedFrameText, showsBytesThatDoNotHaveTheirForm)
{
    EXPECT_EQ(replyText("68 04000000 0100 00 00 23 04000000 0000 16"_hex),
              "nothing, sequence 1, 4 bytes: 04 00 00 00 (not ints)");
    EXPECT_EQ(replyText("68 02000000 0100 00 00 22 0400 0000 16"_hex), "any, sequence 1, 2 bytes: 04 00 (not int)");
    EXPECT_EQ(replyText("68 04000000 0100 00 00 35 04000000 0000 16"_hex),
              "currentValues, sequence 1, 4 bytes: 04 00 00 00 (not bytes)");
}

TEST_F(MappedFrameText, showsRecords)
{
    EXPECT_EQ(replyText("68 0e000000 0100 00 00 36 0a000000 01 02000000 03000000 04 0000 16"_hex),
              "state, sequence 1, 14 bytes: boolData: value 1, stamp1 2, stamp2 3, flag1 4");
    EXPECT_EQ(replyText("68 1c000000 0100 00 00 35 18000000 02000000 01 02000000 03000000 04 "
                        "00 05000000 06000000 07 0000 16"_hex),
              "currentValues, sequence 1, 28 bytes: boolDatas, 2: {value 1, stamp1 2, stamp2 3, flag1 4}, "
              "{value 0, stamp1 5, stamp2 6, flag1 7}");
    EXPECT_EQ(replyText("68 62000000 0100 00 00 35 5e000000 09000000"_hex +
                        QByteArray("00 05000000 06000000 07"_hex).repeated(9) + "0000 16"_hex),
              "currentValues, sequence 1, 98 bytes: boolDatas, 9: {value 0, stamp1 5, stamp2 6, flag1 7}" +
                  QByteArray(", {value 0, stamp1 5, stamp2 6, flag1 7}").repeated(7).toStdString() + ", ...");
    EXPECT_EQ(replyText("68 0c000000 0100 00 00 36 08000000 01 02000000 030000 0000 16"_hex),
              "state, sequence 1, 12 bytes: boolData: value 1, stamp1 2; byte 5: stamp2 needs 4 bytes, "
              "but only 3 bytes remain");
}
