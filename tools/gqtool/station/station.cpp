#include "station.h"

#include "frontEnd.h"
#include "pointDatabase.h"
#include "shared/console.h"
#include "shared/stationProtocol.h"

#include <QDateTime>

#include <algorithm>
#include <chrono>
#include <memory>
#include <thread>
#include <udpApi.h>

using gqdb::CByte2Val;
using gqdb::CSocketAPI;
using gqdb::CUdpAPI;

static const unsigned int largestRequest = 1 << 20; // payload bytes

Station::Station(const StationOptions& stationOptions, StationLog& stationLog)
    : options(stationOptions), log(stationLog)
{
}

static QString endText(const std::string& address, int port)
{
    return QString("%1:%2").arg(QString::fromStdString(address)).arg(port);
}

bool Station::listen(const QString& address, int port, bool withDatagrams)
{
    std::string localAddress;
    int localPort = 0;
    // For the text "127.0.0.1" the library binds every interface; for "127.1", the same address, only loopback.
    const std::string bound = address == "127.0.0.1" ? "127.1" : address.toStdString();
    return server.open(bound, port, 128) == 1 && server.getSockName(localAddress, localPort) == 1 &&
           (!withDatagrams || datagrams.openP2P(bound, localPort) == 1);
}

void Station::serve()
{
    std::string localAddress;
    int localPort = 0;
    server.getSockName(localAddress, localPort);
    const QString endpoint = endText(localAddress, localPort);
    report("listening on " + endpoint, {{"event", "listening"}, {"endpoint", endpoint}});
    if (datagrams.isValid())
        std::thread([this] { serveDatagrams(); }).detach();
    for (;;) {
        std::shared_ptr<CTcpSocket> connection(server.accept());
        if (!connection)
            return;
        std::string address;
        int port = 0;
        connection->getPeerName(address, port);
        const QString peer = endText(address, port);
        std::thread([this, connection, peer] { serveConnection(*connection, peer); }).detach();
    }
}

// --- Frames -------------------------------------------------------------------------------------------------------

// A frame without its tail, which depends on the transport.
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

static QByteArray errorFrame(int sequence, int code)
{
    return frameOf(CSocketAPI::errorCommand, sequence, intPayload(code));
}

static void pause(int ms)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
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

// The data set: readings that rise and fall, bytes that count up, and names of points.
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
    CByte2Val::short2Byte(text.size(), payload); // each text has two length fields
    payload.append(text);
}

// Splits `count` items into frames of up to `perFrame` items.
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

QByteArrayList Station::answer(const Frame& request, bool isDatagram)
{
    const unsigned char command = request.command;
    const int sequence = request.sequence;
    const long long now = QDateTime::currentSecsSinceEpoch();

    const auto intReply = [&](int value) { return QByteArrayList{frameOf(command, sequence, intPayload(value))}; };
    const auto errorReply = [&](int code) { return QByteArrayList{errorFrame(sequence, code)}; };
    if (request.payload.size() < (command == CSocketAPI::setTimeCommand ? 8 : 4))
        return errorReply(errorBadPayload);
    const int value = CByte2Val::byte2Int(request.payload.constData());
    const auto listReply = [&](int available, int perFrame, void (*addItem)(int, QByteArray&)) {
        if (value < 1 || value > available)
            return errorReply(errorBadPayload);
        return listFrames(command, sequence, value, perFrame, addItem);
    };

    switch (command) {
    case CSocketAPI::systemStateCommand:
        return intReply(state);
    case CSocketAPI::systemTimeCommand:
        return intReply(static_cast<int>(now + clockOffset));
    case CSocketAPI::clearCommand:
        state = 1;
        clockOffset = 0;
        return intReply(1);
    case CSocketAPI::setTimeCommand: { // two integers; a datagram has their count first
        const int time = isDatagram ? CByte2Val::byte2Int(request.payload.constData() + 4) : value;
        clockOffset = time - now;
        return intReply(1);
    }
    case CSocketAPI::setStateCommand:
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

// --- Service ------------------------------------------------------------------------------------------------------

int Station::send(QByteArrayList frames, const SendFaults& faults, const Transport& transport)
{
    for (QByteArray& frame : frames)
        transport.isDatagram ? CUdpAPI::addEnd(frame) : CSocketAPI::addEnd(frame);
    int sent = 0;
    for (const QByteArrayList& pieces : writesOf(frames, faults)) {
        if (sent > 0)
            pause(options.gapMs);
        for (const QByteArray& piece : pieces) {
            if (!transport.send(piece))
                return -1;
            sent += piece.size();
            if (pieces.size() > 1)
                pause(1); // so that the pieces arrive separately
        }
    }
    return sent;
}

void Station::report(const QString& line, const QJsonObject& event)
{
    log.add(line);
    if (options.isQuiet && event["event"] != "listening")
        return;
    options.printsJson ? printJson(event) : printLine(line);
}

bool Station::serveRequest(const StreamItem& item, const QString& peer, const Transport& transport)
{
    const Frame& request = item.content;
    const int number = ++replies;
    const SendFaults faults = options.script.ofReply(number);
    pause(faults.lateMs);
    int sent = 0;
    if (!faults.silent && faults.closeAfter != 0) { // if nothing is to be sent, the command is not executed
        const QByteArrayList frames = faults.error ? QByteArrayList{errorFrame(request.sequence, *faults.error)}
                                                   : answer(request, transport.isDatagram);
        sent = send(frames, faults, transport);
    }
    const bool closes = faults.closeAfter >= 0 && !faults.silent && !transport.isDatagram;
    QString outcome = "answered";
    QString line = QString("answered with %1 bytes").arg(sent);
    if (sent < 0)
        line = outcome = "gone before the answer";
    else if (closes)
        line = outcome = "closed";
    else if (sent == 0)
        line = outcome = "not answered";
    if (closes && sent > 0)
        line += QString(" after %1 bytes").arg(sent);

    report(QString("%1%2 command 0x%3, %4 bytes: ")
                   .arg(peer, transport.isDatagram ? " by UDP" : "")
                   .arg(request.command, 2, 16, QChar('0'))
                   .arg(item.size) +
               line,
           {{"event", "request"},
            {"peer", peer},
            {"transport", transport.isDatagram ? "UDP" : "TCP"},
            {"command", request.command},
            {"bytes", item.size},
            {"reply", number},
            {"outcome", outcome},
            {"sent", std::max(sent, 0)}});
    return sent >= 0 && !closes;
}

void Station::serveConnection(CTcpSocket& connection, const QString& peer)
{
    const Transport stream = {false, [&](const QByteArray& bytes) { return sendAll(connection, bytes); }};
    report(peer + " connected", {{"event", "connected"}, {"peer", peer}});
    const SendFaults faults = options.script.ofGreeting(++greetings);
    pause(faults.lateMs);
    if (!faults.silent) {
        const QByteArray greeting =
            faults.error ? errorFrame(0, *faults.error) : frameOf(0, 0, intPayload(options.greeting));
        const int sent = send({greeting}, faults, stream);
        if (sent >= 0 && faults.closeAfter >= 0)
            report(QString("%1 closed after %2 bytes of its greeting").arg(peer).arg(sent),
                   {{"event", "closed"}, {"peer", peer}, {"sent", sent}});
        if (sent < 0 || faults.closeAfter >= 0)
            return;
    }
    FrameStream requests;
    char piece[4096];
    bool isFrames = true; // false closes the connection, as does a length that is too large for a request
    while (isFrames) {
        const int count = connection.recv(piece, sizeof piece);
        if (count < 0)
            break;
        for (const StreamItem& item : requests.feed(QByteArray(piece, count))) {
            isFrames = isFrames && item.kind == StreamItem::frame;
            if (isFrames && !serveRequest(item, peer, stream))
                return;
        }
        isFrames = isFrames && requests.announcedLength() <= largestRequest;
    }
    report(peer + " gone", {{"event", "gone"}, {"peer", peer}});
}

void Station::serveDatagrams()
{
    QByteArray datagram;
    for (;;) {
        std::string address;
        int port = 0;
        datagram.resize(65536);
        const int count = datagrams.recvfrom(datagram.data(), datagram.size(), address, port);
        datagram.resize(std::max(count, 0));
        const std::vector<StreamItem> items = FrameStream().feed(datagram);
        if (items.empty() || items[0].kind != StreamItem::frame)
            continue;
        const Transport reply = {true, [&](const QByteArray& bytes) {
                                     return datagrams.sendto(bytes.constData(), bytes.size(), address, port) > 0;
                                 }};
        serveRequest(items[0], endText(address, port), reply);
    }
}
