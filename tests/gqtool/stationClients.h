#pragma once

#include "support/frames.h"
#include "support/gqtoolProgram.h"
#include "support/inputFile.h"
#include "support/plainSockets.h"

#include <QTemporaryDir>

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

// A simulated station with a file, and clients of it on plain system calls.

// A file in a temporary folder, which the destructor removes.
struct ScriptFile {
    explicit ScriptFile(const QByteArray& text, const QString& name = "faults.txt") : path(folder.filePath(name))
    {
        write(text);
    }

    void write(const QByteArray& text) const { writeTo(path, text); }

    QTemporaryDir folder;
    QString path;
};

struct ScriptedStation : ScriptFile, RunningStation {
    explicit ScriptedStation(const QByteArray& text, const QStringList& options = {})
        : ScriptFile(text), RunningStation(QStringList{"--udp", "--script", path} + options)
    {
    }

    Outcome callShortly(const QStringList& words) { return call(QStringList{"--timeout", "500"} + words); }
};

// A client of a station, on plain system calls.
struct PlainClient {
    explicit PlainClient(const RunningStation& station) : connection(connected("127.0.0.1", station.port())) {}

    void send(const QByteArray& bytes)
    {
        EXPECT_EQ(::send(connection, bytes.constData(), size_t(bytes.size()), 0), bytes.size());
    }

    std::string next(const QByteArray& expected)
    {
        return hex(QByteArray::fromStdString(received(connection, size_t(expected.size()))));
    }
    bool isAtEnd() { return ::isAtEnd(connection); }

    Descriptor connection;
};

#define EXPECT_NEXT(client, expected) EXPECT_EQ((client).next(expected), hex(expected))

// A client that sends and receives datagrams.
struct DatagramClient {
    explicit DatagramClient(const RunningStation& station) : socket(::socket(AF_INET, SOCK_DGRAM, 0))
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(uint16_t(station.port()));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    }

    void send(const QByteArray& bytes)
    {
        EXPECT_EQ(::send(socket, bytes.constData(), size_t(bytes.size()), 0), bytes.size());
    }

    std::string next()
    {
        char bytes[65536];
        const ssize_t count = becomes(socket, POLLIN) ? ::recv(socket, bytes, sizeof bytes, 0) : 0;
        return hex(QByteArray(bytes, int(count)));
    }

    Descriptor socket;
};

// setState is answered with the state.
static const QByteArray setState7 = "68 04000000 0000 00 00 06 07000000 0000 16"_hex;
static const QByteArray setState8 = "68 04000000 0000 00 00 06 08000000 0000 16"_hex;
static const QByteArray state7 = setState7;
static const QByteArray state8 = setState8;
static const QByteArray state7WithWrongEnd = "68 04000000 0000 00 00 06 07000000 0000 17"_hex;
static const QByteArray askState = "68 04000000 0000 00 00 01 00000000 0000 16"_hex;
static const QByteArray state1 = "68 04000000 0000 00 00 01 01000000 0000 16"_hex;

// The reply to setState7 in a datagram, where 47 zeros fill its payload up to 51 bytes.
static const QByteArray datagram7 = "68 33000000 0000 00 00 06 07000000"_hex + QByteArray(47, '\0') + "0000 16"_hex;
