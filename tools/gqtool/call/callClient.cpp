#include "callClient.h"

#include "gqtool/frames/frameStream.h"
#include "gqtool/frames/frameText.h"
#include "gqtool/frames/payloadForm.h"
#include "gqtool/frames/replyMatch.h"
#include "gqtool/probe/peerBytes.h"
#include "shared/text.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <returningClient.h>

using gqdb::CReturningTcpClient;
using gqdb::CReturningUdpClient;
using gqdb::CSocketAPI;

// --- Failures -----------------------------------------------------------------------------------------------------

static void failWithError(CallReply& reply, int result, int error)
{
    const LinkCause cause = causeOfError(error);
    reply.fail(result, cause, Text::tr("%1: %2").arg(causeMeaning(cause), errorText(error)));
}

// Without the content of the frame, so that --repeat can count equal failures.
static Text badFrameText(const std::vector<StreamItem>& items)
{
    if (items.empty())
        return Text::tr("no complete frame");
    if (items[0].kind == StreamItem::wrongEnd)
        return Text::tr("a frame that ends in 0x%1 instead of 0x16").arg(items[0].content.end, 2, 16, QChar('0'));
    return itemText(items[0]);
}

void CallReply::failForm(int code, const Text& text)
{
    fail(code, LinkCause::badFrame, commandMismatch.isEmpty() ? text : Text::tr("%1: %2").arg(commandMismatch, text));
}

static int elementsOf(const CallReply& reply)
{
    return static_cast<int>(reply.ints.size()) + reply.bytes.size() + reply.texts.size();
}

// Adds how many elements of a list arrived before the failure.
static void addElements(const CallRequest& request, CallReply& reply)
{
    if (request.form != replyInt && elementsOf(reply) > 0 && elementsOf(reply) < request.count)
        reply.meaning =
            Text::tr("%1, after %2 of %3 elements").arg(reply.meaning).arg(elementsOf(reply)).arg(request.count);
}

CallReply CallClient::call(const CallRequest& request)
{
    CallReply reply;
    if (!makeReady(reply))
        return reply;
    reply.result = 1;
    reply.meaning = Text::tr("success");
    QElapsedTimer timer;
    timer.start();
    exchange(request, reply);
    reply.milliseconds = static_cast<double>(timer.nsecsElapsed()) / 1e6;
    if (!reply.isGood())
        addElements(request, reply);
    return reply;
}

// --- Either transport ---------------------------------------------------------------------------------------------

// A request over either transport. The library's client sends, assembles and parses; here each frame is read by itself,
// because the client returns the same result for several causes.
template <class Client>
class LibraryCallClient : public CallClient, protected Client {
protected:
    using Client::Client;

    void exchange(const CallRequest& request, CallReply& reply) override
    {
        QByteArray frame;
        Client::addHeader(request.command, request.arg1, request.arg2, frame);
        frame += request.payload;
        Client::addEnd(frame);
        const Frame sent = firstFrame(frame);
        errno = 0;
        if (Client::sendDatas(frame) != 1) {
            failToSend(reply);
            return;
        }
        do {
            reply.hasFrame = false;
            if (receiveFrame(reply))
                takeFrame(request, sent, reply);
        } while (reply.isGood() && request.form != replyInt && elementsOf(reply) < request.count);
        Client::connected = Client::connected && reply.isGood();
    }

    virtual void failToSend(CallReply& reply) = 0;

    // Receives until recvFrame is complete. Returns false with the failure in `reply`.
    virtual bool receiveFrame(CallReply& reply) = 0;

    void dropFrame()
    {
        Client::recvFrame.clear();
        Client::recvFrameSize = 0;
    }

    // Adds how much of a frame has arrived to the reason why no more of it does. `came` counts the bytes since the
    // previous frame.
    Text withPart(const Text& reason, long long came) const
    {
        const QByteArray& part = Client::recvFrame;
        if (part.isEmpty())
            return came == 0 ? reason : Text::tr("%1, after %2 without a frame").arg(reason, bytesText(came));
        if (part.size() < CSocketAPI::headerSize)
            return Text::tr("%1, after %2 of the %3 bytes of a header")
                .arg(reason)
                .arg(part.size())
                .arg(CSocketAPI::headerSize);
        const unsigned int length = CSocketAPI::byte2UInt(part.constData() + 1);
        StreamItem item;
        item.content.length = length;
        item.swappedLength = fittingSwappedLength(length, part.mid(CSocketAPI::headerSize));
        if (item.swappedLength >= 0)
            return Text::tr("%1: %2").arg(reason, swappedText(item));
        if (length > FrameStream::clientLimit)
            return Text::tr("%1: the header has a length of %2, and a client takes at most %3")
                .arg(reason)
                .arg(length)
                .arg(FrameStream::clientLimit);
        return Text::tr("%1, after %2 of the %3 bytes of the frame")
            .arg(reason)
            .arg(part.size())
            .arg(static_cast<long long>(length) + CSocketAPI::frameOverhead);
    }

private:
    // Checks and parses recvFrame as the library's client does, and clears it.
    void takeFrame(const CallRequest& request, const Frame& sent, CallReply& reply)
    {
        int length = 0;
        const bool isOk = Client::isRecvOk(length);
        FrameStream stream;
        const std::vector<StreamItem> items = stream.feed(Client::recvFrame);
        dropFrame();
        if (!isOk || items.empty() || items[0].kind != StreamItem::frame) {
            reply.fail(0, LinkCause::badFrame, badFrameText(items));
            return;
        }
        reply.hasFrame = true;
        const Frame& frame = items[0].content;
        reply.commandMismatch = frame.command == sent.command ? Text() : mismatchText(frame, sent, lastSequence);
        if (frame.command == CSocketAPI::errorCommand)
            takeError(frame, reply);
        else
            takePayload(request, frame, sent, reply);
        if (!reply.isGood() || !reply.warning.isEmpty())
            return;
        reply.warning = isEcho(frame, sent) ? echoText() : mismatchText(frame, sent, lastSequence);
        lastSequence = frame.sequence;
    }

    static void takeError(const Frame& frame, CallReply& reply)
    {
        if (frame.payload.size() < 4)
            reply.fail(-2, LinkCause::errorFrame, Text::tr("an error frame without a code"));
        else
            reply.fail(CSocketAPI::byte2Int(frame.payload.constData()), LinkCause::errorFrame,
                       Text::tr("the server's own code, from an error frame"));
    }

    void takePayload(const CallRequest& request, const Frame& frame, const Frame& sent, CallReply& reply)
    {
        const int result = parse(request.form, frame.payload, reply);
        if (result != 1 && isRepeated(frame, sent))
            reply.fail(result, LinkCause::foreign, echoText());
        else if (result != 1)
            reply.failForm(result, formFault(replyForms()[request.form], frame.payload));
    }

    int parse(ReplyForm form, const QByteArray& payload, CallReply& reply)
    {
        const char* buf = payload.constData();
        switch (form) {
        case replyInts:
            return Client::parseInts(buf, payload.size(), reply.ints);
        case replyStrings:
            return Client::parseStrings(buf, payload.size(), reply.texts);
        case replyBytes: {
            std::vector<unsigned char> bytes;
            const int result = Client::parseBytes(buf, payload.size(), bytes);
            reply.bytes.append(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size()));
            return result;
        }
        case replyInt:
            break;
        }
        int value = 0;
        const int result = Client::parseInt(buf, payload.size(), value);
        if (result == 1)
            reply.ints.push_back(value);
        return result;
    }

protected:
    int lastSequence = -1; // of the latest frame of this connection
};

// --- TCP ----------------------------------------------------------------------------------------------------------

class TcpCallClient : public LibraryCallClient<CReturningTcpClient> {
public:
    TcpCallClient(const std::string& host, int port, int timeoutMs) : LibraryCallClient(host, port, timeoutMs)
    {
        recvBuffer = new char[rawBufferSize]; // deleted by the base
    }

protected:
    // Like ready(), which has one result for several causes.
    bool makeReady(CallReply& reply) override
    {
        if (isIdle())
            return true;
        if (!reopen()) {
            failWithError(reply, -1, errno);
            return false;
        }
        const int result = socket->connect(serverHost, serverPort, false);
        if (result != 1) {
            failWithError(reply, result, result == 0 ? ETIMEDOUT : errno); // 0: still in progress at the send timeout
            return false;
        }
        connected = receiveGreeting(reply);
        if (!connected)
            socket->close();
        return connected;
    }

    void failToSend(CallReply& reply) override
    {
        reply.fail(-1, LinkCause::closed, Text::tr("the server closed, or the connection broke"));
    }

    bool receiveFrame(CallReply& reply) override
    {
        long long came = 0;
        for (;;) {
            const int count = socket->recv(recvBuffer, rawBufferSize);
            if (count <= 0) {
                connected = false;
                socket->close(); // as the library does
                failAtEnd(count, came, reply);
                return false;
            }
            came += count;
            int pos = 0;
            if (recvData(recvBuffer, count, pos))
                return true;
        }
    }

private:
    void failAtEnd(int count, long long came, CallReply& reply) const
    {
        const bool isClosed = count < 0;
        const LinkCause without = isClosed ? LinkCause::closed : LinkCause::noReply;
        reply.fail(count, came > 0 ? LinkCause::badFrame : without,
                   withPart(isClosed ? Text::tr("the server closed, or the connection broke")
                                     : Text::tr("no complete reply in time"),
                            came));
    }

    bool receiveGreeting(CallReply& reply)
    {
        static const int judgedBytes = 65536; // of what arrives instead of a greeting
        QByteArray received;
        bool isWhole = false;
        int count = 1;
        while (!isWhole && (count = socket->recv(recvBuffer, rawBufferSize)) > 0) {
            received.append(recvBuffer, std::min(count, judgedBytes - static_cast<int>(received.size())));
            int pos = 0;
            isWhole = recvData(recvBuffer, count, pos);
        }
        const ByteVerdict verdict = judgeBytes(isWhole ? recvFrame : received, AwaitedBytes::greeting);
        dropFrame();
        lastSequence = verdict.frame ? verdict.frame->sequence : -1;
        const bool isError = verdict.cause == LinkCause::errorFrame;
        // The library's client takes an error frame with a code above 1 for a greeting.
        if (verdict.cause == LinkCause::healthy || (isError && verdict.value > 1))
            return true;
        if (!received.isEmpty())
            reply.fail(isError ? verdict.value : 0, verdict.cause, verdict.detail);
        else if (count < 0)
            reply.fail(0, LinkCause::closed, Text::tr("the server closed before its greeting"));
        else
            reply.fail(0, LinkCause::silent, Text::tr("no greeting in time"));
        return false;
    }
};

// --- UDP ----------------------------------------------------------------------------------------------------------

class UdpCallClient : public LibraryCallClient<CReturningUdpClient> {
public:
    UdpCallClient(const std::string& host, int port, int timeoutMs) : LibraryCallClient(host, port, timeoutMs) {}

protected:
    bool makeReady(CallReply& reply) override
    {
        lastSequence = -1;
        dropFrame();
        if (ready() == 1)
            return true;
        failWithError(reply, -1, errno);
        return false;
    }

    void failToSend(CallReply& reply) override { failWithError(reply, -1, errno); }

    bool receiveFrame(CallReply& reply) override
    {
        const int readable = socket->isReadable(recvOverTm);
        if (readable == 0)
            reply.fail(0, LinkCause::noReply, Text::tr("no reply in time"));
        if (readable < 0)
            failWithError(reply, -1, errno);
        if (readable != 1)
            return false;
        errno = 0;
        const int count = socket->recv(recvBuffer, rawBufferSize);
        if (count <= 0)
            closeAndFail(errno, reply);
        int pos = 0;
        if (count > 0 && recvData(recvBuffer, count, pos))
            return true;
        if (count > 0)
            failOnDatagram(QByteArray::fromRawData(recvBuffer, count), reply);
        return false;
    }

private:
    void failOnDatagram(const QByteArray& datagram, CallReply& reply) const
    {
        const ByteVerdict verdict = judgeBytes(datagram, AwaitedBytes::firstReply);
        if (verdict.cause == LinkCause::foreign)
            reply.fail(0, LinkCause::foreign, verdict.detail);
        else
            reply.fail(0, LinkCause::badFrame,
                       withPart(Text::tr("a datagram without a complete frame"), datagram.size()));
    }

    // The socket's recv returns -1 for an empty datagram too.
    void closeAndFail(int error, CallReply& reply)
    {
        connected = false;
        socket->close();
        if (error == 0)
            reply.fail(-1, LinkCause::badFrame, Text::tr("an empty datagram"));
        else
            failWithError(reply, -1, error);
    }
};

// ------------------------------------------------------------------------------------------------------------------

std::unique_ptr<CallClient> makeTcpClient(const std::string& host, int port, int timeoutMs)
{
    return std::make_unique<TcpCallClient>(host, port, timeoutMs);
}

std::unique_ptr<CallClient> makeUdpClient(const std::string& host, int port, int timeoutMs)
{
    return std::make_unique<UdpCallClient>(host, port, timeoutMs);
}
