#pragma once

#include "support/gqtoolProgram.h"
#include "support/hex.h"
#include "support/plainSockets.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include <arpa/inet.h>
#include <poll.h>

// A trace between the test's own client and station.
class RunningTrace : public RunningProgram {
public:
    explicit RunningTrace(int stationPort, const QStringList& options = {})
        : RunningProgram(GQTOOL, QStringList{"trace", "--listen", "0"} + options +
                                     QStringList{QString("127.0.0.1:%1").arg(stationPort)})
    {
        const QString first = nextLine();
        const QRegularExpressionMatch found = QRegularExpression("127\\.0\\.0\\.1:(\\d+)").match(first);
        EXPECT_TRUE(found.hasMatch()) << first.toStdString();
        port = found.captured(1).toInt();
    }

    // The next line, without its time.
    std::string nextText()
    {
        const QString line = nextLine();
        EXPECT_TRUE(QRegularExpression("^\\d\\d:\\d\\d:\\d\\d\\.\\d\\d\\d ").match(line).hasMatch())
            << line.toStdString();
        return line.mid(13).toStdString();
    }

    int port = 0;
};

// A client and the station, connected through a trace.
struct Link {
    Link(Listener& station, const RunningTrace& trace)
        : client(connected("127.0.0.1", trace.port)), server(station.accept())
    {
    }

    Descriptor client;
    Descriptor server;
};

inline void give(int descriptor, const QByteArray& bytes)
{
    EXPECT_EQ(::send(descriptor, bytes.constData(), size_t(bytes.size()), MSG_NOSIGNAL), bytes.size());
}

inline std::string taken(int descriptor, int size)
{
    return hex(QByteArray::fromStdString(received(descriptor, size_t(size))));
}

inline bool wasReset(int descriptor)
{
    char byte = 0;
    return ::recv(descriptor, &byte, 1, 0) < 0 && errno == ECONNRESET;
}

static const QByteArray request = "68 04000000 0400 00 00 06 07000000 0000 16"_hex;
static const QByteArray reply = "68 04000000 0400 00 00 06 f9ffffff 0000 16"_hex;

// --- Datagrams ---

class DatagramSocket {
public:
    DatagramSocket() : descriptor(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address = loopback(0);
        EXPECT_EQ(::bind(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        const timeval limit = {limitMs / 1000, 0};
        ::setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    }

    int port() const
    {
        sockaddr_in address = {};
        socklen_t size = sizeof address;
        ::getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &size);
        return ntohs(address.sin_port);
    }

    void sendTo(int toPort, const QByteArray& bytes)
    {
        const sockaddr_in address = loopback(toPort);
        EXPECT_EQ(::sendto(descriptor, bytes.constData(), size_t(bytes.size()), 0,
                           reinterpret_cast<const sockaddr*>(&address), sizeof address),
                  bytes.size());
    }

    bool isReadable(int ms) const { return becomes(descriptor, POLLIN, ms); }

    // The next datagram, and where it comes from.
    std::string take(int* fromPort = nullptr)
    {
        QByteArray bytes(65536, '\0');
        sockaddr_in address = {};
        socklen_t size = sizeof address;
        const ssize_t count =
            ::recvfrom(descriptor, bytes.data(), size_t(bytes.size()), 0, reinterpret_cast<sockaddr*>(&address), &size);
        if (fromPort != nullptr)
            *fromPort = ntohs(address.sin_port);
        return count < 0 ? "none" : hex(bytes.left(int(count)));
    }

private:
    static sockaddr_in loopback(int port)
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(uint16_t(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        return address;
    }

    Descriptor descriptor;
};
