#include "commandLine.h"

#include "command.h"
#include "shared/console.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QRegularExpression>

bool parseArguments(QCommandLineParser& parser, const QStringList& arguments, int& exitCode)
{
    const QCommandLineOption help({"h", "help"}, "show this help");
    parser.addOption(help);
    if (!parser.parse(arguments)) {
        QString message = parser.errorText();
        if (!arguments.filter(QRegularExpression("^-[0-9]")).isEmpty())
            message += " Put -- before a negative number.";
        exitCode = usageError(message);
        return false;
    }
    if (parser.isSet(help)) {
        printLine(parser.helpText().trimmed());
        exitCode = exitGood;
        return false;
    }
    return true;
}

int usageError(const QString& message)
{
    printError(message);
    printError(QString("see '%1 --help'").arg(QCoreApplication::arguments().constFirst()));
    return exitUsage;
}

bool readInt(const QString& text, int least, int most, int& value)
{
    bool ok = false;
    value = text.toInt(&ok, text.contains("0x") ? 16 : 10); // leading zeros do not mean octal
    return ok && value >= least && value <= most;
}
