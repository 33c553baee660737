#include "callClient.h"

#include <QElapsedTimer>

#include <algorithm>
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

CallReply CallClient::call(const CallRequest& request)
{
    CallReply reply;
    if (!isUp) {
        reply.result = connect();
        if (reply.result != 1) {
            reply.meaning = connectFailure(reply.result);
            return reply;
        }
    }
    QElapsedTimer timer;
    timer.start();
    reply.result = exchange(request, reply);
    reply.milliseconds = static_cast<double>(timer.nsecsElapsed()) / 1e6;
    isUp = reply.result == 1;
    reply.meaning = isUp ? "success" : exchangeFailure(request, reply);
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
    }

protected:
    int connect() override
    {
        close();
        recvFrame.clear(); // a partial frame would swallow the greeting
        recvFrameSize = 0;
        socket->open();
        setRecvOverTm(recvOverTm); // each socket that opens anew has none
        setSendOverTm(sendOverTm);
        return CTcpAPI::connect(serverHost, serverPort);
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

    QString connectFailure(int result) const override
    {
        return result == 0 ? "not greeted: no greeting in time, one that was refused, or a server that closed first"
                           : "no connection: refused, or not to be reached";
    }

    QString exchangeFailure(const CallRequest& request, const CallReply& reply) const override
    {
        const QString part = recvFrame.isEmpty() ? QString() : QString(", after %1 bytes of it").arg(recvFrame.size());
        if (reply.result == -1)
            return "the server closed, or the connection broke" + part;
        if (reply.result != 0)
            return resultText(reply.result);
        if (!socket->isValid()) // a time-out closes it
            return "no whole reply in time" + part;
        return request.form == replyStrings ? failedCheck + overrun : failedCheck;
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
    int connect() override
    {
        close();
        recvFrame.clear();
        recvFrameSize = 0;
        return CUdpAPI::connect(serverHost, serverPort);
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

    QString connectFailure(int) const override { return "no way to the server"; }

    QString exchangeFailure(const CallRequest& request, const CallReply& reply) const override
    {
        if (reply.result == -1)
            return "nobody listens there, or the request fits no datagram";
        if (reply.result != 0)
            return resultText(reply.result);
        if (!recvFrame.isEmpty())
            return QString("a datagram without a whole frame, with %1 bytes of one").arg(recvFrame.size());
        if (reply.milliseconds >= recvOverTm)
            return "no reply in time";
        return request.form == replyStrings ? failedCheck + overrun : failedCheck;
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
