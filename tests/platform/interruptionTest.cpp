// Signals that interrupt a wait in the system: the call returns -1 with EINTR, nothing is lost, and it can be repeated.

#include "support/descriptorsKept.h"
#include "support/interrupted.h"
#include "support/openEndpoints.h"
#include "support/scriptedDatagramPeer.h"
#include "support/tcpConnection.h"

#include "gqLibUnix.h"
#include "gqSocketUnix.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

#include <fcntl.h>

class Interruption : public DescriptorsKept {
protected:
    // Returns true if the call returned -1 with EINTR.
    static bool ends(const std::function<int()>& call, int flags = 0)
    {
        return interrupted(call, flags) == -1 && errno == EINTR;
    }
};

TEST_F(Interruption, interruptsAStreamReadWithoutLosingData)
{
    Connection connection;
    char buffer[10];
    const auto reads = [&] { return connection.socket.recv(buffer, sizeof buffer); };
    EXPECT_TRUE(ends(reads));

    connection.socket.setRecvOverTm(limitMs);
    EXPECT_TRUE(ends(reads));
    EXPECT_TRUE(ends(reads, SA_RESTART)); // a call with a time-out is not restarted

    EXPECT_EQ(::send(connection.peer, "abc", 3, 0), 3);
    EXPECT_EQ(interrupted(reads), 3); // available data is still read
}

TEST_F(Interruption, interruptsABlockedWrite)
{
    Connection connection;
    connection.fill();
    ::fcntl(connection.descriptor(), F_SETFL, 0); // blocks again
    const auto writes = [&] { return connection.socket.send("abc", 3); };
    EXPECT_TRUE(ends(writes));

    connection.socket.setSendOverTm(limitMs);
    EXPECT_TRUE(ends(writes, SA_RESTART));
}

// The connect continues, and another call waits for it again.
TEST_F(Interruption, interruptsAConnect)
{
    const CrowdedListener listener;
    Open<CTcpSocket> socket;
    const auto connects = [&] { return socket.connect("127.0.0.1", listener.port(), false); };
    EXPECT_TRUE(ends(connects));
    socket.setSendOverTm(limitMs);
    EXPECT_TRUE(ends(connects, SA_RESTART));
    EXPECT_TRUE(ends([&] { return socket.isWritable(limitMs); }, SA_RESTART));
    int flags[3] = {};
    EXPECT_TRUE(ends([&] { return socket.select(limitMs, flags[0], flags[1], flags[2]); }, SA_RESTART));
    std::vector<TcpSocketStatus> rows(1);
    rows[0].socket = &socket;
    EXPECT_TRUE(ends([&] { return CGqSocket::select(rows, limitMs); }, SA_RESTART));
}

TEST_F(Interruption, interruptsAnAccept)
{
    CTcpServer server;
    EXPECT_EQ(server.open("127.1", 0, 5), 1);
    const auto accepts = [&] {
        const CTcpSocket* connection = server.accept();
        EXPECT_EQ(connection, nullptr);
        return -1;
    };
    EXPECT_TRUE(ends(accepts));
    server.setRecvOverTm(limitMs);
    EXPECT_TRUE(ends(accepts, SA_RESTART));
}

TEST_F(Interruption, interruptsADatagramReadWithoutLosingData)
{
    DatagramPeer peer;
    CUdpClient client;
    EXPECT_EQ(client.connect("127.0.0.1", peer.port(), false), 1);
    char buffer[10];
    const auto reads = [&] { return client.recv(buffer, sizeof buffer); };
    EXPECT_TRUE(ends(reads));
    EXPECT_TRUE(ends([&] { return client.isReadable(limitMs); }, SA_RESTART));

    std::string address;
    int port = 0;
    EXPECT_EQ(client.getSockName(address, port), 1);
    peer.give(port, "abc");
    EXPECT_EQ(interrupted(reads), 3);

    CUdpServer server;
    EXPECT_EQ(server.openP2P("127.1", 0), 1);
    EXPECT_TRUE(ends([&] { return server.recvfrom(buffer, sizeof buffer, address, port); }));
}

TEST_F(Interruption, endsASleepEarly)
{
    const auto begin = Clock::now();
    interrupted([] {
        gqdb::sleep(60000);
        return 0;
    });
    interrupted([] {
        gqdb::usleep(60000000);
        return 0;
    });
    EXPECT_LT(msSince(begin), 60000);
}
