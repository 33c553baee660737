#pragma once

#include "callClient.h"

#include <QString>

static const int largestRun = 10000000; // requests; the time of each is kept

// What `call` does once its command line is read.
struct CallRun {
    CallRequest request;
    QString name; // of the request, for messages
    int times = 1;
    int intervalMs = 0; // from the start of a request to the start of the next; one that is late is followed at once
    bool printsJson = false;
};

// Make the request and print its reply, or make it many times and print what came of them. An exit code.
int callOnce(CallClient& client, const CallRun& run);
int callRepeatedly(CallClient& client, const CallRun& run);

// Says why the server's name has no address, in place of a reply. An exit code.
int failUnresolved(const CallRun& run, const QString& error);
