#pragma once

#include "linkCause.h"

#include "gqtool/endpoint.h"

#include <QByteArray>

#include <functional>

struct ProbeOptions {
    int timeoutMs = 0; // limits each stage; a missing greeting takes twice as long
    bool isUdp = false;
    bool greetingOnly = false;
};

// A step on the way to a working link.
struct ProbeStage {
    QString name;
    bool isGood = false;
    double milliseconds = 0;
    Text detail;
    QByteArray bytes; // the first bytes that were received
};

struct ProbeResult {
    LinkCause cause = LinkCause::healthy;
    QString protocol; // of a foreign server
    int code = 0;     // of an error frame
    QString advice;   // what to do; empty if there is nothing
};

// Goes through the stages resolve, connect, greeting (TCP only), systemState and systemTime until one fails, and passes
// each to `finished`. Sends nothing but frames.
ProbeResult probeLink(const Endpoint& endpoint, const ProbeOptions& options,
                      const std::function<void(const ProbeStage& stage)>& finished);
