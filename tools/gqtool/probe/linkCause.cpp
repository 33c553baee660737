#include "linkCause.h"

#include <cerrno>

struct CauseText {
    LinkCause cause;
    const char* word;
    const char* meaning;
    const char* advice; // empty if there is nothing to do
};

static const CauseText texts[] = {
    {LinkCause::healthy, "healthy", QT_TRANSLATE_NOOP("Text", "the server works"), ""},
    {LinkCause::unresolved, "unresolved", QT_TRANSLATE_NOOP("Text", "the host name has no IPv4 address"),
     QT_TRANSLATE_NOOP("Text", "Check the spelling and the name server, or give the address as numbers.")},
    {LinkCause::refused, "refused", QT_TRANSLATE_NOOP("Text", "the host is up, but nothing listens on this port"),
     QT_TRANSLATE_NOOP("Text", "Check the port number, and that the server runs and listens on this address. A "
                               "firewall that rejects looks the "
                               "same.")},
    {LinkCause::unreachable, "unreachable", QT_TRANSLATE_NOOP("Text", "there is no way to the host"),
     QT_TRANSLATE_NOOP("Text",
                       "Check the address, that the host is on, and the cable, netmask and gateway of this machine.")},
    {LinkCause::connectTimeout, "connect-timeout", QT_TRANSLATE_NOOP("Text", "the connection request was not answered"),
     QT_TRANSLATE_NOOP("Text", "The host is down, a firewall drops the packets, or the server has stopped accepting "
                               "connections. Try ping, then "
                               "look at the firewall, then at the server.")},
    {LinkCause::silent, "silent", QT_TRANSLATE_NOOP("Text", "the server accepts the connection but sends no greeting"),
     QT_TRANSLATE_NOOP(
         "Text",
         "The server may be hung, or serve one client at a time and have one already, or this is the port of another "
         "service. If it is only slow, use a longer --timeout.")},
    {LinkCause::closed, "closed", QT_TRANSLATE_NOOP("Text", "the server closes the connection"),
     QT_TRANSLATE_NOOP("Text", "The server may refuse this address, be at its limit of connections, or have crashed. "
                               "Read its log. Or this is the port of another service, such as one with TLS.")},
    {LinkCause::foreign, "foreign", QT_TRANSLATE_NOOP("Text", "another kind of server listens on this port"),
     QT_TRANSLATE_NOOP("Text", "Check the port number.")},
    {LinkCause::badFrame, "bad-frame",
     QT_TRANSLATE_NOOP("Text", "what comes is not a whole, correct frame, or not the reply to the request"),
     QT_TRANSLATE_NOOP("Text", "Watch the link with 'gqtool trace' to see all bytes. A gateway or serial converter on "
                               "the way may damage them.")},
    {LinkCause::notGreeted, "not-greeted",
     QT_TRANSLATE_NOOP("Text", "the server refuses this client by a greeting of 0 or below"),
     QT_TRANSLATE_NOOP("Text", "The server may be starting up, on standby, or not accept this client. Read its log.")},
    {LinkCause::errorFrame, "error-frame", QT_TRANSLATE_NOOP("Text", "the server answers with an error code"),
     QT_TRANSLATE_NOOP("Text", "Look the code up in the server's documentation.")},
    {LinkCause::noReply, "no-reply", QT_TRANSLATE_NOOP("Text", "the server does not answer the request"),
     QT_TRANSLATE_NOOP("Text", "The server may be busy: try a longer --timeout.")},
};

static const CauseText& textOf(LinkCause cause)
{
    return texts[static_cast<int>(cause)];
}

QString causeWord(LinkCause cause)
{
    return textOf(cause).word;
}

Text causeMeaning(LinkCause cause)
{
    return Text::tr(textOf(cause).meaning);
}

QString causeAdvice(LinkCause cause, const CauseContext& context)
{
    const char* advice = textOf(cause).advice;
    if (cause == LinkCause::errorFrame && !context.hasCode)
        advice = QT_TRANSLATE_NOOP("Text", "The error frame has no code that says why. Read the server's log.");
    if (*advice == '\0')
        return {};
    if (cause == LinkCause::closed && context.isReply)
        return Text::tr("The server may have crashed on this request, or not accept it. Read its log.");
    const bool mayLackCommand = context.isReply && (cause == LinkCause::errorFrame || cause == LinkCause::noReply);
    if (!mayLackCommand)
        return Text::tr(advice);
    if (!context.isUdp)
        return Text::tr("%1 If the server lacks this command, use --greeting-only.").arg(Text::tr(advice));
    if (cause == LinkCause::errorFrame)
        return Text::tr("%1 If it means an unknown command, the link itself works.").arg(Text::tr(advice));
    return Text::tr("%1 Or a firewall drops the datagrams, or the server does not run, or it lacks this command.")
        .arg(Text::tr(advice));
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
