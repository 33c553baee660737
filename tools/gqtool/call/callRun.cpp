#include "callRun.h"

#include "gqtool/command.h"
#include "gqtool/records/recordTexts.h"
#include "shared/console.h"
#include "shared/progress.h"
#include "shared/text.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QMap>

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <ctime>

using Clock = std::chrono::steady_clock;

// --- One reply ----------------------------------------------------------------------------------------------------

// A reply and its records, if it has the form of some.
struct Answer {
    CallReply reply;
    RecordTexts records;
    bool hasRecords = false;
};

static Answer ask(CallClient& client, const CallRun& run)
{
    Answer answer;
    CallReply& reply = answer.reply;
    reply = client.call(run.request);
    answer.hasRecords = run.records != nullptr && reply.isGood();
    if (!answer.hasRecords)
        return answer;
    const RecordTexts& records = answer.records = recordTexts(*run.records, reply.bytes);
    if (!records.fault.isEmpty())
        reply.failForm(-5, Text::tr("invalid %1 in %2").arg(run.records->name, bytesText(reply.bytes.size())));
    else if (records.rest > 0 && reply.warning.isEmpty())
        reply.warning = Text::tr("%1 of the %2 bytes are left over after the %3")
                            .arg(records.rest)
                            .arg(reply.bytes.size())
                            .arg(run.records->name);
    return answer;
}

static Text meaningOf(const Answer& answer)
{
    const Text& fault = answer.records.fault;
    return fault.isEmpty() ? answer.reply.meaning : Text::tr("%1: %2").arg(answer.reply.meaning, fault);
}

static QJsonValue valueOf(const CallRun& run, const Answer& answer)
{
    const CallReply& reply = answer.reply;
    const ReplyForm form = run.request.form;
    if (answer.hasRecords) {
        const QJsonDocument json = QJsonDocument::fromJson(QByteArray::fromStdString(answer.records.json));
        return json.isArray() ? QJsonValue(json.array()) : QJsonValue(json.object());
    }
    if (form == replyInt)
        return reply.ints.empty() ? QJsonValue() : QJsonValue(reply.ints[0]);
    if (form == replyBytes)
        return QJsonObject{{"hex", QString(reply.bytes.toHex())}};
    if (form == replyStrings)
        return QJsonArray::fromStringList(reply.texts);
    QJsonArray values;
    for (const int value : reply.ints)
        values.append(value);
    return values;
}

static QJsonObject jsonOf(const CallRun& run, const Answer& answer)
{
    const CallReply& reply = answer.reply;
    QJsonObject json = {{"target", run.target},          {"result", reply.isGood() ? "good" : "failed"},
                        {"code", reply.result},          {"meaning", meaningOf(answer).english()},
                        {"value", valueOf(run, answer)}, {"ms", reply.milliseconds}};
    if (!reply.isGood())
        json["cause"] = causeWord(reply.cause);
    else if (!reply.warning.isEmpty())
        json["warning"] = reply.warning.english();
    return json;
}

static void printValues(const Answer& answer)
{
    const CallReply& reply = answer.reply;
    for (const QString& text : answer.records.texts)
        printLine(text);
    if (answer.hasRecords)
        return;
    for (const int value : reply.ints)
        printLine(QString::number(value));
    for (int first = 0; first < reply.bytes.size(); first += 16)
        printLine(reply.bytes.mid(first, 16).toHex(' '));
    for (const QString& text : reply.texts)
        printLine(text);
}

static QString failureText(const CallReply& reply, const Text& meaning)
{
    return Text::tr("failed with %1: %2: %3").arg(reply.result).arg(causeWord(reply.cause), meaning);
}

static void printMessage(const CallRun& run, const Answer& answer)
{
    const CallReply& reply = answer.reply;
    if (reply.isGood() && !reply.warning.isEmpty())
        printError(Text::tr("request %1 to %2: warning: %3").arg(run.name, run.target, reply.warning));
    if (reply.isGood())
        return;
    QString message = Text::tr("request %1 to %2 %3").arg(run.name, run.target, failureText(reply, meaningOf(answer)));
    if (!reply.hasFrame)
        message += Text::tr(" (try gqtool probe %1)").arg((run.isUdp ? "--udp " : "") + run.target);
    printError(message);
}

static int finish(const CallRun& run, const Answer& answer)
{
    if (run.printsJson) {
        printJson(jsonOf(run, answer));
    } else {
        printValues(answer);
        printMessage(run, answer);
    }
    return answer.reply.isGood() ? exitGood : exitFailed;
}

int callOnce(CallClient& client, const CallRun& run)
{
    return finish(run, ask(client, run));
}

int failUnresolved(const CallRun& run, const Text& error)
{
    Answer answer;
    answer.reply.fail(-1, LinkCause::unresolved, error);
    return finish(run, answer);
}

// --- Many ---------------------------------------------------------------------------------------------------------

// The results of a run.
struct Tally {
    int requests = 0;
    QMap<QString, int> failures; // number of each text
    int warnings = 0;            // of successful requests
    QString firstWarning;
    std::vector<double> times; // of the successful requests, in ms
    double seconds = 0;        // of the whole run

    int failed() const { return requests - static_cast<int>(times.size()); }
    double perSecond() const { return seconds > 0 ? requests / seconds : 0; }
    double median() const // `times` must be sorted
    {
        const size_t middle = times.size() / 2;
        return times.size() % 2 == 1 ? times[middle] : (times[middle - 1] + times[middle]) / 2;
    }
};

static void printFigure(const QString& name, const QString& value)
{
    printLine(padded(name, 12) + value);
}

static void printTally(const Tally& tally)
{
    printFigure(Text::tr("requests"), QString::number(tally.requests));
    printFigure(Text::tr("failures"), QString::number(tally.failed()));
    for (auto failure = tally.failures.cbegin(); failure != tally.failures.cend(); ++failure)
        printLine("            " + Text::tr("%1 %2").arg(QString::number(failure.value()), failure.key()));
    if (tally.warnings > 0) {
        printFigure(Text::tr("warnings"), QString::number(tally.warnings));
        printFigure({}, Text::tr("the first: %1").arg(tally.firstWarning));
    }
    printFigure(Text::tr("per second"), QString::number(tally.perSecond(), 'f', 1));
    if (tally.times.empty())
        return;
    printFigure(Text::tr("least"), QString("%1 ms").arg(tally.times.front(), 0, 'f', 3));
    printFigure(Text::tr("median"), QString("%1 ms").arg(tally.median(), 0, 'f', 3));
    printFigure(Text::tr("largest"), QString("%1 ms").arg(tally.times.back(), 0, 'f', 3));
}

static QJsonObject jsonOf(const Tally& tally)
{
    QJsonObject sum = {{"requests", tally.requests}, {"failures", tally.failed()}, {"perSecond", tally.perSecond()}};
    if (tally.warnings > 0)
        sum["warnings"] = tally.warnings;
    if (!tally.times.empty()) {
        sum["leastMs"] = tally.times.front();
        sum["medianMs"] = tally.median();
        sum["largestMs"] = tally.times.back();
    }
    return sum;
}

static volatile std::sig_atomic_t isEnded = 0;

static void end(int)
{
    isEnded = 1;
    alarm(1); // interrupts again, in case this signal came just before a wait
}

// The first signal ends the run, which then prints its results so far. A second one ends the program at once.
static void endOnSignals()
{
    struct sigaction action = {}; // no SA_RESTART: a pending request is abandoned
    action.sa_handler = end;
    sigaction(SIGALRM, &action, nullptr);
    action.sa_flags = SA_RESETHAND;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

// Returns early on a signal, unlike the waits of std::this_thread.
static void waitUntil(Clock::time_point moment)
{
    const auto left = std::chrono::nanoseconds(moment - Clock::now()).count();
    if (left <= 0)
        return;
    const timespec time = {static_cast<time_t>(left / 1000000000), static_cast<long>(left % 1000000000)};
    nanosleep(&time, nullptr);
}

int callRepeatedly(CallClient& client, const CallRun& run)
{
    endOnSignals();
    Tally tally;
    Progress progress;
    const Clock::time_point begin = Clock::now();
    Clock::time_point next = begin;
    while (tally.requests < run.times) {
        waitUntil(next);
        if (isEnded)
            break;
        next = Clock::now() + std::chrono::milliseconds(run.intervalMs);
        const Answer answer = ask(client, run);
        const CallReply& reply = answer.reply;
        if (isEnded && !reply.isGood())
            break; // failed because of the signal
        ++tally.requests;
        if (reply.isGood())
            tally.times.push_back(reply.milliseconds);
        else
            ++tally.failures[failureText(reply, reply.meaning)];
        if (reply.isGood() && !reply.warning.isEmpty() && ++tally.warnings == 1)
            tally.firstWarning = reply.warning;
        if (run.printsJson) {
            QJsonObject line = jsonOf(run, answer);
            line["request"] = tally.requests;
            printJson(line);
        }
        progress.show(Text::tr("%1 of %2, %3 failed").arg(tally.requests).arg(run.times).arg(tally.failed()));
    }
    clearProgress();
    tally.seconds = std::chrono::duration<double>(Clock::now() - begin).count();
    std::sort(tally.times.begin(), tally.times.end());
    if (run.printsJson)
        printJson(jsonOf(tally));
    else
        printTally(tally);
    return tally.failed() == 0 ? exitGood : exitFailed;
}
