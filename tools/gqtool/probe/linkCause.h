#pragma once

#include <QString>

// Why a link to a server works or does not.
enum class LinkCause {
    healthy,
    unresolved,     // the name has no IPv4 address
    refused,        // the host answers, nothing listens on the port
    unreachable,    // no way to the host
    connectTimeout, // no answer to the connection request
    silent,         // accepted, and no greeting came
    closed,         // closed or reset in place of a greeting or a reply
    foreign,        // the peer speaks another protocol
    badFrame,       // a frame that is cut or fails its check
    notGreeted,     // a greeting of 0 or below
    errorFrame,     // an error frame in place of a greeting or a reply
    noReply,        // a request was not answered
};

// Its word, as scripts read it: "connect-timeout".
QString causeWord(LinkCause cause);

// What it means, and what to do about it: a sentence or two each.
QString causeMeaning(LinkCause cause);
QString causeAdvice(LinkCause cause);

// The cause of a connect or a request over UDP that failed with this errno.
LinkCause causeOfError(int error);
