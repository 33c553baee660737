#include "gqSocketUnix.h"
#include "target.h"
#include "tcpApi.h"
#include "udpApi.h"

#include <algorithm>
#include <functional>

#include <sys/socket.h>
#include <unistd.h>

using namespace gqdb;

// --- Reassembly -------------------------------------------------------------------

// The clients with their state made public.
class OpenTcpClient : public CTcpAPI {
public:
    using CTcpAPI::recvFrame;
    using CTcpAPI::recvFrameSize;
};

class OpenUdpClient : public CUdpAPI {
public:
    using CUdpAPI::recvFrame;
    using CUdpAPI::recvFrameSize;
};

// A frame in a stream. A size of 0 means that the stream does not contain all of it.
struct FrameInStream {
    int begin;
    int size;
    int announced; // by its length field, in 32 bits: wraps near either end of the field's range
};

static FrameInStream firstFrameFrom(const Reading& stream, int from)
{
    const char* start = std::find(stream.buf + from, stream.buf + stream.size, CSocketAPI::frameStart);
    FrameInStream frame = {static_cast<int>(start - stream.buf), 0, 0};
    const int left = stream.size - frame.begin;
    if (left < CSocketAPI::headerSize)
        return frame;
    frame.announced = static_cast<int>(numberOf4(start + 1) + static_cast<unsigned int>(CSocketAPI::frameOverhead));
    const int wanted = std::max(frame.announced, CSocketAPI::headerSize + 1);
    if (frame.announced > 0 && left >= wanted) // else the frame never ends
        frame.size = wanted;
    return frame;
}

// The state of a client that reassembly uses.
struct Client {
    QByteArray& frame;
    int& frameSize;
    std::function<bool(const char* buf, int size, int& pos)> recvData;
    std::function<bool(int& len)> isRecvOk;
};

static void requireFrame(const Reading& stream, const FrameInStream& expected, const Client& client)
{
    require(expected.size > 0, "no frame must be found");
    require(client.frame == QByteArray::fromRawData(stream.buf + expected.begin, expected.size),
            "the frame must have the stream's bytes");
    require(client.frameSize == expected.announced, "the frame must have the announced size");
    int len = 0;
    const bool isOk = client.isRecvOk(len);
    require(isOk == (expected.announced == expected.size && client.frame.back() == CSocketAPI::frameEnd),
            "the check of the frame must have the expected result");
    if (isOk)
        require(len == static_cast<int>(numberOf4(client.frame.constData() + 1)),
                "the payload must have the announced length");
}

// Feeds the whole stream in pieces; `pieceSize` returns the size of the next one.
static void feed(const Reading& stream, const Client& client, const std::function<int()>& pieceSize)
{
    client.frame.resize(0);
    client.frameSize = 0;
    FrameInStream expected = firstFrameFrom(stream, 0);
    for (int at = 0; at < stream.size;) {
        const int size = std::min(pieceSize(), stream.size - at);
        int pos = 0;
        while (client.recvData(stream.buf + at, size, pos)) {
            requireFrame(stream, expected, client);
            require(at + pos == expected.begin + expected.size, "reading must go on after the frame's end");
            client.frame.resize(0);
            client.frameSize = 0;
            expected = firstFrameFrom(stream, at + pos);
        }
        require(pos == size, "a piece must be read to its end");
        at += size;
    }
    require(expected.size == 0, "a complete frame must be found");
    require(client.frame == QByteArray::fromRawData(stream.buf + expected.begin, stream.size - expected.begin),
            "the partial frame must have the stream's bytes");
}

static void readFrames(Reading& reading, const Client& client)
{
    feed(reading, client, [&reading] { return reading.size; });
    unsigned int chance =
        static_cast<unsigned int>(reading.size); // derived from the input, so that it is always cut the same way
    for (int i = 0; i < reading.size; ++i)
        chance = chance * 31 + static_cast<unsigned char>(reading.buf[i]);
    feed(reading, client, [&chance] {
        chance = chance * 1664525 + 1013904223;
        return 1 + static_cast<int>(chance >> 16) % 20;
    });
}

static void readTcpFrames(Reading& reading)
{
    static OpenTcpClient client;
    static const Client open = {client.recvFrame, client.recvFrameSize,
                                [](const char* buf, int size, int& pos) { return client.recvData(buf, size, pos); },
                                [](int& len) { return client.isRecvOk(len); }};
    readFrames(reading, open);
}

static void readUdpFrames(Reading& reading)
{
    static OpenUdpClient client;
    static const Client open = {client.recvFrame, client.recvFrameSize,
                                [](const char* buf, int size, int& pos) { return client.recvData(buf, size, pos); },
                                [](int& len) { return client.isRecvOk(len); }};
    readFrames(reading, open);
}

static void checkFrames(const Layout&, const Reading&) {} // while they are read

// --- Payloads ---------------------------------------------------------------------

static CSocketAPI& parser()
{
    static CSocketAPI api;
    return api;
}

static void parseInt(Reading& reading)
{
    int value = 0;
    reading.result = parser().parseInt(reading.buf, reading.size, value);
    CByte2Val::int2Byte(value, reading.written);
}

static void checkInt(const Layout&, const Reading& reading)
{
    requireResult(reading, reading.size < 4 ? -5 : 1);
    if (reading.result == 1)
        requireWrittenAgain(reading, 4);
    else
        require(reading.written == QByteArray(4, '\0'), "a failed parse must not change the value");
}

static void parseInts(Reading& reading)
{
    std::vector<int> list(setElementsBefore(reading));
    reading.result = parser().parseInts(reading.buf, reading.size, list);
    CByte2Val::list2Byte(list, reading.written);
}

static void parseBytes(Reading& reading)
{
    std::vector<unsigned char> list(setElementsBefore(reading));
    reading.result = parser().parseBytes(reading.buf, reading.size, list);
    CByte2Val::list2Byte(list, reading.written);
}

static void checkList(const Layout& layout, const Reading& reading)
{
    const int used = listSize(layout, reading.buf, reading.size);
    requireResult(reading, used > 0 ? 1 : -5);
    if (used > 0)
        requireWrittenAgain(reading, used);
    else
        require(reading.written == QByteArray(4, '\0'), "a failed parse must not change the list");
}

static void writeStrings(const QStringList& texts, QByteArray& data)
{
    CByte2Val::int2Byte(static_cast<int>(texts.size()), data);
    for (const QString& each : texts)
        CByte2Val::str2Byte(each, data);
}

static void parseStrings(Reading& reading)
{
    QStringList texts;
    for (size_t left = setElementsBefore(reading); left > 0; --left)
        texts.append(QString());
    reading.result = parser().parseStrings(reading.buf, reading.size, texts);
    writeStrings(texts, reading.written);
}

static void checkStrings(const Layout&, const Reading& reading)
{
    const unsigned int count = reading.size < 4 ? 0 : numberOf4(reading.buf);
    if (count >= 0x3ffffffe) // its need overflows, so that only reading the first missing item fails
        return require(reading.result == 0 || reading.result == -5, "the result must be 0 or -5");
    long long need = 4 + 2LL * count;
    if (reading.size < need)
        return requireResult(reading, -5);

    QStringList texts;
    int expected = 1;
    for (int at = 4; expected == 1 && static_cast<unsigned int>(texts.size()) < count;) {
        const int size = static_cast<int>(numberOf2(reading.buf + at));
        at += 2;
        need += size;
        const int used = need > reading.size ? 0 : recordSize({{textField}}, reading.buf + at, size);
        if (need > reading.size)
            expected = 0;
        else // an item without a complete string is an empty text
            texts.append(used == 0 ? QString()
                                   : QString::fromUtf8(QByteArray(reading.buf + at + 2, used - 2).constData()));
        at += size;
    }
    requireResult(reading, expected);
    QByteArray written;
    writeStrings(texts, written);
    require(reading.written == written, "the texts must be those of the payload");
}

// --- Whole replies: read by read, through one end of a socket pair that keeps their borders ---

class LinkedTcpClient : public CTcpAPI {
public:
    LinkedTcpClient()
    {
        recvBuffer = buffer;
        socket->close();
    }
    LinkedTcpClient(const LinkedTcpClient&) = delete;

    ~LinkedTcpClient() { recvBuffer = nullptr; }

    // The peer sends these and closes.
    void link(const std::vector<QByteArray>& reads)
    {
        int ends[2] = {-1, -1};
        require(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) == 0, "socketpair() must succeed");
        for (const QByteArray& each : reads)
            require(::send(ends[1], each.constData(), static_cast<size_t>(each.size()), MSG_DONTWAIT) == each.size(),
                    "the socket pair must take all bytes");
        ::close(ends[1]);
        close();
        socket->setSocket({ends[0]});
        recvFrame.clear();
        recvFrameSize = 0;
    }

private:
    static char buffer[rawBufferSize];
};

char LinkedTcpClient::buffer[rawBufferSize];

// What the client must return for the reads.
class ReplyModel {
public:
    explicit ReplyModel(const std::vector<QByteArray>& allReads) : reads(allReads) {}

    // Result of the next frame, and its payload if that is 1.
    int receive(QByteArray& payload)
    {
        QByteArray stream;
        FrameInStream frame = {0, 0, 0};
        while (frame.size == 0) {
            if (next == reads.size())
                return -1;
            stream += reads[next++]; // bytes after the frame in the same read are lost
            frame = firstFrameFrom({stream.constData(), static_cast<int>(stream.size()), false}, 0);
        }
        const QByteArray bytes = stream.mid(frame.begin, frame.size);
        if (frame.announced != frame.size || bytes.back() != CSocketAPI::frameEnd)
            return 0;
        payload = bytes.mid(CSocketAPI::headerSize, std::max(frame.size - CSocketAPI::frameOverhead, 0));
        if (static_cast<unsigned char>(bytes[9]) != CSocketAPI::errorCommand)
            return 1;
        const int code = payload.size() < 4 ? -2 : static_cast<int>(numberOf4(payload.constData()));
        payload.clear(); // an error code of 1 looks like success
        return code;
    }

    int receiveInt()
    {
        QByteArray payload;
        int value = 0;
        const int result = receive(payload);
        const int parsed = result == 1 ? parser().parseInt(payload.constData(), payload.size(), value) : result;
        return result == 1 && parsed == 1 ? value : parsed;
    }

    // Frames until `isComplete`, each parsed by `parse`.
    int receiveList(const std::function<int(const char* payload, int len)>& parse,
                    const std::function<bool()>& isComplete)
    {
        int result = 1;
        do {
            QByteArray payload;
            result = receive(payload);
            if (result == 1)
                result = parse(payload.constData(), payload.size());
        } while (result == 1 && !isComplete());
        return result;
    }

private:
    const std::vector<QByteArray>& reads;
    size_t next = 0;
};

static void readReplies(Reading& reading)
{
    static LinkedTcpClient client;
    std::vector<QByteArray> reads;
    for (int at = 0; at < reading.size;) { // the byte before a read is its length
        const int size = std::min<int>(static_cast<unsigned char>(reading.buf[at]), reading.size - at - 1);
        if (size > 0 && reads.size() < 8)
            reads.push_back(QByteArray(reading.buf + at + 1, size));
        at += 1 + size;
    }
    const int count = 3;
    ReplyModel model(reads);
    client.link(reads);
    switch (reading.size % 4) {
    case 0:
        require(client.recvInt() == model.receiveInt(), "recvInt must return what the model does");
        break;
    case 1: {
        std::vector<int> ints;
        std::vector<int> expected;
        require(client.recvInts(count, ints) ==
                    model.receiveList(
                        [&](const char* payload, int len) { return parser().parseInts(payload, len, expected); },
                        [&] { return expected.size() >= count; }),
                "recvInts must return what the model does");
        require(ints == expected, "recvInts must return the integers of the model");
        break;
    }
    case 2: {
        std::vector<unsigned char> bytes;
        std::vector<unsigned char> expected;
        require(client.recvBytes(count, bytes) ==
                    model.receiveList(
                        [&](const char* payload, int len) { return parser().parseBytes(payload, len, expected); },
                        [&] { return expected.size() >= count; }),
                "recvBytes must return what the model does");
        require(bytes == expected, "recvBytes must return the bytes of the model");
        break;
    }
    default: {
        QStringList texts;
        QStringList expected;
        require(client.recvStrings(count, texts) ==
                    model.receiveList(
                        [&](const char* payload, int len) { return parser().parseStrings(payload, len, expected); },
                        [&] { return expected.size() >= count; }),
                "recvStrings must return what the model does");
        require(texts == expected, "recvStrings must return the texts of the model");
    }
    }
}

const std::vector<Target> frameTargets = {
    {"recvDataOfTcp", readTcpFrames, checkFrames, {}},
    {"recvDataOfUdp", readUdpFrames, checkFrames, {}},
    {"repliesOfTcp", readReplies, checkFrames, {}},
    {"parseInt", parseInt, checkInt, {}},
    {"parseInts", parseInts, checkList, {{4}}},
    {"parseBytes", parseBytes, checkList, {{1}}},
    {"parseStrings", parseStrings, checkStrings, {{textField}}},
};
