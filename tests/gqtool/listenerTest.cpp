// The sockets of the station and of trace.

#include "gqtool/listener.h"

#include "support/plainSockets.h"

#include <gtest/gtest.h>

#include <cerrno>

#include <sys/resource.h>

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

TEST(Listener, saysThatDescriptorsRunOut)
{
    rlimit usual = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &usual), 0);
    rlimit none = usual;
    none.rlim_cur = 0;
    sockaddr_in address = addressOf("127.0.0.1", 0);
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    errno = 0;
    const int bound = openBound(SOCK_STREAM, address);
    const int error = errno;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &usual), 0);
    EXPECT_EQ(bound, -1);
    EXPECT_EQ(error, EMFILE);
}

TEST(Listener, knowsTheAddressesOfASocket)
{
    const sockaddr_in one = addressOf("127.0.0.1", 5000);
    EXPECT_TRUE(isSocketAt(addressOf("127.0.0.1", 5000), one));
    EXPECT_FALSE(isSocketAt(addressOf("127.0.0.1", 5001), one));
    EXPECT_FALSE(isSocketAt(addressOf("127.0.0.2", 5000), one));
    const sockaddr_in all = addressOf("0.0.0.0", 5000);
    EXPECT_TRUE(isSocketAt(addressOf("127.0.0.1", 5000), all));
    EXPECT_TRUE(isSocketAt(addressOf("127.0.0.2", 5000), all));
    EXPECT_FALSE(isSocketAt(addressOf("127.0.0.1", 5001), all));
    EXPECT_FALSE(isSocketAt(addressOf("192.0.2.1", 5000), all)); // no machine has this address
}
