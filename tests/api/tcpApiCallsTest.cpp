#include "support/endpointCalls.h"
#include "support/frames.h"
#include "support/openTcpClient.h"

#include <cerrno>
#include <string>

// The system calls of each operation of a client. Its socket is descriptor 7, or 8 after it was reopened.
class TcpApiCalls : public EndpointCalls {
protected:
    TcpApiCalls() : client(newClient())
    {
        calls.take();
        takeOutput();
    }

    void give(const QByteArray& bytes) { calls.answer("recv", bytes.size(), bytes); }

    void connect()
    {
        give(greeting);
        EXPECT_EQ(client.connect("127.0.0.1", 1502), 1);
        calls.take();
    }

    std::string askOnce()
    {
        const int result = client.requestInt(0x30, 9);
        return std::to_string(result) + ": " + client.link();
    }

    // The next request opens a new socket and receives a greeting and a reply.
    void expectComeback()
    {
        const int sequence = client.sendSeq;
        calls.answer("socket", 8);
        calls.answer("send", 17);
        give(greeting);
        give(reply7);
        EXPECT_EQ(askOnce(), "7: up, open");
        EXPECT_EQ(calls.take(), opening(8) + connects(8) + reads(8) + sends(8, sequence) + reads(8));
    }

    static std::string connects(int descriptor)
    {
        return on(descriptor, "connect(#, {AF_INET, 05 de, 7f 00 00 01}, 16)\n");
    }

    static std::string reads(int descriptor) { return on(descriptor, "recv(#, 655350, MSG_NOSIGNAL)\n"); }

    static std::string sends(int descriptor, int sequence)
    {
        return on(descriptor, "send(#, [68 04 00 00 00 ") + hex(QByteArray(1, char(sequence))) +
               " 00 00 00 30 09 00 00 00 00 00 16], 17, MSG_NOSIGNAL)\n";
    }

    OpenTcpClient client;

private:
    OpenTcpClient newClient()
    {
        calls.answer("socket", 7);
        return {};
    }
};

// --- Link ---

using TcpApiConnectCalls = TcpApiCalls;

TEST_F(TcpApiConnectCalls, connectsAndReadsTheGreeting)
{
    give(greeting);
    EXPECT_EQ(client.connect("127.0.0.1", 1502), 1);
    EXPECT_EQ(calls.take(), connects(7) + reads(7));
}

// The system continues connecting. The socket is kept, and a later attempt gets the result.
TEST_F(TcpApiConnectCalls, keepsTheSocketIfASignalInterruptsIt)
{
    calls.refuse("connect", EINTR);
    EXPECT_EQ(client.connect("127.0.0.1", 1502), -1);
    EXPECT_EQ(errno, EINTR);
    EXPECT_EQ(client.link(), "down, open");

    calls.refuse("connect", EALREADY);
    EXPECT_EQ(askOnce(), "-1: down, open");

    calls.refuse("connect", EISCONN);
    calls.answer("send", 17);
    give(greeting);
    give(reply7);
    EXPECT_EQ(askOnce(), "7: up, open");
    EXPECT_EQ(calls.take(), connects(7) + connects(7) + connects(7) + reads(7) + sends(7, 0) + reads(7));
}

TEST_F(TcpApiConnectCalls, closesIfASignalInterruptsTheWaitForTheGreeting)
{
    calls.refuse("recv", EINTR);
    EXPECT_EQ(client.connect("127.0.0.1", 1502), 0);
    EXPECT_EQ(client.link(), "down, closed");
    EXPECT_EQ(calls.take(), connects(7) + reads(7) + closing(7));
    expectComeback();
}

using TcpApiCloseCalls = TcpApiCalls;

// Linux closes the descriptor even if a signal interrupts close(2).
TEST_F(TcpApiCloseCalls, closesOnceWhateverTheSystemReturns)
{
    connect();
    calls.refuse("shutdown", ENOTCONN);
    calls.refuse("close", EINTR);
    EXPECT_EQ(client.close(), 1);
    EXPECT_EQ(client.link(), "down, closed");
    EXPECT_EQ(calls.take(), closing(7));
    expectComeback();
}

// --- Requests ---

using TcpApiRequestCalls = TcpApiCalls;

TEST_F(TcpApiRequestCalls, sendsOnceAndReadsUntilTheFrameIsComplete)
{
    connect();
    calls.answer("send", 17);
    for (const char byte : reply7)
        give(QByteArray(1, byte));
    EXPECT_EQ(askOnce(), "7: up, open");
    std::string expected = sends(7, 0);
    for (int i = 0; i < reply7.size(); ++i)
        expected += reads(7);
    EXPECT_EQ(calls.take(), expected);
}

TEST_F(TcpApiRequestCalls, closesWhenTheSendFails)
{
    for (const int error : {EINTR, EAGAIN, EPIPE, ECONNRESET, ENOBUFS}) {
        SCOPED_TRACE(error);
        client.close();
        calls.answer("socket", 7);
        connect();
        const int sequence = client.sendSeq;
        calls.refuse("send", error);
        EXPECT_EQ(askOnce(), "-1: down, closed");
        EXPECT_EQ(calls.take(), sends(7, sequence) + closing(7));
    }
    expectComeback();
}

TEST_F(TcpApiRequestCalls, closesWhenAReadFailsAndKeepsAPartialFrame)
{
    const struct {
        int error;
        const char* outcome;
    } failures[] = {
        {EINTR, "-1: down, closed"},        {ECONNRESET, "-1: down, closed"}, {ETIMEDOUT, "-1: down, closed"},
        {EHOSTUNREACH, "-1: down, closed"}, {EAGAIN, "0: down, closed"},
    };
    for (const auto& [error, outcome] : failures) {
        for (const int size : {0, 12}) {
            SCOPED_TRACE(error);
            client.sendDatas(0x30); // drops the partial frame of the last iteration
            client.close();
            calls.answer("socket", 7);
            connect();
            const int sequence = client.sendSeq;
            calls.answer("send", 17);
            if (size > 0)
                give(reply7.left(size));
            calls.refuse("recv", error);
            EXPECT_EQ(askOnce(), outcome);
            EXPECT_EQ(calls.take(), sends(7, sequence) + (size > 0 ? reads(7) : "") + reads(7) + closing(7));
            EXPECT_EQ(hex(client.recvFrame), hex(reply7.left(size)));
        }
    }
}
