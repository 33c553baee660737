// gqtool, the command-line tool of the library. Each sub-command is in a file named after it.

#include "closestName.h"
#include "command.h"
#include "language.h"
#include "shared/console.h"
#include "shared/text.h"

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
    {"station", QT_TRANSLATE_NOOP("Text", "run a simulated station to test clients with"), runStation},
    {"call", QT_TRANSLATE_NOOP("Text", "send a request and print the reply"), runCall},
    {"probe", QT_TRANSLATE_NOOP("Text", "find out why a server does not answer"), runProbe},
    {"decode", QT_TRANSLATE_NOOP("Text", "print the fields of a record, list, wave or frames"), runDecode},
    {"encode", QT_TRANSLATE_NOOP("Text", "convert what decode --json prints to bytes"), runEncode},
    {"sum", QT_TRANSLATE_NOOP("Text", "print the checksums and the hex text of bytes"), runSum},
    {"time", QT_TRANSLATE_NOOP("Text", "print the moment and the text of a relative time code"), runTime},
    {"trace", QT_TRANSLATE_NOOP("Text", "print the frames between clients and a station"), runTrace},
    {"wave", QT_TRANSLATE_NOOP("Text", "print a stored wave as text, table or picture"), runWave},
};

static QString overview()
{
    QString list;
    for (const Command& command : commands)
        list += QString("  %1  %2\n").arg(command.name, -8).arg(Text::tr(command.summary));
    return Text::tr("Usage: gqtool COMMAND [OPTIONS] [ARGUMENTS]\n"
                    "\n"
                    "Commands:\n"
                    "%1\n"
                    "'gqtool COMMAND --help' describes a command, 'gqtool --version' prints the version.\n"
                    "--lang LANG prints texts in LANG: en or zh (default: by the locale).\n"
                    "Exit codes: 0 success, 1 the request failed or the data is invalid, 2 wrong usage.")
        .arg(list);
}

static int fail(const QString& message)
{
    printError(message);
    printError(Text::tr("see 'gqtool --help'"));
    return exitUsage;
}

static int runCommand(const QStringList& arguments)
{
    QStringList names;
    for (const Command& command : commands) {
        if (arguments[0] == command.name)
            return command.run(arguments);
        names.append(command.name);
    }
    return fail(Text::tr("unknown command '%1'").arg(arguments[0]) + didYouMean(closestName(arguments[0], names)));
}

// Runs what the words after the global options ask for.
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
    if (arguments.isEmpty())
        return fail(Text::tr("no command given"));
    return fail(Text::tr("unknown option '%1'").arg(first) +
                didYouMean(closestName(first, {"--help", "--lang", "--version"})));
}

// Removes each --lang before the command and returns their values, a null text for one that is missing.
static QStringList takeLanguages(QStringList& arguments)
{
    QStringList languages;
    while (arguments.value(0).section('=', 0, 0) == "--lang") {
        const QString word = arguments.takeFirst();
        if (word != "--lang")
            languages.append(word.section('=', 1));
        else
            languages.append(arguments.isEmpty() ? QString() : arguments.takeFirst());
    }
    return languages;
}

static int runIn(const QStringList& languages, const QStringList& arguments)
{
    for (const QString& language : languages) {
        const QString error = languageError(language);
        if (!error.isEmpty())
            return fail(error);
    }
    return run(arguments);
}

int main(int argc, char* argv[])
{
    qInstallMessageHandler(printQtWarning);
    signal(SIGPIPE, SIG_IGN); // 'gqtool ... | head' ends at the write that fails, with a message
    signal(SIGXFSZ, SIG_IGN); // a write beyond `ulimit -f` fails with a message, too
    takeStandardOutput();

    QByteArray memoryError = "not enough memory";
    try {
        QStringList arguments;
        for (int i = 1; i < argc; ++i)
            arguments.append(QString::fromLocal8Bit(argv[i]));

        const QStringList words = arguments;
        const QStringList languages = takeLanguages(arguments);
        if (arguments.value(0) == "help") // 'help COMMAND' is 'COMMAND --help'
            arguments = arguments.mid(1, 1) + QStringList{"--help"};

        // Help texts and usage messages name the program by tool and command.
        QByteArray name = "gqtool";
        if (!arguments.isEmpty())
            name += ' ' + arguments.constFirst().toLocal8Bit();
        char* programName[] = {name.data(), nullptr};
        int programNames = 1;
        const QCoreApplication application(programNames, programName);
        chooseLanguage(words);
        memoryError = Text::tr("not enough memory").toStdString().c_str();
        return runIn(languages, arguments);
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "gqtool: %s\n", memoryError.constData());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "gqtool: %s\n", error.what());
    }
    return exitFailed;
}
