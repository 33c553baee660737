#pragma once

#include "support/openEndpoints.h"
#include "support/plainSockets.h"

#include "gqSocketUnix.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include <poll.h>
#include <sys/socket.h>

// A connected socket of the library and its peer.
struct Connection {
    Listener listener{5};
    Open<CTcpSocket> socket;
    Descriptor peer;

    Connection()
    {
        EXPECT_EQ(socket.connect("127.0.0.1", listener.port(), false), 1);
        peer = listener.accept();
    }

    int descriptor() const { return *socket.handle; }

    // Writes until nothing more fits, with small buffers at both ends, and returns the number of bytes. The socket is
    // non-blocking afterwards.
    size_t fill()
    {
        const int small = 4096;
        ::setsockopt(peer, SOL_SOCKET, SO_RCVBUF, &small, sizeof small);
        socket.setSendBuf(small);
        socket.setAsyncMode();
        const std::string block(65536, 'x');
        size_t total = 0;
        int count = 0;
        do {
            count = socket.send(block.data(), int(block.size()));
            EXPECT_GE(count, 0);
            total += size_t(std::max(count, 0));
        } while (count > 0 || becomes(descriptor(), POLLOUT, 20)); // bytes taken by the peer make room again
        return total;
    }
};
