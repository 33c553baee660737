#include "support/goldenFile.h"
#include "support/hex.h"
#include "support/openTcpClient.h"
#include "support/openUdpClient.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

// The frames of tests/golden/frames. README.md there describes the keys.

static QStringList namesOf(const QString& direction)
{
    QStringList names;
    const QDir folder(GQLIB_GOLDEN "/frames");
    for (const QString& file : folder.entryList({"*.json"})) {
        QFile json(folder.filePath(file));
        EXPECT_TRUE(json.open(QFile::ReadOnly));
        if (QJsonDocument::fromJson(json.readAll())["direction"] == direction)
            names.append(file.chopped(5));
    }
    return names;
}

static QByteArray bytesOf(const QString& name)
{
    return goldenFile("frames/" + name.toStdString() + ".hex");
}

static QJsonArray partsOf(const QString& name)
{
    QFile json(GQLIB_GOLDEN "/frames/" + name + ".json");
    EXPECT_TRUE(json.open(QFile::ReadOnly));
    return QJsonDocument::fromJson(json.readAll())["value"].toArray();
}

static std::string text(const QJsonValue& value)
{
    return QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact).toStdString();
}

// --- Replies ---

static int unsignedAt(const QByteArray& bytes, int offset, int count)
{
    int value = 0;
    for (int i = count; i > 0; --i)
        value = value << 8 | static_cast<unsigned char>(bytes[offset + i - 1]);
    return value;
}

// A complete frame, before its payload is read.
static QJsonObject partOf(const QByteArray& frame, int offset)
{
    const int tail = frame.size() - 3;
    return {{"offset", offset},
            {"length", unsignedAt(frame, 1, 4)},
            {"sequence", unsignedAt(frame, 5, 2)},
            {"arg2", unsignedAt(frame, 7, 1)},
            {"arg1", unsignedAt(frame, 8, 1)},
            {"command", unsignedAt(frame, 9, 1)},
            {"payload", QString(frame.mid(10, tail - 10).toHex())},
            {"check", QString(frame.mid(tail, 2).toHex())},
            {"end", QString(frame.mid(tail + 2).toHex())}};
}

// Adds the result of the parser of the payload's form to the part: content or fault.
static void addContent(OpenTcpClient& client, const QByteArray& payload, QJsonObject& part)
{
    const QString form = part.value("form").toString();
    int result = 1;
    QJsonValue content;
    if (form == "int" || form == "error") {
        int value = 0;
        result = client.parseInt(payload.constData(), payload.size(), value);
        if (result == 1)
            content = value;
    } else if (form == "ints") {
        std::vector<int> values;
        result = client.parseInts(payload.constData(), payload.size(), values);
        QJsonArray list;
        for (const int value : values)
            list.append(value);
        if (result == 1)
            content = list;
    } else if (form == "bytes") {
        std::vector<unsigned char> values;
        result = client.parseBytes(payload.constData(), payload.size(), values);
        if (result == 1)
            content = QString(QByteArray(reinterpret_cast<const char*>(values.data()), int(values.size())).toHex());
    } else if (form == "strings") {
        QStringList texts;
        result = client.parseStrings(payload.constData(), payload.size(), texts);
        content = QJsonArray::fromStringList(texts);
    }
    if (!content.isNull())
        part["content"] = content;
    if (result != 1)
        part["fault"] = "form";
}

TEST(GoldenFrames, areExtractedFromReplyStreams)
{
    const QStringList names = namesOf("reply");
    EXPECT_GT(names.size(), 20);
    for (const QString& name : names) {
        SCOPED_TRACE(name.toStdString());
        const QByteArray bytes = bytesOf(name);
        OpenTcpClient client;
        int pos = 0;
        for (const QJsonValue& value : partsOf(name)) {
            QJsonObject expected = value.toObject();
            const int offset = expected.value("offset").toInt();
            EXPECT_LE(pos, offset);
            if (expected.contains("garbage"))
                continue; // the bytes that the next frame skips, or the last ones
            const bool isWhole = client.recvData(bytes.constData(), bytes.size(), pos);
            const QString fault = expected.value("fault").toString();
            int len = 0;
            if (fault == "cut") {
                EXPECT_FALSE(isWhole);
                EXPECT_EQ(hex(client.recvFrame), hex(bytes.mid(offset)));
                break;
            }
            if (fault == "length") {
                EXPECT_FALSE(isWhole && client.isRecvOk(len));
                break; // the client loses the following bytes
            }
            ASSERT_TRUE(isWhole);
            QJsonObject part = partOf(client.recvFrame, offset);
            if (client.isRecvOk(len)) {
                EXPECT_EQ(len, part["length"].toInt());
                part["form"] = expected.value("form");
                addContent(client, client.recvFrame.mid(10, len), part);
            } else {
                part["fault"] = "end";
            }
            expected.remove("rest"); // not reported by any parser
            EXPECT_EQ(text(part), text(expected));
            client.recvFrame.clear();
            client.recvFrameSize = 0;
        }
    }
}

TEST(GoldenFrames, returnTheirIntegerOrCodeToAClient)
{
    struct {
        const char* name;
        int result;
    } const replies[] = {
        {"systemStateReply", 0}, {"systemTimeReply", 1700000060},
        {"setStateReply", -1},   {"greeting", 1},
        {"error", -7},           {"errorLonger", 77},
        {"errorShort", -2},      {"replyInt", 42},
        {"replyIntShort", -5},   {"wrongEnd", 0},
        {"garbageAhead", 7},     {"twoFrames", 7},
    };
    for (const auto& reply : replies) {
        SCOPED_TRACE(reply.name);
        LinkedTcpClient client;
        client.give(bytesOf(reply.name));
        EXPECT_EQ(client.recvInt(), reply.result);
    }
}

// --- Requests ---

// The clock time that a ready-made command sends is at offset 10.
static void expectRequest(QByteArray sent, const char* name, bool holdsTime = false)
{
    SCOPED_TRACE(name);
    const QByteArray expected = bytesOf(name);
    if (holdsTime)
        sent.replace(10, 4, expected.mid(10, 4));
    EXPECT_EQ(hex(sent), hex(expected));
}

TEST(GoldenFrames, areTheRequestsOfATcpClient)
{
    LinkedTcpClient client;
    const QByteArray reply = bytesOf("clearReply");
    for (int i = 0; i < 5; ++i)
        client.give(reply); // each reply is a separate read
    EXPECT_EQ(client.systemState(), 1);
    EXPECT_EQ(client.systemTime(), 1);
    EXPECT_EQ(client.clear(), 1);
    EXPECT_EQ(client.setTime(1000, -1000), 1);
    EXPECT_EQ(client.setState(-3), 1);
    expectRequest(client.take(), "systemStateRequest", true);
    expectRequest(client.take(), "systemTimeRequest", true);
    expectRequest(client.take(), "clearRequest", true);
    expectRequest(client.take(), "setTimeRequest");
    expectRequest(client.take(), "setStateRequest");

    QByteArray frame;
    client.addHeader(64, 1, 2, frame);
    gqdb::CTcpAPI::addEnd(frame);
    expectRequest(frame, "requestNone");
    client.sendInt(32, -2);
    expectRequest(client.take(), "requestInt");
    client.sendInts(32, {305419896, -2147483647 - 1});
    expectRequest(client.take(), "requestInts");

    client.sendSeq = 65535;
    client.sendInt(32, 1);
    client.sendInt(32, 2);
    const QByteArray first = client.take();
    expectRequest(first + client.take(), "sequenceWrap");
}

TEST(GoldenFrames, areTheRequestsOfAUdpClient)
{
    LinkedUdpClient client;
    client.give(bytesOf("udpSetStateReply"));
    EXPECT_EQ(client.systemState(), 2);
    expectRequest(client.take(), "udpSystemStateRequest", true);

    client.sendSeq = 3;
    client.give(bytesOf("udpSetStateReply"));
    EXPECT_EQ(client.setTime(1000, -1000), 2);
    expectRequest(client.take(), "udpSetTimeRequest");
    client.sendInts(36, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11});
    expectRequest(client.take(), "udpRequestInts");
}
