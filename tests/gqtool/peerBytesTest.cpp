// What the first bytes of a peer say about the link.

#include "gqtool/probe/peerBytes.h"

#include "support/chance.h"
#include "support/frames.h"

#include <gtest/gtest.h>

static const AwaitedBytes everyAwaited[] = {AwaitedBytes::greeting, AwaitedBytes::firstReply, AwaitedBytes::reply};

static std::string wordOf(const ByteVerdict& verdict)
{
    std::string word = causeWord(verdict.cause).toStdString();
    if (!verdict.protocol.isEmpty())
        word += ' ' + verdict.protocol.toStdString();
    return word + (verdict.isFinal ? "" : "?");
}

static std::string judged(const QByteArray& bytes, AwaitedBytes awaited)
{
    return wordOf(judgeBytes(bytes, awaited));
}

TEST(JudgeBytes, findsNothingInNoBytes)
{
    EXPECT_EQ(judged("", AwaitedBytes::greeting), "silent?");
    EXPECT_EQ(judged("", AwaitedBytes::firstReply), "no-reply?");
    EXPECT_EQ(judged("", AwaitedBytes::reply), "no-reply?");
}

TEST(JudgeBytes, takesAPositiveGreetingOnly)
{
    const QByteArray zero = "68 04000000 0000 00 00 00 00000000 0000 16"_hex;
    const QByteArray negative = "68 04000000 0000 00 00 00 ffffffff 0000 16"_hex;
    EXPECT_EQ(judged(greeting, AwaitedBytes::greeting), "healthy");
    EXPECT_EQ(judged(zero, AwaitedBytes::greeting), "not-greeted");
    EXPECT_EQ(judged(negative, AwaitedBytes::greeting), "not-greeted");
    EXPECT_EQ(judgeBytes(negative, AwaitedBytes::greeting).value, -1);
}

TEST(JudgeBytes, takesAnyIntegerAsAReply)
{
    const QByteArray minus1 = "68 04000000 0000 00 00 01 ffffffff 0000 16"_hex;
    for (const AwaitedBytes awaited : {AwaitedBytes::firstReply, AwaitedBytes::reply}) {
        const ByteVerdict verdict = judgeBytes(minus1, awaited);
        EXPECT_EQ(wordOf(verdict), "healthy");
        EXPECT_EQ(verdict.value, -1);
    }
}

TEST(JudgeBytes, takesTheFirstFrameAndSkipsWhatPrecedesIt)
{
    EXPECT_EQ(judged("ready\r\n" + greeting + errorMinus7, AwaitedBytes::greeting), "healthy");
    EXPECT_EQ(judged("ready\r\n" + wrongEnd + greeting, AwaitedBytes::greeting), "bad-frame");
    EXPECT_EQ(judged(errorMinus7 + greeting, AwaitedBytes::greeting), "error-frame");
    EXPECT_EQ(judgeBytes("ok" + greeting, AwaitedBytes::greeting).detail.english(),
              "a greeting of 1, after 2 bytes without a frame");
    EXPECT_EQ(judgeBytes("x" + greeting, AwaitedBytes::greeting).detail.english(),
              "a greeting of 1, after 1 byte without a frame");
}

TEST(JudgeBytes, readsTheCodeOfAnErrorFrame)
{
    for (const AwaitedBytes awaited : everyAwaited) {
        EXPECT_EQ(judged(errorMinus7, awaited), "error-frame");
        EXPECT_EQ(judgeBytes(errorMinus7, awaited).value, -7);
        EXPECT_EQ(judgeBytes(error5, awaited).value, 5);
        EXPECT_EQ(judged(errorOfTwoBytes, awaited), "error-frame");
        EXPECT_EQ(judgeBytes(errorOfTwoBytes, awaited).value, -2);
        EXPECT_EQ(judgeBytes(errorOfNoBytes, awaited).value, -2);
    }
}

TEST(JudgeBytes, refusesAFrameThatIsGarbledOrTooShort)
{
    for (const AwaitedBytes awaited : everyAwaited) {
        EXPECT_EQ(judged(wrongEnd, awaited), "bad-frame");
        EXPECT_EQ(judged(threeBytesOfPayload, awaited), "bad-frame");
        EXPECT_EQ(judged(noPayload, awaited), "bad-frame");
        EXPECT_EQ(judged("68 040000ff 0000 00 00 00 01000000 0000 16"_hex, awaited), "bad-frame?"); // length
        EXPECT_EQ(judged("68 0400007f 0000 00 00 00 01000000 0000 16"_hex, awaited), "bad-frame?");
        EXPECT_EQ(judged("69 04000000 0000 00 00 00 01000000 0000 16"_hex, awaited), "bad-frame?"); // start
    }
}

TEST(JudgeBytes, waitsForTheRestOfACutFrame)
{
    for (const AwaitedBytes awaited : everyAwaited) {
        for (int size = 1; size < greeting.size(); ++size)
            EXPECT_EQ(judged(greeting.left(size), awaited), "bad-frame?") << size;
    }
}

TEST(JudgeBytes, waitsForTheRestOfALengthThatNoFrameHas)
{
    EXPECT_EQ(judged("68 ffffffff"_hex + greeting, AwaitedBytes::greeting), "bad-frame?");
}

TEST(JudgeBytes, namesALengthThatNoFrameHas)
{
    EXPECT_EQ(judgeBytes("68 f3ffff7f 0000 00 00 00 01000000 0000 16"_hex, AwaitedBytes::reply).detail.english(),
              "no frame: its header has a length of 2147483635, and a client takes at most 2147483634");
}

TEST(JudgeBytes, namesALengthInTheWrongByteOrder)
{
    const QByteArray payload128 = "0000 00 00 00"_hex + QByteArray(128, '\0') + "0000 16"_hex;
    for (const AwaitedBytes awaited : everyAwaited) {
        const ByteVerdict verdict = judgeBytes("68 00000004 0000 00 00 00 00000001 0000 16"_hex, awaited);
        EXPECT_EQ(wordOf(verdict), "bad-frame?");
        EXPECT_EQ(verdict.detail.english(), "no complete frame: length in the wrong byte order, 67108864 instead of 4; "
                                            "a client would wait for the rest of it");
        EXPECT_EQ(judgeBytes("68 00000080"_hex + payload128, awaited).detail.english(),
                  "no complete frame: length in the wrong byte order, 2147483648 instead of 128; a client would wait "
                  "for the rest of it");
    }
}

TEST(JudgeBytes, keepsAFrameAfterTheFirst)
{
    const ByteVerdict two = judgeBytes(greeting + "00ff"_hex + errorMinus7 + error5, AwaitedBytes::greeting);
    ASSERT_TRUE(two.next);
    EXPECT_EQ(two.next->command, 0xff);
    EXPECT_EQ(hex(two.next->payload), "f9 ff ff ff");
    EXPECT_FALSE(judgeBytes(greeting, AwaitedBytes::greeting).next);
    EXPECT_FALSE(judgeBytes(greeting + greeting.left(16), AwaitedBytes::greeting).next);
    EXPECT_FALSE(judgeBytes(greeting + wrongEnd, AwaitedBytes::greeting).next);
}

TEST(JudgeBytes, recognisesOtherProtocolsByTheirFirstBytes)
{
    const struct {
        QByteArray bytes;
        const char* word;
    } cases[] = {
        {"SSH-2.0-OpenSSH_9.2\r\n", "foreign ssh"},
        {"hello, authorized use only\r\nSSH-2.0-x\r\n", "foreign ssh?"},
        {"HTTP/1.1 400 Bad Request\r\n\r\n", "foreign http"},
        {"<!DOCTYPE HTML>\n<html>", "foreign http"},
        {"<html><head>", "foreign http"},
        {"15 0301 0002 0246"_hex, "foreign tls"},
        {"16 0303 0100 02"_hex, "foreign tls"},
        {"14 0304 0001 01"_hex, "foreign tls"}, // the first kind of record and the highest version
        {"18 0300 0003 01"_hex, "foreign tls"}, // the last kind and the lowest version
        {"13 0303 0001 01"_hex, "foreign unknown?"},
        {"19 0303 0001 01"_hex, "foreign unknown?"},
        {"16 0305 0001 01"_hex, "foreign unknown?"},
        {"16 0203 0001 01"_hex, "foreign unknown?"},
        {"220 mail ready\r\n", "foreign unknown?"},
        {"hello\r\n", "foreign unknown?"}, // h is the start byte
        {"\xff\xfd\x18\xff\xfd\x20", "foreign unknown?"},
        {"4a 000000 0a 382e30"_hex, "foreign unknown?"},
        {"15 03"_hex, "foreign unknown?"},
    };
    for (const auto& example : cases) {
        SCOPED_TRACE(example.bytes.toStdString());
        EXPECT_EQ(judged(example.bytes, AwaitedBytes::greeting), example.word);
        EXPECT_EQ(judged(example.bytes, AwaitedBytes::firstReply), example.word);
        EXPECT_EQ(judged(example.bytes, AwaitedBytes::reply), "bad-frame?");
    }
}

TEST(JudgeBytes, showsForeignBytesAsText)
{
    EXPECT_EQ(visibleText("a\"b\r\n\t\x01\xff").toStdString(), "\"a\"b\\r\\n\\t..\"");
    EXPECT_EQ(visibleText(QByteArray(65, 'x')).toStdString(), '"' + std::string(64, 'x') + "\"...");
    EXPECT_TRUE(judgeBytes("220 mail\r\n", AwaitedBytes::greeting).detail.english().contains("\"220 mail\\r\\n\""));
}

// Bytes of which frames and signatures are made, at random.
TEST(JudgeBytes, keepsAFinalVerdictWhateverFollows)
{
    const QByteArray pieces[] = {greeting, errorMinus7, wrongEnd, "68 0400"_hex, "0000 16"_hex, "\nSSH-",
                                 "HTTP/",  "h",         "x"};
    Chance chance(20);
    int finals = 0;
    for (int i = 0; i < 2000; ++i) {
        QByteArray bytes;
        for (int count = chance.below(6); count >= 0; --count)
            bytes += pieces[chance.below(9)];
        for (const AwaitedBytes awaited : everyAwaited) {
            const ByteVerdict whole = judgeBytes(bytes, awaited);
            for (int size = 0; size < bytes.size(); ++size) {
                const ByteVerdict verdict = judgeBytes(bytes.left(size), awaited);
                if (!verdict.isFinal)
                    continue;
                ++finals;
                ASSERT_EQ(wordOf(verdict), wordOf(whole)) << hex(bytes) << ", first " << size;
                ASSERT_EQ(verdict.value, whole.value);
            }
        }
    }
    EXPECT_GT(finals, 1000);
}

TEST(JudgeBytes, judgesAnyTwoBytes)
{
    for (int first = 0; first < 256; ++first) {
        for (int second = 0; second < 256; ++second) {
            const char bytes[] = {char(first), char(second)};
            for (const AwaitedBytes awaited : everyAwaited) {
                const std::string word = judged(QByteArray(bytes, 2), awaited);
                ASSERT_TRUE(word == "bad-frame?" || word == "foreign unknown?") << first << ' ' << second << word;
            }
        }
    }
}
