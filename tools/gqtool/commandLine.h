#pragma once

#include <QString>
#include <QStringList>

class QCommandLineParser;

// Reads `arguments` with `parser`, to which it adds --help. True to go on; false when all is said, with the exit code.
bool parseArguments(QCommandLineParser& parser, const QStringList& arguments, int& exitCode);

// Says what is wrong with the command line, and where help is. exitUsage.
int usageError(const QString& message);

// Reads an option or an argument as an integer within bounds, hexadecimal after 0x.
bool readInt(const QString& text, int least, int most, int& value);
