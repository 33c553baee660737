#pragma once

#include "callClient.h"

#include <QString>

static const int largestRun = 10000000; // requests, since the time of each is stored

// What the command line of `call` asks for.
struct CallRun {
    CallRequest request;
    QString name; // of the request, in messages
    int times = 1;
    int intervalMs = 0; // from the start of a request to the start of the next, which follows a late one at once
    bool printsJson = false;
};

// Send the request once and print the reply, or send it many times and print the totals. Return an exit code.
int callOnce(CallClient& client, const CallRun& run);
int callRepeatedly(CallClient& client, const CallRun& run);

// Says why the server's name has no address, in place of a reply. An exit code.
int failUnresolved(const CallRun& run, const QString& error);
