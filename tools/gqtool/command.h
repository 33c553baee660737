#pragma once

#include <QStringList>

// Exit codes of every sub-command.
enum ExitCode {
    exitGood = 0,
    exitFailed = 1, // the request failed, or the data is bad
    exitUsage = 2,
};

// A sub-command: takes the command line from its own name on, returns an exit code.
int runStation(const QStringList& arguments);
int runCall(const QStringList& arguments);
int runProbe(const QStringList& arguments);
int runDecode(const QStringList& arguments);
int runEncode(const QStringList& arguments);
int runSum(const QStringList& arguments);
int runTime(const QStringList& arguments);
int runTrace(const QStringList& arguments);
int runWave(const QStringList& arguments);
