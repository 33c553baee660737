#include "gqtool/frames/frameStream.h"
#include "gqtool/probe/peerBytes.h"
#include "gqtool/station/station.h"
#include "gqtool/station/stationLink.h"
#include "toolInput.h"

#include <sys/socket.h>
#include <unistd.h>

// The bytes of peers: frames as the station and the trace read them, and what the probe makes of them.

// --- Frames -------------------------------------------------------------------------------------------------------

static const unsigned int mostBytes = INT_MAX - 13; // of a payload

static StreamItem itemAt(StreamItem::Kind kind, int offset, long long size)
{
    StreamItem item;
    item.kind = kind;
    item.offset = offset;
    item.size = size;
    return item;
}

// The items of a stream, found without FrameStream. Their contents are left out.
static std::vector<StreamItem> expectedItems(const QByteArray& stream, unsigned int largest)
{
    std::vector<StreamItem> items;
    for (int pos = 0; pos < stream.size(); pos += static_cast<int>(items.back().size)) {
        const int left = stream.size() - pos;
        const int found = stream.indexOf('\x68', pos);
        if (found != pos)
            items.push_back(itemAt(StreamItem::garbage, pos, found < 0 ? left : found - pos));
        else if (left >= 5 && numberOf4(stream.constData() + pos + 1) > largest)
            items.push_back(itemAt(StreamItem::badLength, pos, 1));
        else if (const int end = frameEndAt(stream, pos))
            items.push_back(
                itemAt(stream[end - 1] == '\x16' ? StreamItem::frame : StreamItem::wrongEnd, pos, end - pos));
        else
            items.push_back(itemAt(left < 10 ? StreamItem::cutHeader : StreamItem::cut, pos, left));
    }
    return items;
}

static void add(const std::vector<StreamItem>& more, std::vector<StreamItem>& items)
{
    for (const StreamItem& item : more) {
        const bool continues =
            item.kind == StreamItem::garbage && !items.empty() && items.back().kind == StreamItem::garbage;
        if (!continues) {
            items.push_back(item);
        } else {
            items.back().size += item.size;
            items.back().bytes += item.bytes;
        }
    }
}

static std::string described(const StreamItem& item)
{
    return "kind " + std::to_string(item.kind) + " at " + std::to_string(item.offset) + " with " +
           std::to_string(item.size) + " bytes";
}

static void requireContent(const StreamItem& item, const QByteArray& stream, int kept)
{
    const QByteArray bytes = stream.mid(static_cast<int>(item.offset), static_cast<int>(item.size));
    if (item.kind == StreamItem::garbage || item.kind == StreamItem::cutHeader)
        return require(item.bytes == bytes, "the bytes of an item must be those of the stream");
    const Frame& frame = item.content;
    if (item.kind == StreamItem::badLength)
        return require(frame.length == numberOf4(stream.constData() + item.offset + 1),
                       "the length must be that of the bytes");
    const auto byteAt = [&](int pos) { return static_cast<unsigned char>(bytes[pos]); };
    require(frame.length == numberOf4(bytes.constData() + 1), "the length of a payload must be that of the bytes");
    require(frame.sequence == byteAt(5) + 256 * byteAt(6), "the sequence must be that of the bytes");
    require(frame.arg2 == byteAt(7) && frame.arg1 == byteAt(8) && frame.command == byteAt(9),
            "arguments and command must be those of the bytes");
    const auto length = static_cast<int>(std::min<long long>(frame.length, bytes.size() - 10));
    require(frame.payload == bytes.mid(10, std::min(length, kept)), "the payload must be that of the bytes");
    require(frame.check == bytes.mid(10 + length, 2), "the checksum must be that of the bytes");
    if (item.kind != StreamItem::cut)
        require(frame.end == byteAt(bytes.size() - 1), "the end must be that of the bytes");
}

static void readStream(Reading& reading)
{
    InputBytes input(reading);
    const int pieceSize = input.number() + 1;
    const int kept = input.number() < 200 ? INT_MAX : input.number();
    const unsigned int limits[] = {mostBytes, 4 << 20, 1 << 20, 3};
    const unsigned int largest = limits[input.number(4)];
    const QByteArray stream = input.rest();
    FrameStream frames(kept, largest);
    std::vector<StreamItem> items;
    for (int pos = 0; pos < stream.size(); pos += pieceSize)
        add(frames.feed(stream.mid(pos, pieceSize)), items);
    const unsigned int announced = frames.announcedLength();
    add(frames.end(), items);
    const std::vector<StreamItem> expected = expectedItems(stream, largest);
    if (items.size() != expected.size())
        fail("found " + std::to_string(items.size()) + " items, must find " + std::to_string(expected.size()));
    for (size_t i = 0; i < items.size(); ++i) {
        if (items[i].kind != expected[i].kind || items[i].offset != expected[i].offset ||
            items[i].size != expected[i].size)
            fail("found " + described(items[i]) + ", must find " + described(expected[i]));
        requireContent(items[i], stream, kept);
    }
    const bool isCut = !items.empty() && items.back().kind == StreamItem::cut;
    require(announced == (isCut ? items.back().content.length : 0), "the length of an incomplete frame must be known");
}

// --- The station's link -------------------------------------------------------------------------------------------

// Returns what it is sent, and a greeting.
class Echo : public StationAnswers {
public:
    std::vector<TimedFrame> greeting() override { return {{frameOf(0, 0, word4(1))}}; }
    std::vector<TimedFrame> answer(const StationRequest& request) override
    {
        return {{frameOf(request.frame.command, request.frame.sequence, request.frame.payload)}};
    }
};

// What a link must send for a stream of requests, and whether it must close the connection before the stream ends.
static QByteArray expectedReplies(const QByteArray& stream, bool& closes)
{
    QByteArray replies = frameOf(0, 0, word4(1));
    closes = false;
    for (const StreamItem& item : expectedItems(stream, mostBytes)) {
        const QByteArray bytes = stream.mid(static_cast<int>(item.offset), static_cast<int>(item.size));
        if (item.kind == StreamItem::frame) {
            replies += frameOf(static_cast<unsigned char>(bytes[9]), numberOf4(bytes.constData() + 5) & 0xffff,
                               bytes.mid(10, bytes.size() - 13));
            continue;
        }
        const bool isPart = item.kind == StreamItem::cut || item.kind == StreamItem::cutHeader;
        closes = !isPart || (item.kind == StreamItem::cut && numberOf4(bytes.constData() + 1) > 1 << 20);
        break;
    }
    return replies;
}

// A client of a link. EventLoop::run() does not return when a link ends, so the client throws Gone.
class LinkClient {
public:
    struct Gone {};

    LinkClient(EventLoop& eventLoop, int ownSocket, const QByteArray& ownRequests, int size, bool untilClosed)
        : loop(eventLoop), socket(ownSocket), requests(ownRequests), pieceSize(size), waits(untilClosed)
    {
    }

    void proceed()
    {
        const QByteArray piece = requests.mid(sent, pieceSize);
        if (!piece.isEmpty()) {
            send(socket, piece.constData(), static_cast<size_t>(piece.size()), MSG_NOSIGNAL);
            sent += piece.size();
            loop.after(0, [this] { proceed(); });
        } else if (!waits) {
            shutdown(socket, SHUT_WR);
        }
    }

    void awaitReply()
    {
        loop.whenReadable(socket, [this] {
            char bytes[4096];
            const ssize_t count = recv(socket, bytes, sizeof bytes, 0);
            if (count <= 0)
                throw Gone();
            replies.append(bytes, static_cast<int>(count));
            awaitReply();
        });
    }

    QByteArray replies;

private:
    EventLoop& loop;
    const int socket;
    const QByteArray requests;
    const int pieceSize;
    const bool waits;
    int sent = 0;
};

static void readRequests(Reading& reading)
{
    InputBytes input(reading);
    const int pieceSize = 8 * input.number() + 1;
    const QByteArray stream = input.rest();
    bool closes = false;
    const QByteArray expected = expectedReplies(stream, closes);

    Echo answers;
    StationScript script(0);
    StationLog log;
    Station station(answers, script, log, {false, true});
    int sockets[2];
    require(socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, sockets) == 0,
            "socketpair() must succeed");
    LinkClient client(station.loop(), sockets[1], stream, pieceSize, closes);
    client.awaitReply();
    const auto link = std::make_shared<StationLink>(station, sockets[0], false, sockaddr_in());
    link->begin();
    client.proceed();
    station.loop().after(10000, [] { fail("the link must close the connection"); });
    try {
        station.loop().run();
    } catch (const LinkClient::Gone&) {
        close(sockets[1]);
    }
    if (client.replies != expected)
        fail("the replies are " + client.replies.toHex(' ').toStdString() + ", must be " +
             expected.toHex(' ').toStdString());
}

// --- The probe ----------------------------------------------------------------------------------------------------

static LinkCause causeOf(const QByteArray& frame, AwaitedBytes awaited, int& value)
{
    const bool hasInteger = frame.size() >= 17;
    value = hasInteger ? static_cast<int>(numberOf4(frame.constData() + 10)) : 0;
    if (static_cast<unsigned char>(frame[9]) == 0xff) {
        value = hasInteger ? value : -2;
        return LinkCause::errorFrame;
    }
    if (!hasInteger)
        return LinkCause::badFrame;
    return awaited == AwaitedBytes::greeting && value <= 0 ? LinkCause::notGreeted : LinkCause::healthy;
}

static bool isKnownProtocol(const QString& protocol)
{
    return protocol == "ssh" || protocol == "http" || protocol == "tls";
}

static void readPeer(Reading& reading)
{
    InputBytes input(reading);
    const AwaitedBytes all[] = {AwaitedBytes::greeting, AwaitedBytes::firstReply, AwaitedBytes::reply};
    const AwaitedBytes awaited = all[input.number(3)];
    const int firstSize = input.number();
    const QByteArray bytes = input.rest();
    const ByteVerdict verdict = judgeBytes(bytes, awaited);
    const ByteVerdict early = judgeBytes(bytes.left(firstSize), awaited);
    if (early.isFinal)
        require(early.cause == verdict.cause && early.value == verdict.value && early.protocol == verdict.protocol,
                "a final verdict must stay");
    require((verdict.cause == LinkCause::foreign) == !verdict.protocol.isEmpty(), "only a foreign peer has a protocol");
    require(awaited != AwaitedBytes::reply || verdict.protocol.isEmpty(), "a reply is never foreign");
    const QByteArray shown = visibleText(bytes).toUtf8();
    require(std::all_of(shown.begin(), shown.end(), [](char c) { return c >= ' ' && c <= '~'; }),
            "the text must be printable");
    if (bytes.isEmpty())
        return require(verdict.cause == (awaited == AwaitedBytes::greeting ? LinkCause::silent : LinkCause::noReply),
                       "no bytes must be silence");
    if (verdict.isFinal && isKnownProtocol(verdict.protocol))
        return; // before any frame
    for (const StreamItem& item : expectedItems(bytes, mostBytes)) {
        if (item.kind == StreamItem::garbage)
            continue;
        const bool isFinal = item.kind == StreamItem::frame || item.kind == StreamItem::wrongEnd;
        require(verdict.isFinal == isFinal, "a verdict must be final if and only if the frame is complete");
        int value = 0;
        const LinkCause cause =
            item.kind == StreamItem::frame
                ? causeOf(bytes.mid(static_cast<int>(item.offset), static_cast<int>(item.size)), awaited, value)
                : LinkCause::badFrame;
        if (isFinal)
            require(verdict.cause == cause && verdict.value == value, "the verdict must be that on the frame");
        break;
    }
    if (!verdict.isFinal)
        require(verdict.cause == LinkCause::badFrame || verdict.cause == LinkCause::foreign,
                "without a whole frame the verdict must be bad-frame or foreign");
}

const std::vector<Target> peerTargets = {
    toolTarget("frameStream", readStream),
    toolTarget("stationLink", readRequests),
    toolTarget("peerBytes", readPeer),
};
