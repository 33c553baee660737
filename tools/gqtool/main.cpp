// gqtool, the command-line tool of the library. Each sub-command is in a file named after it.

#include "closestName.h"
#include "command.h"
#include "shared/console.h"

#include <QCoreApplication>

#include <csignal>
#include <cstdio>
#include <exception>
#include <new>

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

static int runCommand(const QStringList& arguments)
{
    QStringList names;
    for (const Command& command : commands) {
        if (arguments[0] == command.name)
            return command.run(arguments);
        names.append(command.name);
    }
    printError(QString("unknown command '%1'").arg(arguments[0]) + didYouMean(closestName(arguments[0], names)));
    printError("see 'gqtool --help'");
    return exitUsage;
}

static int run(const QStringList& arguments)
{
    const QString first = arguments.value(0);
    if (first == "-h" || first == "--help") {
        printLine(overview());
        return exitGood;
    }
    if (first == "-v" || first == "--version") {
        printLine("gqtool " GQLIB_VERSION);
        return exitGood;
    }
    if (!arguments.isEmpty() && !first.startsWith('-'))
        return runCommand(arguments);
    printError(arguments.isEmpty() ? QString("no command given")
                                   : QString("unknown option '%1'").arg(first) +
                                         didYouMean(closestName(first, {"--help", "--version"})));
    printError("see 'gqtool --help'");
    return exitUsage;
}

int main(int argc, char* argv[])
{
    qInstallMessageHandler(printWarning);
    signal(SIGPIPE, SIG_IGN); // 'gqtool ... | head' ends at the write that fails, with a message
    takeStandardOutput();

    try {
        QStringList arguments;
        for (int i = 1; i < argc; ++i)
            arguments.append(QString::fromLocal8Bit(argv[i]));

        if (arguments.value(0) == "help") // 'help COMMAND' is 'COMMAND --help'
            arguments = arguments.mid(1, 1) + QStringList{"--help"};

        // Help texts and usage messages name the program by tool and command.
        QByteArray name = "gqtool";
        if (!arguments.isEmpty())
            name += ' ' + arguments.constFirst().toLocal8Bit();
        char* programName[] = {name.data(), nullptr};
        int programNames = 1;
        const QCoreApplication application(programNames, programName);
        return run(arguments);
    } catch (const std::bad_alloc&) {
        std::fputs("gqtool: not enough memory\n", stderr);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "gqtool: %s\n", error.what());
    }
    return exitFailed;
}
