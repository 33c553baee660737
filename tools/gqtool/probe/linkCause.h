#pragma once
#include "shared/text.h"

#include <QString>

// Why a link to a server works or does not.
enum class LinkCause {
    healthy,
    unresolved,     // the name has no IPv4 address
    refused,        // the host refuses the connection: nothing listens on the port
    unreachable,    // no route to the host
    connectTimeout, // no answer to the connection request
    silent,         // the connection was accepted, but no greeting came
    closed,         // the connection was closed or reset instead of a greeting or a reply
    foreign,        // the peer speaks another protocol
    badFrame,       // a frame is incomplete, fails its check, or is not the reply to the request
    notGreeted,     // the greeting was 0 or below
    errorFrame,     // an error frame came instead of a greeting or a reply
    noReply,        // a request was not answered
};

// Returns the name of a cause for scripts, such as "connect-timeout".
QString causeWord(LinkCause cause);

// Where a cause was found.
struct CauseContext {
    bool isReply = false; // of a request; otherwise of an earlier stage
    bool isUdp = false;
    bool hasCode = true; // of an error frame
};

// Return what a cause means, and what to do about it; empty if there is nothing to do.
Text causeMeaning(LinkCause cause);
QString causeAdvice(LinkCause cause, const CauseContext& context);

// Returns the cause of a connect, or of a request over UDP, that failed with this errno.
LinkCause causeOfError(int error);
