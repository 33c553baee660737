#pragma once

#include "support/plainSockets.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

static const std::string clearLine = "\r\033[K"; // clears the line of progress

// The other side of a terminal, `width` columns wide; 0 if unknown.
struct Terminal {
    explicit Terminal(unsigned short width = 0) : peer(posix_openpt(O_RDWR | O_NOCTTY))
    {
        EXPECT_EQ(grantpt(peer), 0);
        EXPECT_EQ(unlockpt(peer), 0);
        device = Descriptor(open(name(), O_RDWR | O_NOCTTY));
        const winsize size = {24, width, 0, 0};
        EXPECT_EQ(ioctl(device, TIOCSWINSZ, &size), 0);
    }

    const char* name() const { return ptsname(peer); } // of the device

    // Returns the next `size` bytes written to the terminal, fewer if they do not arrive in time.
    std::string read(size_t size)
    {
        std::string text;
        for (char byte = 0; text.size() < size && becomes(peer, POLLIN) && ::read(peer, &byte, 1) == 1;)
            text += byte;
        return text;
    }

    // What has been written to it since the last call.
    std::string shown()
    {
        EXPECT_EQ(write(device, "|", 1), 1); // a terminal passes bytes on in its own time
        std::string text;
        for (std::string next = read(1); !next.empty() && next != "|"; next = read(1))
            text += next;
        return text;
    }

    Descriptor peer;
    Descriptor device;
};
