#include "gqtool/map/commandMap.h"

#include "gqtool/records/recordFields.h"

#include <gtest/gtest.h>

static std::string errorOf(const QByteArray& text)
{
    return CommandMap().add(text).join('\n').toStdString();
}

TEST(CommandMap, findsCommandsByNumberAndName)
{
    CommandMap map;
    EXPECT_TRUE(map.add("# the plant\n"
                        "\n"
                        "0x35 currentValues int bytes:pointRealDatas # of all tanks\n"
                        "\t54\twave  hex bytes\r\n"
                        "0 stop - int\n"
                        "0XFE all.of-it_2 ints strings\n"
                        "007 pair intPair ints")
                    .isEmpty());
    ASSERT_EQ(map.all().size(), 5U);
    const MappedCommand* values = map.find(0x35);
    ASSERT_NE(values, nullptr);
    EXPECT_EQ(values->name, "currentValues");
    EXPECT_EQ(values->request, "int");
    EXPECT_EQ(values->reply, "bytes");
    ASSERT_NE(values->records, nullptr);
    EXPECT_STREQ(values->records->name, "pointRealDatas");
    EXPECT_EQ(map.find("currentValues"), values);
    ASSERT_NE(map.find("wave"), nullptr);
    EXPECT_EQ(map.find("wave")->number, 54);
    EXPECT_EQ(map.find("wave")->records, nullptr);
    EXPECT_EQ(map.find("stop")->number, 0);
    EXPECT_EQ(map.find("stop")->request, "-");
    EXPECT_EQ(map.find("all.of-it_2")->number, 0xfe);
    EXPECT_EQ(map.find("pair")->number, 7);
    EXPECT_EQ(map.find("Wave"), nullptr);
    EXPECT_EQ(map.find(0x34), nullptr);
}

TEST(CommandMap, isEmptyWithoutLines)
{
    CommandMap map;
    EXPECT_TRUE(map.add("").isEmpty());
    EXPECT_TRUE(map.add("# only this\n\n  \t\r\n").isEmpty());
    EXPECT_TRUE(map.all().empty());
}

TEST(CommandMap, ignoresAByteOrderMark)
{
    CommandMap map;
    EXPECT_TRUE(map.add("\xef\xbb\xbf"
                        "0x20 levels int ints\n")
                    .isEmpty());
    EXPECT_NE(map.find("levels"), nullptr);
}

TEST(CommandMap, namesTheLineAndWhatItExpected)
{
    EXPECT_EQ(errorOf("0x20 levels int\n"),
              "line 1: a line must be 'COMMAND NAME REQUEST REPLY', got '0x20 levels int'");
    EXPECT_EQ(errorOf("0x20 levels int ints and more\n"),
              "line 1: a line must be 'COMMAND NAME REQUEST REPLY', got '0x20 levels int ints and more'");
    EXPECT_EQ(errorOf("# head\n255 levels int ints"), "line 2: COMMAND must be an integer from 0 to 254, got '255'");
    for (const char* number : {"0xff", "-1", "+1", "x20", "0x", "1e1", "4294967296", "99999999999999999999", "0x1.0"})
        EXPECT_EQ(errorOf(QByteArray(number) + " levels int ints"),
                  std::string("line 1: COMMAND must be an integer from 0 to 254, got '") + number + "'");
    for (const char* name : {"2levels", "_levels", "levels!", "\xc3\xa9tat", "-"})
        EXPECT_EQ(errorOf(QByteArray("0x20 ") + name + " int ints"),
                  std::string("line 1: NAME must be a letter followed by letters, digits, '_', '.' or '-', got '") +
                      name + "'");
    EXPECT_EQ(errorOf("0x20 levels bytes ints"), "line 1: REQUEST must be -, int, intPair, ints or hex, got 'bytes'");
    EXPECT_EQ(errorOf("0x20 levels intpair ints"),
              "line 1: REQUEST must be -, int, intPair, ints or hex, got 'intpair'; did you mean 'intPair'?");
    EXPECT_EQ(errorOf("0x20 levels int Int"),
              "line 1: REPLY must be int, ints, bytes, strings or bytes:FORM, got 'Int'; did you mean 'int'?");
    for (const char* reply : {"floats", "ints:wave", "bytes_wave", "-"})
        EXPECT_EQ(errorOf(QByteArray("0x20 levels int ") + reply),
                  std::string("line 1: REPLY must be int, ints, bytes, strings or bytes:FORM, got '") + reply + "'");
    EXPECT_EQ(errorOf("0x20 levels int bytes:waves"),
              "line 1: REPLY has no form 'waves'; gqtool decode --list prints the forms; did you mean 'wave'?");
    EXPECT_EQ(errorOf("0x20 levels int bytes:"), "line 1: REPLY has no form ''; gqtool decode --list prints the forms");
}

TEST(CommandMap, refusesANumberOrNameThatOccursTwice)
{
    EXPECT_EQ(errorOf("0x20 levels int ints\n\n32 others int ints"), "line 3: COMMAND 0x20 is also in line 1");
    EXPECT_EQ(errorOf("#\n0x20 levels int ints\n0x21 levels int ints"), "line 3: NAME levels is also in line 2");
}

TEST(CommandMap, listsTheErrorsOfAllLinesAndReadsTheOthers)
{
    CommandMap map;
    const QStringList errors = map.add("0x20 levels int ints\n"
                                       "levels\n"
                                       "# comment\n"
                                       "0x21 others ints\n"
                                       "0x22 more int ints\n"
                                       "0x20 again int ints\n");
    EXPECT_EQ(errors.join('\n').toStdString(), "line 2: a line must be 'COMMAND NAME REQUEST REPLY', got 'levels'\n"
                                               "line 4: a line must be 'COMMAND NAME REQUEST REPLY', got "
                                               "'0x21 others ints'\n"
                                               "line 6: COMMAND 0x20 is also in line 1");
    EXPECT_EQ(map.all().size(), 2U);
}

TEST(CommandMap, shortensALineThatIsLong)
{
    EXPECT_EQ(errorOf(QByteArray(100, 'x')),
              "line 1: a line must be 'COMMAND NAME REQUEST REPLY', got '" + std::string(60, 'x') + "...'");
}

// QString would end there.
TEST(CommandMap, refusesAZeroByte)
{
    EXPECT_EQ(errorOf(QByteArray("\0\n", 2)), "line 1: must not contain a zero byte");
    EXPECT_EQ(errorOf(QByteArray("0x20 levels int ints\n0x21 more int ints\0 and", 44)),
              "line 2: must not contain a zero byte");
    const char utf16[] = "\0#\0 \0a\0\n"; // most significant byte first
    EXPECT_EQ(errorOf(QByteArray(utf16, sizeof utf16 - 1)), "line 1: must not contain a zero byte");
}
