// gqtool call --command: any request, and the output for each reply.

#include "support/frames.h"
#include "support/gqtoolProgram.h"
#include "support/plainSockets.h"
#include "support/scriptedDatagramPeer.h"

#include <QRegularExpression>

#include <netinet/in.h>

// --- A server on plain system calls -------------------------------------------------------------------------------

struct Exchange {
    std::string request;
    Outcome outcome;
};

static void sendTo(int descriptor, const QByteArray& bytes)
{
    EXPECT_EQ(send(descriptor, bytes.constData(), size_t(bytes.size()), MSG_NOSIGNAL), bytes.size());
}

// Calls with --command 0x50 and `words`, reads `requestSize` bytes, replies, and optionally closes.
static Exchange exchange(const QStringList& words, int requestSize, const QByteArray& reply, bool closes = false)
{
    Listener listener(1);
    const QString endpoint = QString("127.0.0.1:%1").arg(listener.port());
    RunningProgram call(GQTOOL, QStringList{"call", endpoint, "--command", "0x50"} + words);
    Descriptor connection = listener.accept();
    sendTo(connection, greeting);
    const QByteArray request = QByteArray::fromStdString(received(connection, size_t(requestSize)));
    sendTo(connection, reply);
    if (closes)
        connection.close();
    return {hex(request), call.outcome()};
}

// The same for a request without payload.
static Outcome answered(const QStringList& words, const QByteArray& reply)
{
    return exchange(words, 13, reply).outcome;
}

// --- Requests -----------------------------------------------------------------------------------------------------

TEST(GqtoolRawCall, sendsIntegersAfterTheHeader)
{
    const QByteArray expected = "68 08000000 0000 02 01 50 05000000 ffffffff 0000 16"_hex; // arg2 precedes arg1
    EXPECT_EQ(exchange({"--arg1", "1", "--arg2", "2", "5", "-1"}, 21, reply7).request, hex(expected));
}

TEST(GqtoolRawCall, sendsBytes)
{
    EXPECT_EQ(exchange({"--hex", "de ad 0xBE"}, 16, reply7).request,
              hex("68 03000000 0000 00 00 50 deadbe 0000 16"_hex));
}

TEST(GqtoolRawCall, sendsAnEmptyPayload)
{
    EXPECT_EQ(exchange({}, 13, reply7).request, hex("68 00000000 0000 00 00 50 0000 16"_hex));
    EXPECT_EQ(exchange({"--hex", ""}, 13, reply7).request, hex("68 00000000 0000 00 00 50 0000 16"_hex));
}

TEST(GqtoolRawCall, sendsDatagrams)
{
    const Descriptor peer(socket(AF_INET, SOCK_DGRAM, 0));
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    ASSERT_EQ(bind(peer, reinterpret_cast<const sockaddr*>(&address), size), 0);
    ASSERT_EQ(getsockname(peer, reinterpret_cast<sockaddr*>(&address), &size), 0);
    RunningProgram call(GQTOOL, {"call", "--udp", QString("127.0.0.1:%1").arg(ntohs(address.sin_port)), "--command",
                                 "0x50", "--arg1", "1", "--reply", "ints", "5"});

    char request[1000];
    const ssize_t count = recvfrom(peer, request, sizeof request, 0, reinterpret_cast<sockaddr*>(&address), &size);
    EXPECT_EQ(hex(QByteArray(request, int(count))),
              hex("68 33000000 0000 00 01 50 05000000"_hex + QByteArray(47, '\0') + "0000 16"_hex));
    const QByteArray reply = "68 08000000 0000 00 00 50 01000000 2a000000 0000 16"_hex;
    EXPECT_EQ(
        sendto(peer, reply.constData(), size_t(reply.size()), 0, reinterpret_cast<const sockaddr*>(&address), size),
        reply.size());
    EXPECT_EQ(call.outcome().output, "42\n");
}

// --- Replies ------------------------------------------------------------------------------------------------------

static const QByteArray twoInts = "68 0c000000 0000 00 00 50 02000000 01000000 ffffffff 0000 16"_hex;
static const QByteArray threeBytes = "68 07000000 0000 00 00 50 03000000 00ff10 0000 16"_hex;
static const QByteArray twoTexts = "68 0f000000 0000 00 00 50 02000000 0500 0300 616263 0200 0000 0000 16"_hex;
static const QByteArray overrunningText = "68 0d000000 0000 00 00 50 02000000 0500 0300 616263 0900 0000 16"_hex;

TEST(GqtoolRawCall, printsTheReplyInTheRequestedForm)
{
    EXPECT_EQ(answered({}, reply7).output, "7\n");
    EXPECT_EQ(answered({"--reply", "int"}, reply7).output, "7\n");
    EXPECT_EQ(answered({"--reply", "ints"}, twoInts).output, "1\n-1\n");
    EXPECT_EQ(answered({"--reply", "bytes"}, threeBytes).output, "00 ff 10\n");
    EXPECT_EQ(answered({"--reply", "strings"}, twoTexts).output, "abc\n\n");
}

TEST(GqtoolRawCall, printsControlCharactersAsEscapesOfJson)
{
    // a text of 4 bytes: A, DEL, and U+009B, which begins a command of a terminal
    const QByteArray text = "68 0c000000 0000 00 00 50 01000000 0600 0400 417fc29b 0000 16"_hex;
    const QString output = answered({"--reply", "strings", "--json"}, text).output;
    EXPECT_TRUE(output.contains(R"(["A\u007f\u009b"])")) << output.toStdString();
}

TEST(GqtoolRawCall, readsOneFrameUnlessCountIsGiven)
{
    RunningStation station({"--gap", "300"});
    EXPECT_EQ(station.call({"--command", "0x20", "--reply", "ints", "150"}).output.count('\n'), 100);
    EXPECT_EQ(station.call({"--command", "0x20", "--reply", "ints", "--count", "150", "150"}).output.count('\n'), 150);
}

// --- Failures -----------------------------------------------------------------------------------------------------

// A failure after which probe has nothing to find, because the link works.
static void expectFailure(const Outcome& outcome, const QString& message)
{
    EXPECT_EQ(outcome.exitCode, 1);
    const QRegularExpression expected("^gqtool: request 0x50 to 127\\.0\\.0\\.1:\\d+ failed with " +
                                      QRegularExpression::escape(message) + "\n$");
    EXPECT_TRUE(expected.match(outcome.errors).hasMatch()) << outcome.errors.toStdString();
}

static void expectLinkFailure(const Outcome& outcome, const QString& message, const QString& option = {})
{
    const QString target = outcome.errors.section(' ', 4, 4);
    EXPECT_TRUE(target.startsWith("127.0.0.1:")) << outcome.errors.toStdString();
    expectFailure(outcome, message + " (try gqtool probe " + option + target + ')');
}

TEST(GqtoolRawCall, reportsAnErrorFrame)
{
    for (const char* form : {"int", "ints", "bytes", "strings"}) {
        SCOPED_TRACE(form);
        expectFailure(answered({"--reply", form}, errorMinus7),
                      "-7: error-frame: the server's own code, from an error frame");
        expectFailure(answered({"--reply", form}, errorOfTwoBytes), "-2: error-frame: an error frame without a code");
    }
}

// The library's client returns the same for these codes and for other failures, or for success.
TEST(GqtoolRawCall, recognisesAnErrorFrameByItsCommand)
{
    for (const char* form : {"int", "ints", "bytes", "strings"}) {
        SCOPED_TRACE(form);
        expectFailure(answered({"--reply", form}, error0),
                      "0: error-frame: the server's own code, from an error frame");
        expectFailure(answered({"--reply", form}, error1),
                      "1: error-frame: the server's own code, from an error frame");
    }
}

TEST(GqtoolRawCall, reportsAPayloadThatIsTooShort)
{
    for (const char* form : {"int", "ints", "bytes", "strings"})
        expectFailure(answered({"--reply", form}, threeBytesOfPayload),
                      QString("-5: bad-frame: reply of command 0x30, expected 0x50: the payload has 3 bytes, but its "
                              "form (%1) needs 4")
                          .arg(form));
}

TEST(GqtoolRawCall, givesTheSizesOfAPayloadOfAnotherForm)
{
    expectFailure(answered({"--reply", "ints"}, threeBytes),
                  "-5: bad-frame: the payload has 7 bytes, but its form (ints) with a count of 3 needs 16");
    const QString other = "-5: bad-frame: reply of command 0x30, expected 0x50: the payload has 4 bytes, ";
    expectFailure(answered({"--reply", "bytes"}, reply7), other + "but its form (bytes) with a count of 7 needs 11");
    expectFailure(answered({"--reply", "strings"}, reply7),
                  other + "but its form (strings) with a count of 7 needs 18");
    for (const char* form : {"ints", "bytes", "strings"})
        expectFailure(
            answered({"--reply", form}, "68 04000000 0000 00 00 50 ffffffff 0000 16"_hex),
            QString("-5: bad-frame: the payload has 4 bytes, and the count of its form (%1) is -1").arg(form));
    const Outcome outcome = answered({"--reply", "strings"}, overrunningText);
    EXPECT_EQ(outcome.output, "abc\n"); // the texts before the failure
    expectFailure(outcome, "0: bad-frame: text 2 of 2 needs 11 bytes, but only 2 of the payload's 13 bytes remain");
}

TEST(GqtoolRawCall, reportsABadFrame)
{
    for (const char* form : {"int", "ints", "bytes", "strings"})
        expectLinkFailure(answered({"--reply", form}, wrongEnd),
                          "0: bad-frame: a frame that ends in 0x17 instead of 0x16");
}

TEST(GqtoolRawCall, reportsATimeout)
{
    expectLinkFailure(answered({"--timeout", "300"}, QByteArray()), "0: no-reply: no complete reply in time");
    expectLinkFailure(answered({"--timeout", "300"}, reply7.left(12)),
                      "0: bad-frame: no complete reply in time, after 12 of the 17 bytes of the frame");
    expectLinkFailure(answered({"--timeout", "300"}, reply7.left(9)),
                      "0: bad-frame: no complete reply in time, after 9 of the 10 bytes of a header");
    expectLinkFailure(answered({"--timeout", "300"}, "no"),
                      "0: bad-frame: no complete reply in time, after 2 bytes without a frame");
}

TEST(GqtoolRawCall, namesALengthThatNoFrameHas)
{
    expectLinkFailure(answered({"--timeout", "300"}, "68 f3ffff7f 0000 00 00 30 07000000 0000 16"_hex),
                      "0: bad-frame: no complete reply in time: the header has a length of 2147483635, and a client "
                      "takes at most 2147483634");
}

TEST(GqtoolRawCall, namesALengthInTheWrongByteOrder)
{
    expectLinkFailure(answered({"--timeout", "300"}, "68 00000004 0000 00 00 30 00000007 0000 16"_hex),
                      "0: bad-frame: no complete reply in time: length in the wrong byte order, 67108864 instead of 4; "
                      "a client would wait for the rest of it");
}

TEST(GqtoolRawCall, saysHowManyElementsCame)
{
    const QByteArray two = "68 0c000000 0000 00 00 50 02000000 01000000 ffffffff 0000 16"_hex;
    const Outcome outcome = answered({"--timeout", "300", "--reply", "ints", "--count", "5"}, two);
    EXPECT_EQ(outcome.output, "1\n-1\n");
    expectLinkFailure(outcome, "0: no-reply: no complete reply in time, after 2 of 5 elements");
    expectLinkFailure(exchange({"--reply", "bytes", "--count", "5"}, 13, threeBytes, true).outcome,
                      "-1: closed: the server closed, or the connection broke, after 3 of 5 elements");
    EXPECT_EQ(answered({"--count", "5"}, reply7).output, "7\n"); // an integer is one
}

TEST(GqtoolRawCall, reportsAClosedConnection)
{
    expectLinkFailure(exchange({}, 13, QByteArray(), true).outcome,
                      "-1: closed: the server closed, or the connection broke");
    expectLinkFailure(
        exchange({}, 13, reply7.left(12), true).outcome,
        "-1: bad-frame: the server closed, or the connection broke, after 12 of the 17 bytes of the frame");
}

TEST(GqtoolRawCall, reportsThatNothingListens)
{
    const Listener deaf;
    const QString endpoint = QString("127.0.0.1:%1").arg(deaf.port());
    const char* const message = "-1: refused: the host is up, but nothing listens on this port: Connection refused";
    expectLinkFailure(run({"call", endpoint, "--command", "0x50"}), message);
    expectLinkFailure(run({"call", "--udp", endpoint, "--command", "0x50"}), message, "--udp ");
}

TEST(GqtoolRawCall, reportsFailuresOfDatagrams)
{
    const struct {
        const char* option;
        const char* message;
    } failures[] = {
        {"--wrong-end", "0: bad-frame: a frame that ends in 0x17 instead of 0x16"},
        {"--silent", "0: no-reply: no reply in time"},
    };
    for (const auto& failure : failures) {
        SCOPED_TRACE(failure.option);
        RunningStation station({"--udp", failure.option});
        expectLinkFailure(run({"call", "--udp", "--timeout", failure.option[2] == 's' ? "200" : "20000",
                               station.endpoint, "--command", "0x50", "1"}),
                          failure.message, "--udp ");
    }
}

TEST(GqtoolRawCall, reportsAnEmptyDatagram)
{
    ScriptedDatagramPeer server{{QByteArray("")}};
    expectLinkFailure(run({"call", "--udp", QString("127.0.0.1:%1").arg(server.port()), "--command", "0x50"}),
                      "-1: bad-frame: an empty datagram", "--udp ");
}

// --- Replies to something else ------------------------------------------------------------------------------------

static const QByteArray ownReply = "68 04000000 0000 00 00 50 07000000 0000 16"_hex;

static std::string warningOf(const Outcome& outcome)
{
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "7\n");
    return outcome.errors.section(": warning: ", 1).toStdString();
}

TEST(GqtoolRawCall, warnsOfAReplyThatDoesNotBelongToTheRequest)
{
    EXPECT_EQ(warningOf(answered({}, ownReply)), "");
    EXPECT_EQ(warningOf(answered({}, reply7)), "reply of command 0x30, expected 0x50\n");
    EXPECT_EQ(warningOf(answered({}, "68 04000000 0900 00 00 50 07000000 0000 16"_hex)),
              "reply of sequence 9, expected 0\n");
    // The greeting has 0: this server counts its own frames.
    EXPECT_EQ(warningOf(answered({}, "68 04000000 0100 00 00 50 07000000 0000 16"_hex)), "");
}

TEST(GqtoolRawCall, takesARepeatedRequestOfAWrongFormForAnEcho)
{
    const QByteArray request = "68 00000000 0000 00 00 50 0000 16"_hex;
    const Outcome outcome = answered({}, request);
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.errors.endsWith("failed with -5: foreign: the request itself came back, as from an echo "
                                        "server\n"))
        << outcome.errors.toStdString();
}

TEST(GqtoolRawCall, findsADatagramThatIsNoFrame)
{
    ScriptedDatagramPeer server{{"hello"}}; // h is the start byte
    expectLinkFailure(run({"call", "--udp", QString("127.0.0.1:%1").arg(server.port()), "--command", "0x50"}),
                      "0: foreign: no frame, but \"hello\"", "--udp ");
}

TEST(GqtoolRawCall, warnsInJson)
{
    const Outcome outcome = answered({"--json"}, reply7);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_TRUE(outcome.output.contains("\"warning\":\"reply of command 0x30, expected 0x50\""))
        << outcome.output.toStdString();
    EXPECT_FALSE(answered({"--json"}, ownReply).output.contains("warning"));
}

// --- Usage --------------------------------------------------------------------------------------------------------

TEST(GqtoolRawCall, exitsWith2OnWrongUsage)
{
    const struct {
        QStringList words;
        const char* message;
    } usages[] = {
        {{"--command", "256"}, "--command must be an integer from 0 to 255, got '256'"},
        {{"--command", "systemState"}, "--command must be an integer from 0 to 255, got 'systemState'"},
        {{"--command", "1", "--arg1", "-1"}, "--arg1 must be an integer from 0 to 255, got '-1'"},
        {{"--command", "1", "--arg2", "256"}, "--arg2 must be an integer from 0 to 255, got '256'"},
        {{"--command", "1", "--count", "-1"}, "--count must be an integer from 0 to 2147483647, got '-1'"},
        {{"--command", "1", "--reply", "text"}, "--reply must be int, ints, bytes or strings, got 'text'"},
        {{"--command", "1", "--hex", "00", "5"}, "--hex and INTEGER exclude each other"},
        {{"--command", "1", "--hex", "0"}, "--hex: line 1, column 1: "},
        {{"--command", "1", "x"}, "INTEGER must be a 4-byte integer, got 'x'"},
        {{"--command", "1", "2147483648"}, "INTEGER must be a 4-byte integer, got '2147483648'"},
        {{"--arg1", "1", "systemState"}, "--arg1 requires --command"},
        {{"--hex", "00", "systemState"}, "--hex requires --command"},
        {{"--reply", "ints", "systemState"}, "--reply requires --command"},
        {{"--interval", "5", "systemState"}, "--interval requires --repeat"},
        {{"--repeat", "0", "systemState"}, "--repeat must be an integer from 1 to 10000000, got '0'"},
        {{"--repeat", "5", "--interval", "-1", "systemState"},
         "--interval must be an integer from 0 to 2147483647, got '-1'"},
    };
    for (const auto& usage : usages) {
        SCOPED_TRACE(usage.words.join(' ').toStdString());
        const Outcome outcome = run(QStringList{"call", "127.0.0.1:1"} + usage.words);
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_EQ(outcome.output, "");
        EXPECT_TRUE(outcome.errors.startsWith(QString("gqtool: ") + usage.message)) << outcome.errors.toStdString();
    }
}
