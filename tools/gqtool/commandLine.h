#pragma once

#include <QString>
#include <QStringList>

class QCommandLineParser;

// Parses `arguments` with `parser`, to which it adds --help. Returns false with an exit code if the program should end:
// it has printed the help or an error.
bool parseArguments(QCommandLineParser& parser, const QStringList& arguments, int& exitCode);

// Prints an error of the command line and a pointer to the help. Returns exitUsage.
int usageError(const QString& message);

// Reads an integer from `least` to `most`; 0x marks a hexadecimal one.
bool readInt(const QString& text, int least, int most, int& value);
