#include "linkCause.h"

#include <cerrno>

struct CauseText {
    LinkCause cause;
    const char* word;
    const char* meaning;
    const char* advice; // empty if there is nothing to do
};

static const CauseText texts[] = {
    {LinkCause::healthy, "healthy", "the server works", ""},
    {LinkCause::unresolved, "unresolved", "the host name has no IPv4 address",
     "Check the spelling and the name server, or give the address as numbers."},
    {LinkCause::refused, "refused", "the host is up, but nothing listens on this port",
     "Check the port number, and that the server runs and listens on this address. A firewall that rejects looks the "
     "same."},
    {LinkCause::unreachable, "unreachable", "there is no way to the host",
     "Check the address, cable, netmask and gateway of this machine."},
    {LinkCause::connectTimeout, "connect-timeout", "the connection request was not answered",
     "The host is down, a firewall drops the packets, or the server has stopped accepting connections. Try ping, then "
     "look at the firewall, then at the server."},
    {LinkCause::silent, "silent", "the server accepts the connection but sends no greeting",
     "The server may be hung, or serve one client at a time and have one already, or this is the port of another "
     "service."},
    {LinkCause::closed, "closed", "the server closes the connection",
     "The server may refuse this address, be at its limit of connections, or have crashed. Read its log."},
    {LinkCause::foreign, "foreign", "another kind of server listens on this port", "Check the port number."},
    {LinkCause::badFrame, "bad-frame", "what comes is not a whole, correct frame",
     "Watch the link with 'gqtool trace' to see all bytes. A gateway or serial converter on the way may damage them."},
    {LinkCause::notGreeted, "not-greeted", "the server refuses this client by a greeting of 0 or below",
     "The server may be starting up, on standby, or not accept this client. Read its log."},
    {LinkCause::errorFrame, "error-frame", "the server answers with an error code",
     "Look the code up in the server's documentation. If it is an unknown command, use --greeting-only."},
    {LinkCause::noReply, "no-reply", "the server does not answer the request",
     "The server may be busy: try a longer --timeout. Over UDP, a firewall may drop datagrams, or the server may not "
     "run. If it lacks this command, use --greeting-only over TCP."},
};

static const CauseText& textOf(LinkCause cause)
{
    return texts[static_cast<int>(cause)];
}

QString causeWord(LinkCause cause)
{
    return textOf(cause).word;
}

QString causeMeaning(LinkCause cause)
{
    return textOf(cause).meaning;
}

QString causeAdvice(LinkCause cause)
{
    return textOf(cause).advice;
}

LinkCause causeOfError(int error)
{
    switch (error) {
    case ECONNREFUSED:
        return LinkCause::refused;
    case ETIMEDOUT:
    case EINPROGRESS: // a connect that a send time-out has ended
        return LinkCause::connectTimeout;
    case ECONNRESET:
    case EPIPE:
        return LinkCause::closed;
    default:
        return LinkCause::unreachable;
    }
}
