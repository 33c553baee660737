#pragma once

#include <QJsonObject>
#include <QString>
#include <QtGlobal>

// The program prints its data to a separate descriptor: the library prints a line to standard output whenever a receive
// time-out is set, and scripts must not receive that line.

// Reserves standard output for the data. Everything else that is printed there is discarded. Call it first.
void takeStandardOutput();

// Prints a line of data unbuffered, so that the reader of a pipe receives it immediately. Any thread may call it. If
// writing fails, also because the reader of the pipe is gone, the program ends with a message and exit code 1. On a
// terminal U+FFFD replaces what the terminal would obey: control characters other than tab and line feed, and those that
// change the direction of text.
void printLine(const QString& line);

// Prints bytes of data unchanged, in the same way.
void printBytes(const QByteArray& bytes);

// Prints an object as a line of data.
void printJson(const QJsonObject& object);

// Prints a line to standard error, after the program's name.
void printError(const QString& line);

// Prints a warning of Qt in the same way, if qInstallMessageHandler() has it. Leaves out two that are no faults: a file
// opened for appending may be a pipe, and Qt 6.8 replaces a locale without UTF-8, such as C.
void printQtWarning(QtMsgType type, const QMessageLogContext& context, const QString& message);
