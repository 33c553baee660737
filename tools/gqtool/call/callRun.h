#pragma once

#include "callClient.h"

#include <QString>

struct Form;

static const int largestRun = 10000000; // requests; limited because the time of each is stored

// The command line of `call`.
struct CallRun {
    CallRequest request;
    QString name;   // of the request, in messages: 'systemState' or 0x50
    QString target; // HOST:PORT
    bool isUdp = false;
    const Form* records = nullptr; // of the bytes of the reply; null if they have no form
    int times = 1;
    int intervalMs = 0; // between the starts of two requests; a request that is late starts immediately
    bool printsJson = false;
};

// Send the request once and print the reply, or send it many times and print the totals. Return an exit code.
int callOnce(CallClient& client, const CallRun& run);
int callRepeatedly(CallClient& client, const CallRun& run);

// Prints why the server's name could not be resolved, instead of a reply. Returns an exit code.
int failUnresolved(const CallRun& run, const Text& error);
