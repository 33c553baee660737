// Runs returning clients against a simulated station whose replies fail at random, and checks that each recovers and
// that no reply is taken for the reply to another request. The exit code is 0 only if every value was right and neither
// descriptors nor memory have grown. Run by scripts/soak.

#include "gqtool/commandLine.h"
#include "shared/console.h"
#include "shared/processFigures.h"
#include "shared/progress.h"
#include "shared/stationProcess.h"

#include <QCoreApplication>
#include <QTemporaryFile>

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <climits>
#include <cmath>
#include <deque>
#include <functional>
#include <gqLibUnix.h>
#include <returningClient.h>
#include <thread>

using Clock = std::chrono::steady_clock;

static const int clientsPerTransport = 50;
static const int timeoutMs = 200;
static const int pauseMs = 20; // between the requests of a client

// Each fault is seldom enough that most requests succeed. A reply after 400 ms is late for a client.
static const char* const script = "greeting 1% silent\n"
                                  "greeting 1% late 100\n"
                                  "greeting 1% close-after 9\n"
                                  "greeting 1% pieces 3\n"
                                  "reply 0.5% late 100\n"
                                  "reply 0.5% late 400\n"
                                  "reply 0.5% silent\n"
                                  "reply 0.5% wrong-end\n"
                                  "reply 0.5% close-after 13\n"
                                  "reply 0.5% close-after 0\n"
                                  "reply 0.5% together\n"
                                  "reply 0.5% split 9\n"
                                  "reply 0.5% pieces 4\n"
                                  "reply 0.5% error -7\n"
                                  "reply every/50000 down 500\n";

// --- The clients --------------------------------------------------------------------------------------------------

struct Counts {
    std::atomic<bool> isOver{false};
    std::atomic<long long> requests{0};
    std::atomic<long long> failures{0};   // no value: a fault, or the station was down
    std::atomic<long long> recoveries{0}; // right values after failures
    std::atomic<long long> wrong{0};      // values of other requests
};

// Sets the state to numbers that no other client uses. The station returns each of them.
template <typename Client>
static void runClient(Client& client, int index, Counts& counts)
{
    bool hasFailed = false;
    for (int number = index + 1; !counts.isOver; number += 2 * clientsPerTransport) {
        const int value = client.ready() == 1 ? client.setState(number) : 0;
        ++counts.requests;
        if (value > 0 && value != number)
            ++counts.wrong;
        if (value <= 0)
            ++counts.failures;
        else if (hasFailed)
            ++counts.recoveries;
        hasFailed = value <= 0;
        gqdb::usleep(pauseMs * 1000);
    }
}

// --- The run ------------------------------------------------------------------------------------------------------

struct Side {
    const char* name;
    pid_t process;
    int descriptors = 0; // before the clients connect
    int descriptorsAtEnd = 0;
    Memory memory = {};

    bool isGood() const { return descriptorsAtEnd <= descriptors && !memory.hasGrown(); }
};

static QString summary(const Counts& counts)
{
    return QString("%1 requests, %2 failures, %3 recoveries, %4 wrong values")
        .arg(counts.requests)
        .arg(counts.failures)
        .arg(counts.recoveries)
        .arg(counts.wrong);
}

static void runClients(int port, double seconds, Counts& counts, const std::function<void()>& whenWarm)
{
    std::deque<gqdb::CReturningTcpClient> tcpClients;
    std::deque<gqdb::CReturningUdpClient> udpClients;
    std::deque<std::thread> threads;
    for (int i = 0; i < clientsPerTransport; ++i) {
        gqdb::CReturningTcpClient& tcp = tcpClients.emplace_back("127.0.0.1", port, timeoutMs);
        gqdb::CReturningUdpClient& udp = udpClients.emplace_back("127.0.0.1", port, timeoutMs);
        threads.emplace_back([&tcp, &counts, i] { runClient(tcp, 2 * i, counts); });
        threads.emplace_back([&udp, &counts, i] { runClient(udp, 2 * i + 1, counts); });
    }
    Progress progress;
    bool isWarm = false;
    const Clock::time_point begin = Clock::now();
    while (!counts.isOver) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        const double done = std::chrono::duration<double>(Clock::now() - begin).count() / seconds;
        if (!isWarm && done >= 0.2)
            whenWarm();
        isWarm = done >= 0.2;
        counts.isOver = done >= 1;
        progress.show(QString("%1 %, %2").arg(int(100 * done)).arg(summary(counts)));
    }
    for (std::thread& thread : threads)
        thread.join();
    clearProgress();
}

// Returns true if every value was right and nothing has grown.
static bool soak(double minutes, const StationProcess& station)
{
    Side sides[] = {{"clients", getpid()}, {"station", station.pid()}};
    for (Side& side : sides)
        side.descriptors = openDescriptorsOf(side.process);
    Counts counts;
    runClients(station.port(), 60 * minutes, counts, [&] {
        for (Side& side : sides)
            side.memory.warm = residentMemory(side.process);
    });
    gqdb::usleep(1000000); // the longest fault, so that the station has closed the last connections
    for (Side& side : sides) {
        side.memory.last = residentMemory(side.process);
        side.descriptorsAtEnd = openDescriptorsOf(side.process);
    }

    printLine(QString("requests      %1").arg(counts.requests));
    printLine(QString("failures      %1").arg(counts.failures));
    printLine(QString("recoveries    %1").arg(counts.recoveries));
    printLine(QString("wrong values  %1").arg(counts.wrong));
    printLine("");
    printLine("descriptors  at the start  at the end");
    bool isGood = counts.wrong == 0 && counts.recoveries > 0;
    for (const Side& side : sides) {
        printLine(QString("%1 %2 %3").arg(side.name, -12).arg(side.descriptors, 12).arg(side.descriptorsAtEnd, 11));
        isGood = isGood && side.isGood();
    }
    printLine("");
    printLine("memory      once warm    at the end");
    for (const Side& side : sides)
        printMemory(side.name, side.memory);
    return isGood;
}

int main(int argc, char* argv[])
{
    qInstallMessageHandler(printQtWarning);
    const QCoreApplication application(argc, argv);
    CommandLine line("Runs returning clients against a simulated station with random faults.");
    const Option seed = line.integer("seed", "choose the faults from NUMBER (default: 1)", "NUMBER", 0, INT_MAX, 1);
    const Option tool = line.requiredArgument("GQTOOL", "the program gqtool, to run the station");
    const Option duration = line.requiredArgument("MINUTES", "how long");
    int exitCode = 0;
    if (!line.parse(QCoreApplication::arguments(), exitCode))
        return exitCode;
    const double minutes = duration.text().toDouble();
    if (!(minutes > 0 && std::isfinite(minutes))) // also refuses nan
        return usageError(QString("MINUTES must be a number above 0, got '%1'").arg(duration.text()));

    takeStandardOutput(); // the library prints a line for each connect
    QTemporaryFile faults;
    if (!faults.open() || faults.write(script) < 0 || !faults.flush()) {
        printError("cannot write the script of faults: " + faults.errorString());
        return 1;
    }
    StationProcess station(tool.text(), {"--quiet", "--udp", "--script", faults.fileName(), "--seed", seed.text()});
    if (!station.start(0)) {
        printError("the station did not start");
        return 1;
    }
    return soak(minutes, station) ? 0 : 1;
}
