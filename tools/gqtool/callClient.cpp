#include "callClient.h"

#include <algorithm>
#include <tcpApi.h>
#include <udpApi.h>

using gqdb::CTcpAPI;
using gqdb::CUdpAPI;

// --- TCP ----------------------------------------------------------------------------------------------------------

class TcpCallClient : public CallClient {
public:
    explicit TcpCallClient(int timeoutMs)
    {
        client.setRecvOverTm(timeoutMs);
        client.setSendOverTm(timeoutMs);
    }

    int connect(const std::string& host, int port) override { return client.connect(host, port); }

    int requestInt(unsigned char command, int argument, int& value) override
    {
        return told(client.requestInt(command, argument), value);
    }
    int setTime(int first, int second, int& value) override { return told(client.setTime(first, second), value); }

    int requestInts(unsigned char command, int argument, int count, std::vector<int>& out) override
    {
        return client.requestInts(frameOf(command, argument), count, out);
    }
    int requestBytes(unsigned char command, int argument, int count, std::vector<unsigned char>& out) override
    {
        return client.requestBytes(frameOf(command, argument), count, out);
    }
    int requestStrings(unsigned char command, int argument, int count, QStringList& out) override
    {
        return client.requestStrings(frameOf(command, argument), count, out);
    }

private:
    // The operations that answer with the reply's integer: isConnected tells it from a code.
    int told(int result, int& value)
    {
        if (!client.isConnected())
            return result;
        value = result;
        return 1;
    }

    QByteArray frameOf(unsigned char command, int argument)
    {
        QByteArray frame;
        client.addHeader(command, 0, 0, frame);
        CTcpAPI::int2Byte(argument, frame);
        CTcpAPI::addEnd(frame);
        return frame;
    }

    CTcpAPI client;
};

// --- UDP ----------------------------------------------------------------------------------------------------------

class UdpCallClient : public CallClient, private CUdpAPI {
public:
    explicit UdpCallClient(int timeoutMs)
    {
        recvBuffer = new char[rawBufferSize]; // given back by the base; without it no reply can be read
        setRecvOverTm(timeoutMs);
    }

    int connect(const std::string& host, int port) override { return CUdpAPI::connect(host, port); }

    int requestInt(unsigned char command, int argument, int& value) override
    {
        const int sent = sendInt(command, argument);
        return sent == 1 ? receiveInt(value) : sent;
    }
    int setTime(int first, int second, int& value) override
    {
        const int sent = sendInts(5, {first, second});
        return sent == 1 ? receiveInt(value) : sent;
    }

    int requestInts(unsigned char command, int argument, int count, std::vector<int>& out) override
    {
        return CUdpAPI::requestInts(frameOf(command, argument), count, out);
    }
    int requestBytes(unsigned char command, int argument, int count, std::vector<unsigned char>& out) override
    {
        return CUdpAPI::requestBytes(frameOf(command, argument), count, out);
    }
    int requestStrings(unsigned char command, int argument, int count, QStringList& out) override
    {
        return CUdpAPI::requestStrings(frameOf(command, argument), count, out);
    }

private:
    // As recvInt, which can't tell a value from a code: isConnected stays as it was over UDP.
    int receiveInt(int& value)
    {
        int len = 0;
        int result = recvDatas(len);
        if (result != 1)
            return result;
        len =
            std::min(len, recvFrame.size() - headerSize); // none of an error frame that holds 1; a wrapped length lies
        result = len < 4 ? -5 : parseInt(recvFrame.constData() + headerSize, len, value);
        recvFrame.clear();
        recvFrameSize = 0;
        return result;
    }

    QByteArray frameOf(unsigned char command, int argument)
    {
        QByteArray frame;
        addHeader(command, 0, 0, frame);
        int2Byte(argument, frame);
        addEnd(frame);
        return frame;
    }
};

// ------------------------------------------------------------------------------------------------------------------

std::unique_ptr<CallClient> makeTcpClient(int timeoutMs)
{
    return std::make_unique<TcpCallClient>(timeoutMs);
}

std::unique_ptr<CallClient> makeUdpClient(int timeoutMs)
{
    return std::make_unique<UdpCallClient>(timeoutMs);
}
