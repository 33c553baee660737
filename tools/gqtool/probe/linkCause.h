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
    badFrame,       // a frame is incomplete or fails its check
    notGreeted,     // the greeting was 0 or below
    errorFrame,     // an error frame came instead of a greeting or a reply
    noReply,        // a request was not answered
};

// Returns the name of a cause for scripts, such as "connect-timeout".
QString causeWord(LinkCause cause);

// Return what a cause means, and what to do about it.
Text causeMeaning(LinkCause cause);
QString causeAdvice(LinkCause cause);

// Returns the cause of a connect, or of a request over UDP, that failed with this errno.
LinkCause causeOfError(int error);
