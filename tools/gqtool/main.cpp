// gqtool, the command-line tool of the library. Each sub-command is in a file named after it.

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
    {"station", "run a simulated station to test clients with", runStation},
    {"call", "send a request and print the reply", runCall},
    {"probe", "find out why a server does not answer", runProbe},
    {"decode", "print the fields of a record, list, wave or frames", runDecode},
    {"encode", "convert what decode --json prints to bytes", runEncode},
    {"sum", "print the checksums and the hex text of bytes", runSum},
    {"time", "print the moment and the text of a relative time code", runTime},
    {"trace", "print the frames between clients and a station", runTrace},
    {"wave", "print a stored wave as text, table or picture", runWave},
};

static QString overview()
{
    QString text = "Usage: gqtool COMMAND [OPTIONS] [ARGUMENTS]\n\nCommands:\n";
    for (const Command& command : commands)
        text += QString("  %1  %2\n").arg(command.name, -8).arg(command.summary);
    return text + "\n'gqtool COMMAND --help' describes a command, 'gqtool --version' prints the version.\n"
                  "Exit codes: 0 success, 1 the request failed or the data is invalid, 2 wrong usage.";
}

// Prints Qt's warnings like the program's own messages.
static void printWarning(QtMsgType /*type*/, const QMessageLogContext& /*context*/, const QString& message)
{
    printError(message);
}

int main(int argc, char* argv[])
{
    qInstallMessageHandler(printWarning);
    signal(SIGPIPE, SIG_IGN); // 'gqtool ... | head' ends at the write that fails, without a message
    takeStandardOutput();

    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));

    QCommandLineParser parser;
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    const QCommandLineOption help({"h", "help"}, "show this help");
    const QCommandLineOption version({"v", "version"}, "show the version");
    parser.addOptions({help, version});
    const bool parsed = parser.parse(arguments);
    const QStringList rest = parser.positionalArguments();

    // Help texts and usage messages name the program by tool and command.
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
        printError(parsed ? QString("no command given") : parser.errorText());
        printError("see 'gqtool --help'");
        return exitUsage;
    }
    for (const Command& command : commands) {
        if (rest.constFirst() == command.name)
            return command.run(rest);
    }
    printError(QString("unknown command '%1'").arg(rest.constFirst()));
    printError("see 'gqtool --help'");
    return exitUsage;
}
