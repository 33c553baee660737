#include "support/gqtoolProgram.h"
#include "support/inputFile.h"

#include <gtest/gtest.h>

// The catalogue's check value of CRC-16/MODBUS is that of "123456789", 0x4b37; the bytes add up to 477, 0x1dd.
static const QString nineDigits = "31 32 33 34 35 36 37 38 39";
static const QString nineDigitsSums = "9 bytes: 31 32 33 34 35 36 37 38 39\n"
                                      "CRC-16, low byte first   37 4b\n"
                                      "CRC-16, high byte first  4b 37\n"
                                      "byte sum                 dd\n";

TEST(GqtoolSum, printsTheSumsInBothOrders)
{
    const Outcome outcome = run({"sum", nineDigits});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, nineDigitsSums);
    EXPECT_EQ(outcome.errors, "");
}

TEST(GqtoolSum, printsThemAsJson)
{
    EXPECT_EQ(run({"sum", "--json", nineDigits}).output,
              R"({"byteSum":221,"crc16":19255,"crcHighFirst":"4b 37","crcLowFirst":"37 4b",)"
              R"("hex":"31 32 33 34 35 36 37 38 39","size":9})"
              "\n");
}

TEST(GqtoolSum, checksTheEndOfATelegram)
{
    // A Modbus RTU request to read ten registers.
    Outcome outcome = run({"sum", "--check", "crc", "01 03 00 00 00 0a c5 cd"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "c5 cd: right, CRC-16, low byte first\n");

    outcome = run({"sum", "--check", "crc-high-first", "01 03 00 00 00 0a c5 cd"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, "c5 cd: wrong, CRC-16, high byte first of the preceding bytes is cd c5\n");

    EXPECT_EQ(run({"sum", "--check", "crc-high-first", nineDigits, "4b37"}).exitCode, 0);
    EXPECT_EQ(run({"sum", "--check", "sum", nineDigits, "dd"}).exitCode, 0);
    EXPECT_EQ(run({"sum", "--check", "sum", nineDigits, "dc"}).exitCode, 1);
}

TEST(GqtoolSum, checksAsJson)
{
    EXPECT_EQ(run({"sum", "--json", "--check", "sum", "01 02 04"}).output,
              R"({"check":"sum","expected":"03","found":"04","right":false})"
              "\n");
}

TEST(GqtoolSum, requiresBytesBeforeTheSumToCheck)
{
    const Outcome outcome = run({"sum", "--check", "crc", "ff ff"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "gqtool: --check crc needs at least 3 bytes, got 2\n");
    EXPECT_EQ(run({"sum", "--check", "md5", "ff ff"}).exitCode, 2);
}

TEST(GqtoolSum, requiresAtLeastOneByte)
{
    const Outcome outcome = run({"sum", "# nothing"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "gqtool: BYTES: the input is empty\n");
}

TEST(GqtoolSum, printsTheBeginningOfManyBytes)
{
    const InputFile file(QByteArray(5000, '\1')); // they add up to 5000, 0x1388
    const Outcome outcome = run({"sum", "--raw", "--file", file.path});
    EXPECT_TRUE(outcome.output.startsWith("5000 bytes: 01 01 "));
    EXPECT_EQ(outcome.output.count("01"), 4096);
    EXPECT_TRUE(outcome.output.contains("01 ...\n"));
    EXPECT_TRUE(outcome.output.endsWith(" 88\n"));
    EXPECT_FALSE(run({"sum", "--json", "--raw", "--file", file.path}).output.contains("hex"));
}
