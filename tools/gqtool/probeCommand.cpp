#include "command.h"
#include "commandLine.h"
#include "endpoint.h"
#include "gqtool/probe/linkProbe.h"
#include "gqtool/probe/peerBytes.h"
#include "shared/console.h"
#include "shared/text.h"

#include <QJsonArray>

#include <climits>

static void printStage(const ProbeStage& stage)
{
    printLine(QString("%1 %2 ms  %3  %4")
                  .arg(stage.name, -11)
                  .arg(stage.milliseconds, 9, 'f', 1)
                  .arg(padded(stage.isGood ? Text::tr("ok") : Text::tr("failed"), 6), stage.detail));
    if (!stage.isGood && !stage.bytes.isEmpty())
        printLine(QString("%1 %2  %3")
                      .arg(padded(Text::tr("bytes"), 11), QString(stage.bytes.toHex(' ')), visibleText(stage.bytes)));
}

static void printResult(const ProbeResult& result)
{
    QString word = causeWord(result.cause);
    if (result.cause == LinkCause::foreign)
        word += QString(" (%1)").arg(result.protocol);
    printLine(Text::tr("%1: %2").arg(word, causeMeaning(result.cause)));
    if (!result.advice.isEmpty())
        printLine(result.advice);
}

static QJsonObject jsonOf(const ProbeStage& stage)
{
    return {{"stage", stage.name},
            {"ok", stage.isGood},
            {"ms", stage.milliseconds},
            {"detail", stage.detail.english()},
            {"bytes", QString(stage.bytes.toHex())}};
}

static QJsonObject jsonOf(const Endpoint& endpoint, const QJsonArray& stages, const ProbeResult& result)
{
    QJsonObject json = {{"target", endpoint.text()}, {"stages", stages}, {"cause", causeWord(result.cause)}};
    if (result.cause == LinkCause::foreign)
        json["protocol"] = result.protocol;
    if (result.cause == LinkCause::errorFrame)
        json["code"] = result.code;
    return json;
}

static const char* const description = QT_TRANSLATE_NOOP(
    "Text",
    "Finds out why a server does not answer. It tries the stages of a link, prints each with its time, and then the\n"
    "cause and what to do about it:\n"
    "\n"
    "  resolve      look the host name up\n"
    "  connect      make the connection\n"
    "  greeting     receive the server's greeting (not with --udp)\n"
    "  systemState  request the server's state\n"
    "  systemTime   request its clock\n"
    "\n"
    "It stops at the first stage that fails. The causes are healthy, unresolved, refused, unreachable,\n"
    "connect-timeout, silent, closed, foreign, bad-frame, not-greeted, error-frame and no-reply. The exit code is 0\n"
    "only for healthy. If no greeting arrives, it sends one systemState request, to which servers of other\n"
    "protocols react.");

int runProbe(const QStringList& arguments)
{
    CommandLine line(Text::tr(description));
    const Option timeout =
        line.integer("timeout", Text::tr("wait up to MS for each stage, twice for a missing greeting (default: 3000)"),
                     "MS", 1, INT_MAX, 3000);
    const Option udp = line.flag("udp", Text::tr("send datagrams"));
    const Option greetingOnly = line.flag("greeting-only", Text::tr("stop after the greeting"));
    const Option json = line.flag("json", Text::tr("print a JSON object"));
    const Option server =
        line.requiredArgument("HOST:PORT", Text::tr("the server: a name or a dotted IPv4 address, and a port"));
    int exitCode = exitGood;
    if (!line.parse(arguments, exitCode))
        return exitCode;

    Endpoint endpoint;
    const QString error = readEndpoint(server.text(), endpoint);
    if (!error.isEmpty())
        return usageError(error);
    ProbeOptions options;
    options.timeoutMs = timeout.number();
    options.isUdp = udp.isSet();
    options.greetingOnly = greetingOnly.isSet();
    if (options.isUdp && options.greetingOnly)
        return usageError(Text::tr("--greeting-only and --udp exclude each other: there is no greeting over UDP"));

    QJsonArray stages;
    const bool printsJson = json.isSet();
    const ProbeResult result = probeLink(endpoint, options, [&](const ProbeStage& stage) {
        if (printsJson)
            stages.append(jsonOf(stage));
        else
            printStage(stage);
    });
    if (printsJson)
        printJson(jsonOf(endpoint, stages, result));
    else
        printResult(result);
    return result.cause == LinkCause::healthy ? exitGood : exitFailed;
}
