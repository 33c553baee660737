#pragma once

#include <QStringList>

// Exit codes of every sub-command.
enum ExitCode {
    exitGood = 0,
    exitFailed = 1, // the request failed, or the data is invalid
    exitUsage = 2,
};

// Run a sub-command. `arguments` begin with its name. Return an exit code.
int runStation(const QStringList& arguments);
int runCall(const QStringList& arguments);
int runProbe(const QStringList& arguments);
int runDecode(const QStringList& arguments);
int runEncode(const QStringList& arguments);
int runSum(const QStringList& arguments);
int runTime(const QStringList& arguments);
int runTrace(const QStringList& arguments);
int runWave(const QStringList& arguments);
