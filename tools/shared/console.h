#pragma once

#include <QJsonObject>
#include <QString>

// The program's data, on a descriptor of its own: the library prints a line to standard output whenever a receive
// time-out is set, and that line must not stand in what a script reads.

// Takes standard output for the data; what else is printed there is lost from here on. Call it first.
void takeStandardOutput();

// One line of data, flushed, so that a reader at the other end of a pipe sees it at once. From any thread. Ends the
// program, with success, when that reader is gone; with a message and exit code 1 when it can't be written.
void printLine(const QString& line);

// Bytes of data as they are, in the same way.
void printBytes(const QByteArray& bytes);

// An object as one line of data.
void printJson(const QJsonObject& object);

// One line to standard error, after the program's name.
void printError(const QString& line);
