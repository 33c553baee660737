// The order of virtual operations, on every machine: programs built against version 1 override them.

#include "gqLibUnix.h"
#include "gqSocketUnix.h"
#include "tcpApi.h"
#include "udpApi.h"

#include <cstddef>
#include <cstring>
#include <gtest/gtest.h>

using namespace gqdb;

// The slot number. A pointer to a virtual operation begins with the slot's byte offset, on x86 plus 1.
static const auto slot = [](auto operation) {
    ptrdiff_t content = 0;
    std::memcpy(&content, &operation, sizeof content);
    return content / ptrdiff_t(sizeof(void*));
};

// An operation that a derived class adds is in the slot after the last one of its base.
struct ApiUser : CSocketAPI {
    virtual void next() {}
};

struct TcpApiUser : CTcpAPI {
    virtual void next() {}
};

struct UdpApiUser : CUdpAPI {
    virtual void next() {}
};

TEST(ApiSlots, containTheTwoTimeOuts)
{
    EXPECT_EQ(slot(&CSocketAPI::setRecvOverTm), 0);
    EXPECT_EQ(slot(&CSocketAPI::setSendOverTm), 1);
    EXPECT_EQ(slot(&ApiUser::next), 2);
}

TEST(ApiSlots, areTheSameInTheClients)
{
    EXPECT_EQ(slot(&CTcpAPI::setRecvOverTm), 0);
    EXPECT_EQ(slot(&CTcpAPI::setSendOverTm), 1);
    EXPECT_EQ(slot(&TcpApiUser::next), 2);
    EXPECT_EQ(slot(&UdpApiUser::next), 2);
}

struct SocketUser : CAbstractSocket {
    virtual void next() {}
};

struct TcpSocketUser : CTcpSocket {
    virtual void next() {}
};

struct TcpServerUser : CTcpServer {
    virtual void next() {}
};

struct UdpServerUser : CUdpServer {
    virtual void next() {}
};

struct UdpClientUser : CUdpClient {
    virtual void next() {}
};

struct SocketCanUser : CSocketCan {
    virtual void next() {}
};

TEST(EndpointSlots, containTheTwoTimeOutsAndClose)
{
    EXPECT_EQ(slot(&CAbstractSocket::setRecvOverTm), 0);
    EXPECT_EQ(slot(&CAbstractSocket::setSendOverTm), 1);
    EXPECT_EQ(slot(&CAbstractSocket::close), 2);
    EXPECT_EQ(slot(&SocketUser::next), 3);
}

TEST(EndpointSlots, areTheSameInTheEndpoints)
{
    EXPECT_EQ(slot(&TcpSocketUser::next), 3);
    EXPECT_EQ(slot(&TcpServerUser::next), 3);
    EXPECT_EQ(slot(&UdpServerUser::next), 3);
    EXPECT_EQ(slot(&UdpClientUser::next), 3);
    EXPECT_EQ(slot(&SocketCanUser::next), 3);
}

struct ThreadUser : CThread {
    virtual void next() {}
};

TEST(ThreadSlots, containBothFormsOfTheDestructorAndRun)
{
    EXPECT_EQ(slot(&CThread::run), 2);
    EXPECT_EQ(slot(&ThreadUser::next), 3);
}
