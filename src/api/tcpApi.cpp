#include "tcpApi.h"

#include "currentTime.h"
#include "gqSocketUnix.h"
#include "replyFrame.h"

#include <new>

namespace gqdb {

CTcpAPI::CTcpAPI() : socket(new CTcpSocket)
{
    CTcpAPI::setRecvOverTm(recvOverTm);
    CTcpAPI::setSendOverTm(sendOverTm);
}

CTcpAPI::~CTcpAPI()
{
    delete socket;
    socket = nullptr;
}

int CTcpAPI::setRecvOverTm(int ms)
{
    socket->setRecvOverTm(ms);
    return CSocketAPI::setRecvOverTm(ms);
}

int CTcpAPI::setSendOverTm(int ms)
{
    socket->setSendOverTm(ms);
    return CSocketAPI::setSendOverTm(ms);
}

// --- Link ---------------------------------------------------------------------------------------------------------

int CTcpAPI::connect(const std::string& host, int port)
{
    if (recvBuffer == nullptr)
        recvBuffer = new (std::nothrow) char[rawBufferSize];
    if (recvBuffer == nullptr)
        return -1;
    serverHost = host;
    serverPort = port;
    connected = false;
    return checkConnect();
}

int CTcpAPI::connectServer(const std::string& host, int port)
{
    // A socket that this call opens has no time-outs: they are deliberately not set again.
    const int result = socket->connect(host, port, false);
    if (result != 1)
        return result;
    if (recvInt() > 0) // the greeting; its value has no other use
        return 1;
    socket->close();
    return 0;
}

int CTcpAPI::checkConnect()
{
    if (connected)
        return 1;
    const int result = connectServer(serverHost, serverPort);
    if (result == 1)
        connected = true;
    return result;
}

int CTcpAPI::close()
{
    if (socket != nullptr)
        socket->close();
    connected = false;
    return 1;
}

// --- Ready-made commands ------------------------------------------------------------------------------------------

int CTcpAPI::systemState()
{
    return requestInt(systemStateCommand, currentTime());
}

int CTcpAPI::systemTime()
{
    return requestInt(systemTimeCommand, currentTime());
}

int CTcpAPI::clear()
{
    return requestInt(clearCommand, currentTime());
}

int CTcpAPI::setTime(int first, int second)
{
    QByteArray frame;
    addHeader(setTimeCommand, 0, 0, frame);
    int2Byte(first, frame); // two bare integers: this payload has no count
    int2Byte(second, frame);
    addEnd(frame);
    const int sent = sendDatas(frame);
    return sent == 1 ? recvInt() : sent;
}

int CTcpAPI::setState(int value)
{
    return requestInt(setStateCommand, value);
}

// --- Requests -----------------------------------------------------------------------------------------------------

// Returns 1, or the result that ends the request.
static int connectAndSend(CTcpAPI& client, const QByteArray& frame)
{
    const int result = client.checkConnect();
    return result == 1 ? client.sendDatas(frame) : result;
}

int CTcpAPI::requestInt(const QByteArray& frame)
{
    const int sent = connectAndSend(*this, frame);
    return sent == 1 ? recvInt() : sent;
}

int CTcpAPI::requestBytes(const QByteArray& frame, int count, std::vector<unsigned char>& out)
{
    const int sent = connectAndSend(*this, frame);
    return sent == 1 ? recvBytes(count, out) : sent;
}

int CTcpAPI::requestInts(const QByteArray& frame, int count, std::vector<int>& out)
{
    const int sent = connectAndSend(*this, frame);
    return sent == 1 ? recvInts(count, out) : sent;
}

int CTcpAPI::requestStrings(const QByteArray& frame, int count, QStringList& out)
{
    const int sent = connectAndSend(*this, frame);
    return sent == 1 ? recvStrings(count, out) : sent;
}

int CTcpAPI::requestInt(unsigned char command, int value)
{
    int result = checkConnect();
    if (result != 1)
        return result;
    result = sendInt(command, value);
    if (result == 1)
        return recvInt();
    connected = false; // sendInt has already done so unless the socket is null
    return result;
}

int CTcpAPI::requestInt(unsigned char command, const std::vector<int>& values)
{
    int result = checkConnect();
    if (result == 1)
        result = sendInts(command, values);
    return result == 1 ? recvInt() : result;
}

// --- Sending ------------------------------------------------------------------------------------------------------

int CTcpAPI::sendDatas(const QByteArray& frame)
{
    CReplyFrame(recvFrame, recvFrameSize).drop(); // the rest of an earlier reply
    if (socket == nullptr)
        return -1;
    if (socket->send(frame.constData(), frame.size()) > 0)
        return 1; // a partial write too
    socket->close();
    connected = false;
    return -1;
}

int CTcpAPI::sendDatas(unsigned char command)
{
    QByteArray frame;
    addHeader(command, 0, 0, frame);
    addEnd(frame);
    return sendDatas(frame);
}

int CTcpAPI::sendInt(unsigned char command, int value)
{
    QByteArray frame;
    addHeader(command, 0, 0, frame);
    int2Byte(value, frame);
    addEnd(frame);
    return sendDatas(frame);
}

int CTcpAPI::sendInts(unsigned char command, const std::vector<int>& values)
{
    QByteArray frame;
    addHeader(command, 0, 0, frame);
    list2Byte(values, frame);
    addEnd(frame);
    return sendDatas(frame);
}

// --- Receiving ----------------------------------------------------------------------------------------------------

// Receives a frame of a reply for CReplyFrame.
static int receive(CSocketAPI& client, int& len)
{
    return static_cast<CTcpAPI&>(client).recvDatas(len);
}

int CTcpAPI::recvInt()
{
    int value = 0;
    const int result = CReplyFrame(recvFrame, recvFrameSize).receiveInt(*this, receive, value);
    if (result == 1)
        return value;
    connected = false; // deliberately also after an error frame, while the socket stays open: one more request fails
    return result;
}

int CTcpAPI::recvBytes(int count, std::vector<unsigned char>& out)
{
    return CReplyFrame(recvFrame, recvFrameSize).receiveBytes(*this, receive, count, out);
}

int CTcpAPI::recvInts(int count, std::vector<int>& out)
{
    return CReplyFrame(recvFrame, recvFrameSize).receiveInts(*this, receive, count, out);
}

int CTcpAPI::recvStrings(int count, QStringList& out)
{
    return CReplyFrame(recvFrame, recvFrameSize).receiveStrings(*this, receive, count, out);
}

int CTcpAPI::recvDatas(int& len)
{
    int count = 0;
    int pos = 0;
    do {
        count = socket->recv(recvBuffer, rawBufferSize);
        if (count <= 0) {
            connected = false;
            socket->close(); // a time-out closes too; the partial frame stays
            return count;
        }
        pos = 0;
    } while (!recvData(recvBuffer, count, pos));
    // Bytes of this read after the frame are lost: each request has one reply.
    return CReplyFrame(recvFrame, recvFrameSize).result(len);
}

bool CTcpAPI::recvData(const char* buf, int size, int& pos)
{
    return CReplyFrame(recvFrame, recvFrameSize).feed(buf, size, pos);
}

bool CTcpAPI::isRecvOk(int& len)
{
    return CReplyFrame(recvFrame, recvFrameSize).isOk(len);
}

} // namespace gqdb
