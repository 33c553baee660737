// Shows the library's main job on real traffic: a client calls a simulated station over TCP on loopback, fetches its
// records, loses the connection and reconnects. Prints a line per request; the exit status is 0 only if every result is
// the expected one.

#include "demo.h"

#include "databaseScenes.h"
#include "frontEndScenes.h"
#include "shared/console.h"
#include "shared/stationProcess.h"
#include "shared/stationProtocol.h"

#include <QDateTime>
#include <QDir>
#include <QFile>

#include <sys/socket.h>
#include <sys/types.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <gqFileLog.h>

using gqdb::CByte2Val;
using gqdb::CTcpAPI;

// --- Byte counts ----------------------------------------------------------------------------------------
// The demo counts bytes by replacing the two socket calls that a client makes for each request.

static long bytesSent = 0;
static long bytesReceived = 0;

extern "C" ssize_t send(int descriptor, const void* buffer, size_t length, int flags)
{
    const ssize_t count = sendto(descriptor, buffer, length, flags, nullptr, 0);
    if (count > 0)
        bytesSent += count;
    return count;
}

extern "C" ssize_t recv(int descriptor, void* buffer, size_t length, int flags)
{
    const ssize_t count = recvfrom(descriptor, buffer, length, flags, nullptr, nullptr);
    if (count > 0)
        bytesReceived += count;
    return count;
}

// --- Output -------------------------------------------------------------------------------------------

static int wrongResults = 0;
static CGqFileLog clientLog; // the lines of show(); saved at the end

void printHeading(const QString& text)
{
    printLine("\n" + text);
}

void show(const QString& request, int result, bool asExpected, const QString& meaning)
{
    const QString line = QString("%1 sent %2  received %3  result %4  %5")
                             .arg(request, -28)
                             .arg(bytesSent, 3)
                             .arg(bytesReceived, 5)
                             .arg(result, 10)
                             .arg(asExpected ? meaning : "UNEXPECTED, must be: " + meaning);
    printLine("  " + line);
    clientLog.info(line);
    bytesSent = 0;
    bytesReceived = 0;
    if (!asExpected)
        ++wrongResults;
}

QByteArray stationRequest(CTcpAPI& client, unsigned char command, int value)
{
    QByteArray frame;
    client.addHeader(command, 0, 0, frame);
    CByte2Val::int2Byte(value, frame);
    CTcpAPI::addEnd(frame);
    return frame;
}

int fetch(CTcpAPI& client, unsigned char command, QByteArray& bytes)
{
    std::vector<unsigned char> list;
    const int result = client.requestBytes(stationRequest(client, command, 0), 0, list);
    bytes = QByteArray(reinterpret_cast<const char*>(list.data()), static_cast<int>(list.size()));
    return result;
}

// --- The scenes ---------------------------------------------------------------------------------------------------

static void showReadyMadeCommands(CTcpAPI& client)
{
    printHeading("The five ready-made commands: one integer in each direction, two in the request of setTime");
    int result = client.systemState();
    show("systemState (1)", result, result == 1, "state 1");

    const int now = static_cast<int>(QDateTime::currentSecsSinceEpoch());
    result = client.systemTime();
    show("systemTime (2)", result, abs(result - now) <= 2,
         "the station's clock, " + QDateTime::fromSecsSinceEpoch(result).toString(Qt::ISODate));

    result = client.clear();
    show("clear (3)", result, result == 1, "cleared");

    result = client.setTime(1000000000, 0);
    show("setTime (5)", result, result == 1, "clock set to 1000000000");
    result = client.systemTime();
    show("systemTime (2)", result, result >= 1000000000 && result <= 1000000002, "the clock that was set");

    result = client.setState(7);
    show("setState (6)", result, result == 7, "state 7 taken");
    result = client.systemState();
    show("systemState (1)", result, result == 7, "state 7");
}

static void showLists(CTcpAPI& client)
{
    printHeading("Lists, in several frames each");
    std::vector<int> values;
    int result = client.requestInts(stationRequest(client, commandInts, 250), 250, values);
    bool right = result == 1 && values.size() == 250 && values[1] == 210 && values[249] == 690;
    show("250 integers (0x20)", result, right, "three frames: 200, 210, 220 ... 690");

    std::vector<unsigned char> bytes;
    result = client.requestBytes(stationRequest(client, commandBytes, 10000), 10000, bytes);
    right = result == 1 && bytes.size() == 10000 && bytes[255] == 0xFF && bytes[9999] == 0x0F;
    show("10000 bytes (0x21)", result, right, "three frames: 00, 01, 02 ... 0f");

    QStringList texts;
    result = client.requestStrings(stationRequest(client, commandStrings, 25), 25, texts);
    right = result == 1 && texts.size() == 25 && texts[24] == "unit 3 temperature 1";
    show("25 strings (0x22)", result, right, "three frames: " + texts.value(0) + " ... " + texts.value(24));
}

static void showErrorFrame(CTcpAPI& client)
{
    printHeading("An error frame marks the link down, and the next request waits for a greeting that does not come");
    int result = client.requestInt(commandError, -7);
    show("provoke error -7 (0x23)", result, result == -7 && !client.isConnected(), "the station's code; link down");

    result = client.systemState();
    show("systemState (1)", result, result == 0 && !client.isConnected(), "no greeting in time; socket closed");

    result = client.systemState();
    show("systemState (1)", result, result == 7 && client.isConnected(), "greeted on a new connection; state 7");
}

static void showLostStation(CTcpAPI& client, StationProcess& station)
{
    const int port = station.port();
    printHeading("The station goes away");
    station.stop();
    int result = client.systemState();
    show("systemState (1)", result, result == -1 && !client.isConnected(), "the link is down");
    result = client.systemState();
    show("systemState (1)", result, result == -1 && !client.isConnected(), "connection refused");

    printHeading("The station is back, and the next request reconnects");
    const bool started = station.start(port);
    result = client.systemState();
    show("systemState (1)", result, started && result == 1 && client.isConnected(),
         "greeted; state 1 after its restart");
}

static void showEndOf(const QString& path)
{
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    const QList<QByteArray> lines = file.readAll().split('\n'); // the last one is empty
    printLine(QString("  %1, %2 lines, the last ones").arg(path).arg(lines.size() - 1));
    for (const QByteArray& line : lines.mid(lines.size() - 3, 2))
        printLine("    " + QString::fromUtf8(line));
}

static void showLogs(StationProcess& station, const QString& stationLog, const QString& clientLogFile)
{
    printHeading("Both ends kept a log; the station saved its log at the end");
    station.stop();
    if (!clientLog.save())
        ++wrongResults;
    showEndOf(stationLog);
    showEndOf(clientLogFile);
}

int main(int argc, char* argv[])
{
    if (argc != 3) {
        std::fputs("usage: gqdemo GQTOOL FOLDER\n", stderr);
        return 2;
    }
    const QDir folder(argv[2]);
    const QString stationLog = folder.filePath("demo-station.log");
    const QString clientLogFile = folder.filePath("demo-client.log");
    QFile::remove(stationLog);
    clientLog.init(clientLogFile);
    clientLog.clear();
    alarm(60);            // ends the demo if it hangs
    takeStandardOutput(); // the library's own line would appear within the table

    StationProcess station(argv[1], {"--log", stationLog});
    if (!station.start(0)) {
        printError("the station did not start");
        return 1;
    }
    printLine(QString("A station listens on 127.0.0.1:%1").arg(station.port()));

    CTcpAPI client;
    client.setRecvOverTm(1000);

    printHeading("A client connects");
    const int result = client.connect("127.0.0.1", station.port());
    show("connect", result, result == 1 && client.isConnected(), "greeted; link up");

    showReadyMadeCommands(client);
    showLists(client);
    showDatabase(client, folder.filePath("demo-wave.svg"));
    showFrontEnd(client);
    showErrorFrame(client);
    showLostStation(client, station);

    client.close();
    showLogs(station, stationLog, clientLogFile);
    printLine(wrongResults == 0 ? QString("\nEvery result is the expected one.")
                                : QString("\n%1 results are not the expected ones.").arg(wrongResults));
    return wrongResults == 0 ? 0 : 1;
}
