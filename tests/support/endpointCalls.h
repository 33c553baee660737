#pragma once

#include "support/hex.h"
#include "support/systemCalls.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <iostream>
#include <sstream>
#include <string>
#include <utility>

// Fixture for tests of the system calls of endpoints. Fails the test if output remains in std::cout that takeOutput()
// has not fetched.
class EndpointCalls : public testing::Test {
protected:
    EndpointCalls() : programsOutput(std::cout.rdbuf(&output)) {}

    ~EndpointCalls() override
    {
        std::cout.rdbuf(programsOutput);
        EXPECT_EQ(output.flushed + output.str(), "");
    }

    // Returns what was written and flushed since the last call. Flushing sets errno, as it may on a closed terminal.
    std::string takeOutput() { return std::exchange(output.flushed, {}); }

    SystemCalls calls;

private:
    struct Output : std::stringbuf {
        std::string flushed;

        int sync() override
        {
            flushed += str();
            str("");
            errno = EIO;
            return 0;
        }
    };

    Output output;
    std::streambuf* programsOutput;
};

// Milliseconds as passed to select(2): both parts are truncated towards zero and keep the sign.
struct SelectTime {
    int ms;
    const char* text;
};

static constexpr SelectTime selectTimes[] = {
    {0, "{0, 0}"},
    {1, "{0, 1000}"},
    {999, "{0, 999000}"},
    {1000, "{1, 0}"},
    {1500, "{1, 500000}"},
    {INT_MAX, "{2147483, 647000}"},
    {-1, "{0, -1000}"},
    {-999, "{0, -999000}"},
    {-1000, "{-1, 0}"},
    {-1500, "{-1, -500000}"},
    {INT_MIN, "{-2147483, -648000}"},
};

// "" and exactly "127.0.0.1" mean every interface.
static constexpr struct {
    const char* text;
    int port;
    const char* shown; // port and address, in memory order
} localAddresses[] = {
    {"", 1502, "05 de, 00 00 00 00"},
    {"127.0.0.1", 1502, "05 de, 00 00 00 00"},
    {"0.0.0.0", 1502, "05 de, 00 00 00 00"},
    {"127.1", 1502, "05 de, 7f 00 00 01"},
    {"127.0.0.01", 1502, "05 de, 7f 00 00 01"},
    {"127.0.0.1 ", 1502, "05 de, 7f 00 00 01"},
    {"127.0.0.2", 1502, "05 de, 7f 00 00 02"},
    {"192.168.10.20", 1502, "05 de, c0 a8 0a 14"},
    {" ", 1502, "05 de, ff ff ff ff"}, // inet_addr() fails
    {" 127.0.0.1", 1502, "05 de, ff ff ff ff"},
    {"localhost", 1502, "05 de, ff ff ff ff"},
    {"", 0, "00 00, 00 00 00 00"}, // only the low 16 bits of a port are used
    {"", 65535, "ff ff, 00 00 00 00"},
    {"", 65536 + 1502, "05 de, 00 00 00 00"},
    {"", -1, "ff ff, 00 00 00 00"},
};

// The sockaddr_in of 127.0.0.1, port 1502: 0 family, 2 port and 4 address in network order, 8 filler.
static const QByteArray peerBytes = "0200 05de 7f000001 0000000000000000"_hex;

// The lines with each # replaced by the descriptor, and each + by its successor, the count of a select.
inline std::string on(int descriptor, const std::string& lines)
{
    std::string result;
    for (const char letter : lines) {
        if (letter == '#')
            result += std::to_string(descriptor);
        else if (letter == '+')
            result += std::to_string(descriptor + 1);
        else
            result += letter;
    }
    return result;
}

// Around the end of a word of a set, and of the 1024 bits of an fd_set.
static constexpr int edgeDescriptors[] = {63, 64, 1023, 1024, 1500, 20000};

// --- The calls of TCP endpoints ---

static const std::string makesSocket = "socket(AF_INET, SOCK_STREAM, 0)\n";

// A CTcpSocket opens and socket(2) returns this descriptor.
inline std::string opening(int descriptor)
{
    return makesSocket + on(descriptor,
                            "setsockopt(#, IPPROTO_TCP, TCP_NODELAY, [01], 1)\n" // one byte, not an int: Nagle stays on
                            "setsockopt(#, SOL_SOCKET, SO_REUSEADDR, [01 00 00 00], 4)\n"
                            "setsockopt(#, SOL_SOCKET, SO_LINGER, [01 00 00 00 00 00 00 00], 8)\n" // on, 0 s
                            "setsockopt(#, SOL_SOCKET, SO_RCVBUF, [00 10 0e 00], 4)\n"             // 921600
                            "setsockopt(#, SOL_SOCKET, SO_SNDBUF, [00 10 0e 00], 4)\n"
                            "signal(SIGPIPE, SIG_IGN)\n");
}

// A CTcpSocket takes over a descriptor.
inline std::string takeover(int descriptor)
{
    return on(descriptor, "setsockopt(#, SOL_SOCKET, SO_REUSEADDR, [01 00 00 00], 4)\n"
                          "setsockopt(#, SOL_SOCKET, SO_LINGER, [01 00 00 00 00 00 00 00], 8)\n");
}

inline std::string closing(int descriptor)
{
    return on(descriptor, "shutdown(#, SHUT_RDWR)\n"
                          "close(#)\n");
}
