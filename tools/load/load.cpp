// Loads a simulated station with clients that send requests without pauses, each in a thread of its own, and checks
// every reply. The exit code is 0 only if each reply was right and the memory of neither side has grown. Run by
// scripts/load.

#include "gqtool/commandLine.h"
#include "shared/console.h"
#include "shared/processFigures.h"
#include "shared/progress.h"
#include "shared/stationProcess.h"
#include "shared/stationProtocol.h"

#include <QCoreApplication>

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <climits>
#include <deque>
#include <future>
#include <mutex>
#include <returningClient.h>
#include <thread>

using Clock = std::chrono::steady_clock;

// --- A client -----------------------------------------------------------------------------------------------------

class LoadClient : public gqdb::CReturningTcpClient {
public:
    explicit LoadClient(int port) : CReturningTcpClient("127.0.0.1", port, 9000) {}

    // Sends request `number`: an integer and lists of many lengths in turn. Returns true if the reply was right.
    bool ask(int number)
    {
        if (ready() != 1)
            return false;
        switch (number % 4) {
        case 0:
            return echoesState(number);
        case 1:
            return sendsInts(1 + number % intsPerFrame);
        case 2:
            return sendsBytes(1 + 37 * (number % 110));
        default:
            return sendsStrings(1 + number % stringsPerFrame);
        }
    }

    int wraps() const { return sequenceWraps; }

private:
    // Also compares the sequence, which the station copies from the request: a reply to another request is detected.
    bool echoesState(int value)
    {
        const int sequence = sendSeq;
        int len = 0;
        int echo = 0;
        if (sendInt(setStateCommand, value) != 1 || recvDatas(len) != 1)
            return false;
        const bool isRight = byte2UShort(recvFrame.constData() + 5) == sequence &&
                             parseInt(recvFrame.constData() + headerSize, len, echo) == 1 && echo == value;
        countWrap(sequence);
        return isRight;
    }

    bool sendsInts(int count)
    {
        std::vector<int> values;
        if (requestInts(requestFor(commandInts, count), count, values) != 1 || int(values.size()) != count)
            return false;
        for (int i = 0; i < count; ++i) { // rising from 200 in tens
            if (values[size_t(i)] != 200 + 10 * i)
                return false;
        }
        return true;
    }

    bool sendsBytes(int count)
    {
        std::vector<unsigned char> bytes;
        if (requestBytes(requestFor(commandBytes, count), count, bytes) != 1 || int(bytes.size()) != count)
            return false;
        for (int i = 0; i < count; ++i) {
            if (bytes[size_t(i)] != i % 256)
                return false;
        }
        return true;
    }

    bool sendsStrings(int count)
    {
        QStringList texts;
        if (requestStrings(requestFor(commandStrings, count), count, texts) != 1 || texts.size() != count)
            return false;
        for (int i = 0; i < count; ++i) {
            if (texts[i] != "unit 1 temperature " + QString::number(i + 1))
                return false;
        }
        return true;
    }

    QByteArray requestFor(unsigned char command, int value)
    {
        const int sequence = sendSeq;
        QByteArray frame;
        addHeader(command, 0, 0, frame);
        int2Byte(value, frame);
        addEnd(frame);
        countWrap(sequence);
        return frame;
    }

    void countWrap(int sequence) { sequenceWraps += sendSeq < sequence; }

    int sequenceWraps = 0;
};

// --- The run ------------------------------------------------------------------------------------------------------

struct Plan {
    int clients;
    int seconds;
    int requests; // of each client
};

struct Run {
    std::atomic<bool> isOver{false};
    std::atomic<int> running{0};
    std::atomic<long long> requests{0};
    std::atomic<long long> errors{0};
    std::atomic<long long> wraps{0};
};

static void runClient(LoadClient& client, int most, Run& run, const std::shared_future<void>& released)
{
    for (int number = 0; number < most && !run.isOver; ++number) {
        if (!client.ask(number))
            ++run.errors;
        ++run.requests;
    }
    run.wraps += client.wraps();
    --run.running;
    released.wait(); // a thread that ends returns memory
}

static double secondsSince(Clock::time_point begin)
{
    return std::chrono::duration<double>(Clock::now() - begin).count();
}

// Returns true if each reply was right and no memory has grown.
static bool load(const Plan& plan, const StationProcess& station)
{
    std::deque<LoadClient> clients;
    for (int i = 0; i < plan.clients; ++i) {
        if (clients.emplace_back(station.port()).ready() != 1) {
            printError("a client cannot connect to the station");
            return false;
        }
    }

    Run run;
    run.running = plan.clients;
    std::promise<void> release;
    const std::shared_future<void> released = release.get_future().share();
    const Clock::time_point begin = Clock::now();
    std::deque<std::thread> threads;
    for (LoadClient& client : clients)
        threads.emplace_back([&] { runClient(client, plan.requests, run, released); });

    Memory own;
    Memory stations;
    Progress progress;
    const double most = double(plan.clients) * plan.requests;
    while (run.running > 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        const double done = std::max(secondsSince(begin) / plan.seconds, double(run.requests) / most);
        if (own.warm == 0 && done >= 0.2 && run.requests >= 1000LL * plan.clients) {
            own.warm = residentMemory(getpid());
            stations.warm = residentMemory(station.pid());
        }
        if (done >= 1)
            run.isOver = true;
        progress.show(QString("%1 %, %2 requests").arg(int(100 * done)).arg(run.requests));
    }
    const double seconds = secondsSince(begin);
    own.last = residentMemory(getpid());
    stations.last = residentMemory(station.pid());
    release.set_value();
    for (std::thread& thread : threads)
        thread.join();
    clearProgress();

    printLine(QString("clients     %1").arg(plan.clients));
    printLine(QString("seconds     %1").arg(seconds, 0, 'f', 1));
    printLine(QString("requests    %1").arg(run.requests));
    printLine(QString("errors      %1").arg(run.errors));
    printLine(QString("per second  %1").arg(run.requests / seconds, 0, 'f', 0));
    printLine(QString("wraps       %1, of the sequence from 65535 to 0").arg(run.wraps));
    printLine("");
    printLine("memory      once warm    at the end");
    printMemory("clients", own);
    printMemory("station", stations);
    return run.errors == 0 && run.requests > 0 && !own.hasGrown() && !stations.hasGrown();
}

int main(int argc, char* argv[])
{
    qInstallMessageHandler(printQtWarning);
    const QCoreApplication application(argc, argv);
    CommandLine line("Loads a simulated station with clients and checks every reply.");
    const Option clients =
        line.integer("clients", "run NUMBER clients at the same time (default: 200)", "NUMBER", 1, INT_MAX, 200);
    const Option seconds = line.integer("seconds", "stop after NUMBER seconds (default: 60)", "NUMBER", 1, INT_MAX, 60);
    const Option requests = line.integer("requests", "stop after NUMBER requests per client (default: no limit)",
                                         "NUMBER", 1, INT_MAX, INT_MAX);
    const Option tool = line.requiredArgument("GQTOOL", "the program gqtool, to run the station");
    int exitCode = 0;
    if (!line.parse(QCoreApplication::arguments(), exitCode))
        return exitCode;

    takeStandardOutput(); // the library prints a line for each client
    StationProcess station(tool.text(), {"--quiet"});
    if (!station.start(0)) {
        printError("the station did not start");
        return 1;
    }
    return load({clients.number(), seconds.number(), requests.number()}, station) ? 0 : 1;
}
