#include "udpApi.h"

#include "currentTime.h"
#include "gqSocketUnix.h"
#include "replyFrame.h"

namespace gqdb {

CUdpAPI::CUdpAPI() : socket(new CUdpClient)
{
    recvOverTm = 3000;
}

CUdpAPI::~CUdpAPI()
{
    delete socket;
    socket = nullptr;
}

// --- Link ---------------------------------------------------------------------------------------------------------

int CUdpAPI::connect(const std::string& host, int port)
{
    serverHost = host;
    serverPort = port;
    const int result = connectServer(serverHost, serverPort);
    connected = result == 1;
    return result;
}

int CUdpAPI::connectServer(const std::string& host, int port)
{
    return socket->connect(host, port, false);
}

int CUdpAPI::close()
{
    socket->close();
    connected = false;
    return 1;
}

// --- Ready-made commands ------------------------------------------------------------------------------------------

int CUdpAPI::systemState()
{
    return requestInt(systemStateCommand, currentTime());
}

int CUdpAPI::systemTime()
{
    return requestInt(systemTimeCommand, currentTime());
}

int CUdpAPI::clear()
{
    return requestInt(clearCommand, currentTime());
}

int CUdpAPI::setTime(int first, int second)
{
    return requestInt(setTimeCommand, std::vector<int>{first, second}); // deliberately with a count, unlike over TCP
}

int CUdpAPI::setState(int value)
{
    return requestInt(setStateCommand, value);
}

// --- Requests -----------------------------------------------------------------------------------------------------

int CUdpAPI::requestInt(const QByteArray& frame)
{
    const int sent = sendDatas(frame);
    return sent == 1 ? recvInt() : sent;
}

int CUdpAPI::requestBytes(const QByteArray& frame, int count, std::vector<unsigned char>& out)
{
    const int sent = sendDatas(frame);
    return sent == 1 ? recvBytes(count, out) : sent;
}

int CUdpAPI::requestInts(const QByteArray& frame, int count, std::vector<int>& out)
{
    const int sent = sendDatas(frame);
    return sent == 1 ? recvInts(count, out) : sent;
}

int CUdpAPI::requestStrings(const QByteArray& frame, int count, QStringList& out)
{
    const int sent = sendDatas(frame);
    return sent == 1 ? recvStrings(count, out) : sent;
}

int CUdpAPI::requestInt(unsigned char command, int value)
{
    const int sent = sendInt(command, value);
    return sent == 1 ? recvInt() : sent;
}

int CUdpAPI::requestInt(unsigned char command, const std::vector<int>& values)
{
    const int sent = sendInts(command, values);
    return sent == 1 ? recvInt() : sent;
}

// --- Sending ------------------------------------------------------------------------------------------------------

int CUdpAPI::addEnd(QByteArray& data)
{
    const int leastSize = 61; // without the tail: no frame is shorter than 64 bytes
    if (data.size() < 4)
        return 0;
    if (data.size() < leastSize)
        data.append(leastSize - data.size(), '\0');
    return CSocketAPI::addEnd(data);
}

int CUdpAPI::sendDatas(const QByteArray& frame)
{
    CReplyFrame(recvFrame, recvFrameSize).drop(); // the rest of an earlier reply
    if (socket == nullptr)
        return -1;
    if (socket->send(frame.constData(), frame.size()) > 0)
        return 1;
    socket->close();
    connected = false;
    return -1;
}

int CUdpAPI::sendInt(unsigned char command, int value)
{
    QByteArray frame;
    addHeader(command, 0, 0, frame);
    int2Byte(value, frame);
    addEnd(frame);
    return sendDatas(frame);
}

int CUdpAPI::sendInts(unsigned char command, const std::vector<int>& values)
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
    return static_cast<CUdpAPI&>(client).recvDatas(len);
}

int CUdpAPI::recvInt()
{
    int value = 0;
    const int result = CReplyFrame(recvFrame, recvFrameSize).receiveInt(*this, receive, value);
    return result == 1 ? value : result;
}

int CUdpAPI::recvBytes(int count, std::vector<unsigned char>& out)
{
    return CReplyFrame(recvFrame, recvFrameSize).receiveBytes(*this, receive, count, out);
}

int CUdpAPI::recvInts(int count, std::vector<int>& out)
{
    return CReplyFrame(recvFrame, recvFrameSize).receiveInts(*this, receive, count, out);
}

int CUdpAPI::recvStrings(int count, QStringList& out)
{
    return CReplyFrame(recvFrame, recvFrameSize).receiveStrings(*this, receive, count, out);
}

int CUdpAPI::recvDatas(int& len)
{
    const int readable = socket->isReadable(recvOverTm);
    if (readable != 1)
        return readable;
    const int count = socket->recv(recvBuffer, rawBufferSize); // -1 if no derived class has set a buffer
    if (count <= 0) {
        connected = false;
        socket->close();
        return count;
    }
    int pos = 0;
    if (!recvData(recvBuffer, count, pos))
        return 0; // the partial frame stays; the next call continues it
    return CReplyFrame(recvFrame, recvFrameSize).result(len);
}

bool CUdpAPI::recvData(const char* buf, int size, int& pos)
{
    return CReplyFrame(recvFrame, recvFrameSize).feed(buf, size, pos);
}

bool CUdpAPI::isRecvOk(int& len)
{
    return CReplyFrame(recvFrame, recvFrameSize).isOk(len);
}

} // namespace gqdb
