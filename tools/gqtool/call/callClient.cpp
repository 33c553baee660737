#include "callClient.h"

#include "gqtool/probe/peerBytes.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <gqSocketUnix.h>
#include <tcpApi.h>
#include <udpApi.h>

using gqdb::CTcpAPI;
using gqdb::CUdpAPI;

static const QString failedCheck("a frame that failed its check: its last byte is not 0x16, or its length lies");
static const QString overrun("; or a text that overruns its payload");

// Of a reply, but for 0 and -1, which tell more over one transport than over the other.
static QString resultText(int result)
{
    switch (result) {
    case -2:
        return "an error frame with no code";
    case -5:
        return "a payload shorter than its form demands";
    default:
        return "the server's own code, from an error frame";
    }
}

static void explain(CallReply& reply, LinkCause cause, const QString& meaning)
{
    reply.cause = cause;
    reply.meaning = meaning;
}

static void explainError(CallReply& reply, int error)
{
    const LinkCause cause = causeOfError(error);
    explain(reply, cause, QString("%1: %2").arg(causeMeaning(cause), strerror(error)));
}

// A reply that came, whatever it was. 0 and -1 have further meanings, which the transports see to.
static void explainReply(CallReply& reply)
{
    explain(reply, reply.result == -5 ? LinkCause::badFrame : LinkCause::errorFrame, resultText(reply.result));
}

CallReply CallClient::call(const CallRequest& request)
{
    CallReply reply;
    if (!isUp) {
        reply.result = connect(reply);
        if (reply.result != 1)
            return reply;
    }
    QElapsedTimer timer;
    timer.start();
    reply.result = exchange(request, reply);
    reply.milliseconds = static_cast<double>(timer.nsecsElapsed()) / 1e6;
    isUp = reply.result == 1;
    explain(reply, LinkCause::healthy, "success");
    if (!isUp)
        explainFailure(request, reply);
    return reply;
}

static QByteArray bytesOf(const std::vector<unsigned char>& values)
{
    return {reinterpret_cast<const char*>(values.data()), static_cast<int>(values.size())};
}

// --- TCP ----------------------------------------------------------------------------------------------------------

class TcpCallClient : public CallClient, private CTcpAPI {
public:
    TcpCallClient(const std::string& host, int port, int timeoutMs)
    {
        serverHost = host;
        serverPort = port;
        recvOverTm = sendOverTm = timeoutMs;
        recvBuffer = new char[rawBufferSize]; // given back by the base
    }

protected:
    // As CTcpAPI::connect, which has one result for several causes.
    int connect(CallReply& reply) override
    {
        close();
        recvFrame.clear(); // a partial frame would swallow the greeting
        recvFrameSize = 0;
        socket->open();
        setRecvOverTm(recvOverTm); // each socket that opens anew has none
        setSendOverTm(sendOverTm);
        const int result = socket->connect(serverHost, serverPort, false);
        if (result != 1) {
            explainError(reply, result == 0 ? ETIMEDOUT : errno); // 0: in progress until the send time-out
            return result;
        }
        connected = receiveGreeting(reply);
        if (!connected)
            socket->close();
        return connected ? 1 : 0;
    }

    int exchange(const CallRequest& request, CallReply& reply) override
    {
        QByteArray frame;
        addHeader(request.command, request.arg1, request.arg2, frame);
        frame += request.payload;
        addEnd(frame);
        if (request.form == replyInts)
            return requestInts(frame, request.count, reply.ints);
        if (request.form == replyStrings)
            return requestStrings(frame, request.count, reply.texts);
        if (request.form == replyBytes) {
            std::vector<unsigned char> bytes;
            const int result = requestBytes(frame, request.count, bytes);
            reply.bytes = bytesOf(bytes);
            return result;
        }
        const int value = requestInt(frame);
        if (!isConnected()) // which tells a reply from a code
            return value;
        reply.ints.push_back(value);
        return 1;
    }

    void explainFailure(const CallRequest& request, CallReply& reply) const override
    {
        const QString part = recvFrame.isEmpty() ? QString() : QString(", after %1 bytes of it").arg(recvFrame.size());
        const bool isClosed = !socket->isValid(); // by a time-out too
        if (isClosed && reply.result == -1)
            explain(reply, part.isEmpty() ? LinkCause::closed : LinkCause::badFrame,
                    "the server closed, or the connection broke" + part);
        else if (isClosed)
            explain(reply, part.isEmpty() ? LinkCause::noReply : LinkCause::badFrame, "no whole reply in time" + part);
        else if (reply.result == 0)
            explain(reply, LinkCause::badFrame, request.form == replyStrings ? failedCheck + overrun : failedCheck);
        else
            explainReply(reply);
    }

private:
    bool receiveGreeting(CallReply& reply)
    {
        static const int judgedBytes = 65536; // of what comes in place of a greeting
        QByteArray came;
        bool isWhole = false;
        int count = 1;
        while (!isWhole && (count = socket->recv(recvBuffer, rawBufferSize)) > 0) {
            came.append(recvBuffer, std::min(count, judgedBytes - came.size()));
            int pos = 0;
            isWhole = recvData(recvBuffer, count, pos);
        }
        const ByteVerdict verdict = judgeBytes(isWhole ? recvFrame : came, AwaitedBytes::greeting);
        recvFrame.clear();
        recvFrameSize = 0;
        const bool isClosed = count < 0;
        if (came.isEmpty())
            explain(reply, isClosed ? LinkCause::closed : LinkCause::silent,
                    isClosed ? "the server closed before its greeting" : "no greeting in time");
        else
            explain(reply, verdict.cause, verdict.detail);
        // To the library's client an error frame with such a code is a greeting.
        return verdict.cause == LinkCause::healthy || (verdict.cause == LinkCause::errorFrame && verdict.value > 1);
    }
};

// --- UDP ----------------------------------------------------------------------------------------------------------

class UdpCallClient : public CallClient, private CUdpAPI {
public:
    UdpCallClient(const std::string& host, int port, int timeoutMs)
    {
        serverHost = host;
        serverPort = port;
        recvBuffer = new char[rawBufferSize]; // given back by the base; without it no reply can be read
        setRecvOverTm(timeoutMs);
    }

protected:
    int connect(CallReply& reply) override
    {
        close();
        recvFrame.clear();
        recvFrameSize = 0;
        const int result = CUdpAPI::connect(serverHost, serverPort);
        if (result != 1)
            explainError(reply, errno);
        return result;
    }

    int exchange(const CallRequest& request, CallReply& reply) override
    {
        QByteArray frame;
        addHeader(request.command, request.arg1, request.arg2, frame);
        frame += request.payload;
        addEnd(frame);
        if (request.form == replyInts)
            return requestInts(frame, request.count, reply.ints);
        if (request.form == replyStrings)
            return requestStrings(frame, request.count, reply.texts);
        if (request.form == replyBytes) {
            std::vector<unsigned char> bytes;
            const int result = requestBytes(frame, request.count, bytes);
            reply.bytes = bytesOf(bytes);
            return result;
        }
        const int sent = sendDatas(frame);
        return sent == 1 ? receiveInt(reply.ints) : sent;
    }

    void explainFailure(const CallRequest& request, CallReply& reply) const override
    {
        if (reply.result == -1 && !socket->isValid())
            explainError(reply, errno);
        else if (reply.result != 0)
            explainReply(reply);
        else if (!recvFrame.isEmpty())
            explain(reply, LinkCause::badFrame,
                    QString("a datagram without a whole frame, with %1 bytes of one").arg(recvFrame.size()));
        else if (reply.milliseconds >= recvOverTm)
            explain(reply, LinkCause::noReply, "no reply in time");
        else
            explain(reply, LinkCause::badFrame, request.form == replyStrings ? failedCheck + overrun : failedCheck);
    }

private:
    // As recvInt, which can't tell a value from a code: isConnected stays as it was over UDP.
    int receiveInt(std::vector<int>& values)
    {
        int len = 0;
        int result = recvDatas(len);
        if (result != 1)
            return result;
        len =
            std::min(len, recvFrame.size() - headerSize); // none of an error frame that holds 1; a wrapped length lies
        int value = 0;
        result = len < 4 ? -5 : parseInt(recvFrame.constData() + headerSize, len, value);
        recvFrame.clear();
        recvFrameSize = 0;
        if (result == 1)
            values.push_back(value);
        return result;
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
