#include "callClient.h"

#include "gqtool/probe/peerBytes.h"
#include "shared/text.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <returningClient.h>

using gqdb::CReturningTcpClient;
using gqdb::CReturningUdpClient;

// Describes a reply with result 0 that came in time.
static Text badFrameText(const CallRequest& request)
{
    return request.form == replyStrings
               ? Text::tr(
                     "a bad frame: its last byte is not 0x16, or its length is wrong, or a text runs past the end of "
                     "the payload")
               : Text::tr("a bad frame: its last byte is not 0x16, or its length is wrong");
}

// Describes a result that means the same over both transports.
static Text resultText(int result)
{
    switch (result) {
    case -2:
        return Text::tr("an error frame without a code");
    case -5:
        return Text::tr("a payload that is shorter than its form");
    default:
        return Text::tr("the server's own code, from an error frame");
    }
}

static void explain(CallReply& reply, LinkCause cause, const Text& meaning)
{
    reply.cause = cause;
    reply.meaning = meaning;
}

static void explainError(CallReply& reply, int error)
{
    const LinkCause cause = causeOfError(error);
    explain(reply, cause, Text::tr("%1: %2").arg(causeMeaning(cause), errorText(error)));
}

// Explains a reply that has arrived. The transports explain 0 and -1, which have further meanings.
static void explainReply(CallReply& reply)
{
    explain(reply, reply.result == -5 ? LinkCause::badFrame : LinkCause::errorFrame, resultText(reply.result));
}

CallReply CallClient::call(const CallRequest& request)
{
    CallReply reply;
    reply.result = makeReady(reply);
    if (reply.result != 1)
        return reply;
    QElapsedTimer timer;
    timer.start();
    reply.result = exchange(request, reply);
    reply.milliseconds = static_cast<double>(timer.nsecsElapsed()) / 1e6;
    explain(reply, LinkCause::healthy, Text::tr("success"));
    if (reply.result != 1)
        explainFailure(request, reply);
    return reply;
}

// A request over either transport, with the library's client for it.
template <class Client>
class LibraryCallClient : public CallClient, protected Client {
protected:
    using Client::Client;

    int exchange(const CallRequest& request, CallReply& reply) override
    {
        QByteArray frame;
        Client::addHeader(request.command, request.arg1, request.arg2, frame);
        frame += request.payload;
        Client::addEnd(frame);
        switch (request.form) {
        case replyInts:
            return Client::requestInts(frame, request.count, reply.ints);
        case replyStrings:
            return Client::requestStrings(frame, request.count, reply.texts);
        case replyBytes: {
            std::vector<unsigned char> bytes;
            const int result = Client::requestBytes(frame, request.count, bytes);
            reply.bytes = QByteArray(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size()));
            return result;
        }
        case replyInt:
            break;
        }
        return requestValue(frame, reply.ints);
    }

    // Appends the integer of the reply. Returns 1, or the code of the failure: the library's requestInt returns both.
    virtual int requestValue(const QByteArray& frame, std::vector<int>& values) = 0;
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
    int makeReady(CallReply& reply) override
    {
        if (isIdle())
            return 1;
        if (!reopen()) {
            explainError(reply, errno);
            return -1;
        }
        const int result = socket->connect(serverHost, serverPort, false);
        if (result != 1) {
            explainError(reply, result == 0 ? ETIMEDOUT : errno); // 0: still in progress at the send timeout
            return result;
        }
        connected = receiveGreeting(reply);
        if (!connected)
            socket->close();
        return connected ? 1 : 0;
    }

    int requestValue(const QByteArray& frame, std::vector<int>& values) override
    {
        const int value = requestInt(frame);
        if (!isConnected()) // then it is a code
            return value;
        values.push_back(value);
        return 1;
    }

    void explainFailure(const CallRequest& request, CallReply& reply) const override
    {
        const bool hasPart = !recvFrame.isEmpty();
        const bool isClosed = !socket->isValid(); // also by a timeout
        if (isClosed && reply.result == -1)
            explain(reply, hasPart ? LinkCause::badFrame : LinkCause::closed,
                    withPart(Text::tr("the server closed, or the connection broke")));
        else if (isClosed)
            explain(reply, hasPart ? LinkCause::badFrame : LinkCause::noReply,
                    withPart(Text::tr("no complete reply in time")));
        else if (reply.result == 0)
            explain(reply, LinkCause::badFrame, badFrameText(request));
        else
            explainReply(reply);
    }

private:
    // Adds how much of the reply has arrived.
    Text withPart(const Text& text) const
    {
        return recvFrame.isEmpty() ? text : Text::tr("%1, after %2 bytes of it").arg(text).arg(recvFrame.size());
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
        const bool isClosed = count < 0;
        if (received.isEmpty())
            explain(reply, isClosed ? LinkCause::closed : LinkCause::silent,
                    isClosed ? Text::tr("the server closed before its greeting") : Text::tr("no greeting in time"));
        else
            explain(reply, verdict.cause, verdict.detail);
        // The library's client takes an error frame with such a code for a greeting.
        return verdict.cause == LinkCause::healthy || (verdict.cause == LinkCause::errorFrame && verdict.value > 1);
    }
};

// --- UDP ----------------------------------------------------------------------------------------------------------

class UdpCallClient : public LibraryCallClient<CReturningUdpClient> {
public:
    UdpCallClient(const std::string& host, int port, int timeoutMs) : LibraryCallClient(host, port, timeoutMs) {}

protected:
    int makeReady(CallReply& reply) override
    {
        const int result = ready();
        if (result != 1)
            explainError(reply, errno);
        return result;
    }

    // Not by requestInt, whose result can be an integer or a code: over UDP isConnected() does not distinguish them.
    int requestValue(const QByteArray& frame, std::vector<int>& values) override
    {
        int len = 0;
        int result = sendDatas(frame);
        if (result == 1)
            result = recvDatas(len);
        if (result != 1)
            return result;
        // An error frame with code 1 leaves recvFrame empty, and a wrapped length is larger than it.
        len = std::min(len, static_cast<int>(recvFrame.size()) - headerSize);
        int value = 0;
        result = len < 4 ? -5 : parseInt(recvFrame.constData() + headerSize, len, value);
        if (result == 1)
            values.push_back(value);
        return result;
    }

    void explainFailure(const CallRequest& request, CallReply& reply) const override
    {
        if (reply.result == -1 && !socket->isValid())
            explainError(reply, errno);
        else if (reply.result != 0)
            explainReply(reply);
        else if (!recvFrame.isEmpty())
            explain(reply, LinkCause::badFrame,
                    Text::tr("a datagram without a complete frame, with %1 bytes of one").arg(recvFrame.size()));
        else if (reply.milliseconds >= recvOverTm)
            explain(reply, LinkCause::noReply, Text::tr("no reply in time"));
        else
            explain(reply, LinkCause::badFrame, badFrameText(request));
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
