#include "station.h"

#include "console.h"
#include "frontEnd.h"
#include "pointDatabase.h"
#include "stationProtocol.h"

#include <QDateTime>

#include <algorithm>
#include <chrono>
#include <memory>
#include <thread>
#include <udpApi.h>

using gqdb::CByte2Val;
using gqdb::CSocketAPI;
using gqdb::CUdpAPI;

static const int largestRequest = 1 << 20; // payload bytes; what announces more is not a request

Station::Station(const StationFaults& stationFaults, StationLog& stationLog) : faults(stationFaults), log(stationLog) {}

static QString endText(const std::string& address, int port)
{
    return QString("%1:%2").arg(QString::fromStdString(address)).arg(port);
}

bool Station::listen(const QString& address, int port, bool withDatagrams)
{
    std::string localAddress;
    int localPort = 0;
    return server.open(address.toStdString(), port, 128) == 1 && server.getSockName(localAddress, localPort) == 1 &&
           (!withDatagrams || datagrams.openP2P(address.toStdString(), localPort) == 1);
}

QString Station::endpoint()
{
    std::string address;
    int port = 0;
    server.getSockName(address, port);
    return endText(address, port);
}

bool Station::serve()
{
    if (datagrams.isValid())
        std::thread([this] { serveDatagrams(); }).detach();
    for (;;) {
        std::shared_ptr<CTcpSocket> connection(server.accept());
        if (!connection)
            return false;
        std::string address;
        int port = 0;
        connection->getPeerName(address, port);
        const QString peer = endText(address, port);
        std::thread([this, connection, peer] { serveConnection(*connection, peer); }).detach();
    }
}

// --- Frames -------------------------------------------------------------------------------------------------------

// Without its tail, which depends on how it travels.
static QByteArray frameOf(unsigned char command, int sequence, const QByteArray& payload)
{
    QByteArray frame;
    CSocketAPI::addHeader(command, 0, 0, sequence, 0, frame);
    return frame + payload;
}

static QByteArray intPayload(int value)
{
    QByteArray payload;
    CByte2Val::int2Byte(value, payload);
    return payload;
}

static bool receive(CTcpSocket& connection, QByteArray& bytes, int count)
{
    while (count > 0) {
        char part[4096];
        const int received = connection.recv(part, std::min(count, static_cast<int>(sizeof part)));
        if (received < 0)
            return false;
        bytes.append(part, received);
        count -= received;
    }
    return true;
}

static bool isRequestHeader(const QByteArray& bytes)
{
    if (bytes.size() < CSocketAPI::headerSize || bytes.at(0) != CSocketAPI::frameStart)
        return false;
    const int length = CByte2Val::byte2Int(bytes.constData() + 1);
    return length >= 0 && length <= largestRequest;
}

static int requestSize(const QByteArray& header)
{
    return CByte2Val::byte2Int(header.constData() + 1) + CSocketAPI::frameOverhead;
}

// The next request, whole; false when the client is gone or what it sent is no frame.
static bool receiveFrame(CTcpSocket& connection, QByteArray& frame)
{
    frame.clear();
    if (!receive(connection, frame, CSocketAPI::headerSize) || !isRequestHeader(frame))
        return false;
    return receive(connection, frame, requestSize(frame) - frame.size()) &&
           frame.at(frame.size() - 1) == CSocketAPI::frameEnd;
}

static void pause(int ms)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

bool Station::send(const QByteArray& bytes, const Transport& transport)
{
    const int piece = faults.pieceSize > 0 ? faults.pieceSize : bytes.size();
    for (int done = 0; done < bytes.size(); done += piece) {
        if (!transport.send(bytes.mid(done, piece)))
            return false;
        if (faults.pieceSize > 0)
            pause(1); // so that the pieces travel apart
    }
    return true;
}

static bool sendAll(CTcpSocket& connection, const QByteArray& bytes)
{
    for (int done = 0; done < bytes.size();) {
        const int count = connection.send(bytes.constData() + done, bytes.size() - done);
        if (count <= 0)
            return false;
        done += count;
    }
    return true;
}

// --- Answers ------------------------------------------------------------------------------------------------------

// The data set: readings that rise and fall, bytes that count, and names of points.
static void addInt(int index, QByteArray& payload)
{
    const int phase = index % 200;
    CByte2Val::int2Byte(200 + 10 * (phase < 100 ? phase : 200 - phase), payload);
}

static void addByte(int index, QByteArray& payload)
{
    payload.append(static_cast<char>(index));
}

static void addString(int index, QByteArray& payload)
{
    QByteArray text;
    CByte2Val::str2Byte(QString("unit %1 temperature %2").arg(index / 12 + 1).arg(index % 12 + 1), text);
    CByte2Val::short2Byte(text.size(), payload); // each text stands behind two length fields
    payload.append(text);
}

// `count` items in as many frames as they need.
static QByteArrayList listFrames(unsigned char command, int sequence, int count, int perFrame,
                                 void (*addItem)(int index, QByteArray& payload))
{
    QByteArrayList frames;
    for (int first = 0; first < count; first += perFrame) {
        const int items = std::min(perFrame, count - first);
        QByteArray payload = intPayload(items);
        for (int index = first; index < first + items; ++index)
            addItem(index, payload);
        frames.append(frameOf(command, sequence, payload));
    }
    return frames;
}

QByteArrayList Station::answer(const QByteArray& request, bool isDatagram)
{
    const auto command = static_cast<unsigned char>(request.at(9));
    const int sequence = CByte2Val::byte2UShort(request.constData() + 5);
    const int length = request.size() - CSocketAPI::frameOverhead;
    const long long now = QDateTime::currentSecsSinceEpoch();

    const auto intReply = [&](int value) { return QByteArrayList{frameOf(command, sequence, intPayload(value))}; };
    const auto errorReply = [&](int code) {
        return QByteArrayList{frameOf(CSocketAPI::errorCommand, sequence, intPayload(code))};
    };
    if (length < (command == 5 ? 8 : 4))
        return errorReply(errorBadPayload);
    const int value = CByte2Val::byte2Int(request.constData() + CSocketAPI::headerSize);
    const auto listReply = [&](int available, int perFrame, void (*addItem)(int, QByteArray&)) {
        if (value < 1 || value > available)
            return errorReply(errorBadPayload);
        return listFrames(command, sequence, value, perFrame, addItem);
    };

    switch (command) {
    case 1: // systemState
        return intReply(state);
    case 2: // systemTime
        return intReply(static_cast<int>(now + clockOffset));
    case 3: // clear
        state = 1;
        clockOffset = 0;
        return intReply(1);
    case 5: { // setTime: two integers, counted in a datagram
        const int time = isDatagram ? CByte2Val::byte2Int(request.constData() + CSocketAPI::headerSize + 4) : value;
        clockOffset = time - now;
        return intReply(1);
    }
    case 6: // setState
        state = value;
        return intReply(value);
    case commandInts:
        return listReply(intCount, intsPerFrame, addInt);
    case commandBytes:
        return listReply(byteCount, bytesPerFrame, addByte);
    case commandStrings:
        return listReply(stringCount, stringsPerFrame, addString);
    case commandError:
        return errorReply(value);
    default:
        break;
    }
    QByteArray records = databaseReply(command);
    if (records.isEmpty())
        records = frontEndReply(command);
    if (records.isEmpty())
        return errorReply(errorUnknownCommand);
    return QByteArrayList{frameOf(command, sequence, intPayload(records.size()) + records)};
}

int Station::sendReply(QByteArrayList frames, const Transport& transport)
{
    int sent = 0;
    pause(faults.lateMs);
    for (QByteArray& frame : frames) {
        if (sent > 0)
            pause(faults.gapMs);
        if (transport.isDatagram)
            CUdpAPI::addEnd(frame);
        else
            CSocketAPI::addEnd(frame);
        if (faults.wrongEnd)
            frame[frame.size() - 1] = CSocketAPI::frameEnd + 1;
        if (!send(frame, transport))
            return -1;
        sent += frame.size();
    }
    return sent;
}

// --- Service ------------------------------------------------------------------------------------------------------

void Station::say(const QString& line)
{
    log.add(line);
    printLine(line);
}

bool Station::serveRequest(const QByteArray& request, const QString& peer, const Transport& transport)
{
    const QString line = QString("%1 command 0x%2, %3 bytes: ")
                             .arg(peer)
                             .arg(static_cast<unsigned char>(request.at(9)), 2, 16, QChar('0'))
                             .arg(request.size());
    if (faults.closes && !transport.isDatagram) {
        say(line + "closed");
        return false;
    }
    if (faults.silent || faults.closes) {
        say(line + "not answered");
        return true;
    }
    const int sent = sendReply(answer(request, transport.isDatagram), transport);
    say(line + (sent < 0 ? QString("gone before the answer") : QString("answered with %1 bytes").arg(sent)));
    return sent >= 0;
}

void Station::serveConnection(CTcpSocket& connection, const QString& peer)
{
    const Transport stream = {false, [&](const QByteArray& bytes) { return sendAll(connection, bytes); }};
    say(peer + " connected");
    if (faults.greets) {
        QByteArray greeting = frameOf(0, 0, intPayload(faults.greeting));
        CSocketAPI::addEnd(greeting);
        if (!send(greeting, stream))
            return;
    }
    QByteArray request;
    while (receiveFrame(connection, request)) {
        if (!serveRequest(request, peer, stream))
            return;
    }
    say(peer + " gone");
}

void Station::serveDatagrams()
{
    QByteArray request;
    for (;;) {
        std::string address;
        int port = 0;
        request.resize(65536);
        const int count = datagrams.recvfrom(request.data(), request.size(), address, port);
        request.resize(std::max(count, 0));
        if (!isRequestHeader(request) || request.size() < requestSize(request) ||
            request.at(requestSize(request) - 1) != CSocketAPI::frameEnd)
            continue;
        request.truncate(requestSize(request));
        const Transport reply = {true, [&](const QByteArray& bytes) {
                                     return datagrams.sendto(bytes.constData(), bytes.size(), address, port) > 0;
                                 }};
        serveRequest(request, endText(address, port) + " by UDP", reply);
    }
}
