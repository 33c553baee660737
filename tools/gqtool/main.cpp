// gqtool, the command-line tool around the library: one file per sub-command.

#include "command.h"
#include "shared/console.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <csignal>

struct Command {
    const char* name;
    const char* summary;
    int (*run)(const QStringList& arguments);
};

static const Command commands[] = {
    {"station", "a simulated station to develop clients against", runStation},
    {"call", "one request to a station or server, and its reply", runCall},
    {"probe", "why a server does not answer, stage by stage", runProbe},
    {"decode", "the fields of a record, a list, a wave or frames", runDecode},
    {"encode", "the bytes of what decode --json prints", runEncode},
    {"sum", "checksums and hex text of some bytes", runSum},
    {"time", "the moment and the text of a relative time code", runTime},
    {"trace", "the frames between clients and a station, as they pass", runTrace},
    {"wave", "what is in a stored wave, as text, table or picture", runWave},
};

static QString overview()
{
    QString text = "Usage: gqtool COMMAND [OPTIONS] [ARGUMENTS]\n\nCommands:\n";
    for (const Command& command : commands)
        text += QString("  %1  %2\n").arg(command.name, -8).arg(command.summary);
    return text + "\ngqtool COMMAND --help tells more; gqtool --version prints the version.\n"
                  "Exit codes: 0 good, 1 the request failed or the data is bad, 2 wrong usage.";
}

// Qt's own warnings, in the form of the program's.
static void printWarning(QtMsgType /*type*/, const QMessageLogContext& /*context*/, const QString& message)
{
    printError(message);
}

int main(int argc, char* argv[])
{
    qInstallMessageHandler(printWarning);
    signal(SIGPIPE, SIG_IGN); // 'gqtool ... | head' ends quietly, by the write that fails
    takeStandardOutput();

    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));

    QCommandLineParser parser;
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    const QCommandLineOption help({"h", "help"}, "Show this help.");
    const QCommandLineOption version({"v", "version"}, "Show the version.");
    parser.addOptions({help, version});
    const bool parsed = parser.parse(arguments);
    const QStringList rest = parser.positionalArguments();

    // Help texts and messages call the program by tool and command.
    QByteArray name = "gqtool";
    if (!rest.isEmpty())
        name += ' ' + rest.constFirst().toLocal8Bit();
    char* programName[] = {name.data(), nullptr};
    int programNames = 1;
    const QCoreApplication application(programNames, programName);

    if (parsed && parser.isSet(version)) {
        printLine("gqtool " GQLIB_VERSION);
        return exitGood;
    }
    if (parsed && parser.isSet(help)) {
        printLine(overview());
        return exitGood;
    }
    if (!parsed || rest.isEmpty()) {
        printError(parsed ? QString("which command?") : parser.errorText());
        printError("see 'gqtool --help'");
        return exitUsage;
    }
    for (const Command& command : commands) {
        if (rest.constFirst() == command.name)
            return command.run(rest);
    }
    printError(QString("no command '%1'").arg(rest.constFirst()));
    printError("see 'gqtool --help'");
    return exitUsage;
}
