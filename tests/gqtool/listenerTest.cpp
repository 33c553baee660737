// The sockets of the station and of trace.

#include "gqtool/listener.h"

#include "support/plainSockets.h"

#include <gtest/gtest.h>

#include <cerrno>

TEST(Listener, keepsNoDescriptorForAPortThatIsTaken)
{
    for (const int type : {SOCK_STREAM, SOCK_DGRAM}) {
        sockaddr_in address = addressOf("127.0.0.1", 0);
        const Descriptor holder(openBound(type, address));
        ASSERT_GE(holder, 0);
        if (type == SOCK_STREAM) {
            ASSERT_EQ(listen(holder, 1), 0); // SO_REUSEADDR permits a second socket otherwise
        }
        const std::set<int> before = openDescriptors();
        errno = 0;
        EXPECT_EQ(openBound(type, address), -1);
        EXPECT_EQ(errno, EADDRINUSE);
        EXPECT_TRUE(openedSince(before).empty());
    }
}

TEST(Listener, waitsForResourcesThatOthersMayFree)
{
    for (const int error : {EMFILE, ENFILE, ENOBUFS, ENOMEM})
        EXPECT_TRUE(isOutOfResources(error)) << error;
    for (const int error : {EAGAIN, ECONNABORTED, EINTR, EINVAL, EPERM})
        EXPECT_FALSE(isOutOfResources(error)) << error;
}
