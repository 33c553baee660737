#include "linkProbe.h"

#include "gqtool/frames/frameText.h"
#include "gqtool/frames/replyMatch.h"
#include "peerBytes.h"
#include "shared/text.h"

#include <QDateTime>
#include <QElapsedTimer>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <udpApi.h>

using gqdb::CSocketAPI;
using gqdb::CUdpAPI;

// Uses system calls, because the library's client returns the same result for several causes.
class LinkProbe {
public:
    LinkProbe(const Endpoint& probed, const ProbeOptions& wanted) : endpoint(probed), options(wanted) {}
    ~LinkProbe();
    LinkProbe(const LinkProbe&) = delete;
    LinkProbe& operator=(const LinkProbe&) = delete;

    // The stages. Each fills `stage` and returns true; or returns false with the cause in `result`.
    bool resolve();
    bool connect();
    bool awaitGreeting();
    bool askSystemState();
    bool askSystemTime();

    ProbeStage stage;
    ProbeResult result;
    bool hasCode = true; // of an error frame

private:
    bool fail(LinkCause cause, const Text& detail);
    bool failWithError(const Text& what, int error);
    bool finish(const ByteVerdict& verdict);
    bool waitFor(short events, qint64 ms);
    bool send(unsigned char command);
    bool receivePiece(QByteArray& came);
    bool receive(AwaitedBytes awaited, int ms, ByteVerdict& verdict);
    bool hasSurplus(const ByteVerdict& verdict);
    bool ask(unsigned char command, ByteVerdict& verdict);
    bool failWithoutGreeting();
    bool failWithLateGreeting(const ByteVerdict& verdict, const Text& silence);
    bool failAsEcho();

    const Endpoint endpoint;
    const ProbeOptions options;
    sockaddr_in address = {};
    int descriptor = -1;
    QElapsedTimer greetingTimer;
    Frame request;         // the latest
    int sequence = 0;      // of the next request
    int lastSequence = -1; // of the peer's latest frame; -1 if it has sent none
};

LinkProbe::~LinkProbe()
{
    if (descriptor >= 0)
        close(descriptor);
}

bool LinkProbe::fail(LinkCause cause, const Text& detail)
{
    result.cause = cause;
    stage.detail = detail;
    return false;
}

bool LinkProbe::failWithError(const Text& what, int error)
{
    return fail(causeOfError(error), Text::tr("%1: %2").arg(what, errorText(error)));
}

bool LinkProbe::finish(const ByteVerdict& verdict)
{
    stage.detail = verdict.detail;
    result.cause = verdict.cause;
    result.protocol = verdict.protocol;
    result.code = verdict.value;
    hasCode = verdict.frame && verdict.frame->payload.size() >= 4;
    return verdict.cause == LinkCause::healthy;
}

bool LinkProbe::resolve()
{
    QStringList addresses;
    Text error;
    if (!resolveHost(endpoint.host, options.timeoutMs, addresses, error))
        return fail(LinkCause::unresolved, error);
    stage.detail = Text::untranslated(addresses[0]);
    if (addresses.size() > 1)
        stage.detail = Text::tr("%1, the first of %2 addresses").arg(addresses[0]).arg(addresses.size());
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<unsigned short>(endpoint.port));
    inet_aton(addresses[0].toLatin1().constData(), &address.sin_addr);
    return true;
}

// Returns false if none of the events came in time.
bool LinkProbe::waitFor(short events, qint64 ms)
{
    QElapsedTimer timer;
    timer.start();
    for (;;) {
        pollfd watched = {descriptor, events, 0};
        const int left = static_cast<int>(std::max<qint64>(0, ms - timer.elapsed()));
        const int ready = poll(&watched, 1, left);
        if (ready >= 0 || errno != EINTR)
            return ready > 0;
    }
}

static QString portText(int descriptor)
{
    sockaddr_in own = {};
    socklen_t size = sizeof own;
    getsockname(descriptor, reinterpret_cast<sockaddr*>(&own), &size);
    char text[INET_ADDRSTRLEN] = "";
    inet_ntop(AF_INET, &own.sin_addr, text, sizeof text);
    return QString("%1:%2").arg(text).arg(ntohs(own.sin_port));
}

bool LinkProbe::connect()
{
    const int type = options.isUdp ? SOCK_DGRAM : SOCK_STREAM;
    descriptor = socket(AF_INET, type | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    int error = 0;
    if (descriptor < 0 || ::connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        error = errno;
    if (error == EINPROGRESS) {
        if (!waitFor(POLLOUT, options.timeoutMs))
            return fail(LinkCause::connectTimeout, Text::tr("no answer within %1 ms").arg(options.timeoutMs));
        socklen_t size = sizeof error;
        getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &error, &size);
    }
    if (error != 0 && error != ECONNRESET) // ECONNRESET: connected, then reset
        return failWithError(Text::tr("cannot connect"), error);
    stage.detail = Text::tr("from %1").arg(portText(descriptor));
    if (options.isUdp)
        stage.detail = Text::tr("%1, nothing is sent yet").arg(stage.detail);
    return true;
}

// --- Frames -------------------------------------------------------------------------------------------------------

// Difference between consecutive requests. A server that counts its own frames counts by 1, so its sequences differ.
static const int sequenceStep = 2;

// Sends the request of a ready-made command as the library's clients do.
bool LinkProbe::send(unsigned char command)
{
    QByteArray frame;
    CSocketAPI::addHeader(command, 0, 0, sequence, 0, frame);
    sequence += sequenceStep;
    CSocketAPI::int2Byte(static_cast<int>(QDateTime::currentSecsSinceEpoch()), frame);
    options.isUdp ? CUdpAPI::addEnd(frame) : CSocketAPI::addEnd(frame);
    request = firstFrame(frame);
    if (::send(descriptor, frame.constData(), static_cast<size_t>(frame.size()), MSG_NOSIGNAL) == frame.size())
        return true;
    return failWithError(Text::tr("cannot send the request"), errno);
}

// Appends the next bytes to `came`. Returns false if receiving failed, with errno; or at the end of the stream, with
// errno 0.
bool LinkProbe::receivePiece(QByteArray& came)
{
    char piece[65536];
    const ssize_t count = recv(descriptor, piece, sizeof piece, 0);
    if (count > 0)
        came.append(piece, static_cast<int>(count));
    else if (count == 0)
        errno = 0;
    stage.bytes = came.left(shownPeerBytes);
    return count > 0;
}

// Receives until further bytes cannot change the verdict, the peer ends the connection or `ms`, which may be a part of
// --timeout, are over. Returns false with the cause if receiving fails.
bool LinkProbe::receive(AwaitedBytes awaited, int ms, ByteVerdict& verdict)
{
    static const int mostBytes = 1 << 20; // in case the peer never stops sending
    QElapsedTimer timer;
    timer.start();
    QByteArray came;
    Text end;
    verdict = judgeBytes(came, awaited);
    while (end.isEmpty()) {
        if (!waitFor(POLLIN, ms - timer.elapsed()) || (!came.isEmpty() && timer.elapsed() >= ms)) {
            end = (came.isEmpty() ? Text::tr("nothing came within %1 ms") : Text::tr("the time-out of %1 ms ended"))
                      .arg(options.timeoutMs);
        } else if (came.size() >= mostBytes) {
            end = Text::tr("more bytes came");
        } else if (receivePiece(came)) {
            verdict = judgeBytes(came, awaited);
            if (verdict.isFinal)
                return true;
            if (options.isUdp)
                break; // a client examines only one datagram
        } else if (errno == 0 && options.isUdp) {
            return fail(LinkCause::badFrame, Text::tr("an empty datagram"));
        } else if (errno == 0 || errno == ECONNRESET) {
            end =
                errno == 0 ? Text::tr("the server closed the connection") : Text::tr("the server reset the connection");
            if (came.isEmpty())
                verdict.cause = LinkCause::closed;
        } else if (errno != EAGAIN && errno != EINTR) {
            return failWithError(Text::tr("cannot receive"), errno);
        }
    }
    if (!options.isUdp || came.isEmpty())
        verdict.detail = came.isEmpty() ? end : Text::tr("%1; then %2").arg(verdict.detail, end);
    return true;
}

bool LinkProbe::awaitGreeting()
{
    greetingTimer.start();
    ByteVerdict verdict;
    if (!receive(AwaitedBytes::greeting, options.timeoutMs, verdict))
        return false;
    if (verdict.cause == LinkCause::silent)
        return failWithoutGreeting();
    if (verdict.frame)
        lastSequence = verdict.frame->sequence;
    return finish(verdict) && !hasSurplus(verdict);
}

// Most servers of other protocols wait for the client to send first. They reject a frame with an error message or close
// the connection. Those that wait for the end of a line send their message only at the end of the stream. The cause is
// `closed` only if the server closes before this client has ended its stream.
bool LinkProbe::failWithoutGreeting()
{
    const Text silence = Text::tr("no greeting within %1 ms").arg(options.timeoutMs);
    const int half = options.timeoutMs / 2;
    ByteVerdict verdict;
    if (!send(CSocketAPI::systemStateCommand))
        return fail(result.cause, Text::tr("%1; then %2").arg(silence, stage.detail));
    bool isReceived = receive(AwaitedBytes::firstReply, half, verdict);
    const bool isClosed = isReceived && verdict.cause == LinkCause::closed;
    if (isReceived && verdict.cause == LinkCause::noReply) {
        shutdown(descriptor, SHUT_WR);
        isReceived = receive(AwaitedBytes::firstReply, options.timeoutMs - half, verdict);
    }
    if (!isReceived)
        return fail(LinkCause::silent, Text::tr("%1; then %2").arg(silence, stage.detail));
    if (verdict.frame && isEcho(*verdict.frame, request))
        return failAsEcho();
    if (verdict.cause == LinkCause::foreign)
        return finish(verdict);
    const bool isFrame = verdict.cause == LinkCause::healthy;
    if (isFrame && verdict.frame->command != request.command)
        return failWithLateGreeting(verdict, silence);
    if (isFrame)
        result.advice =
            Text::tr("The server answers, but clients of this library wait for a greeting. Check its settings, "
                     "and that it is meant for these clients.");
    return fail(isClosed ? LinkCause::closed : LinkCause::silent,
                (isFrame ? Text::tr("%1; it answers a request with %2") : Text::tr("%1; after a request: %2"))
                    .arg(silence, verdict.detail));
}

bool LinkProbe::failWithLateGreeting(const ByteVerdict& verdict, const Text& silence)
{
    const qint64 ms = greetingTimer.elapsed();
    if (verdict.value > 0)
        result.advice = Text::tr("The greeting comes late: use a --timeout of more than %1 ms.").arg(ms);
    return fail(verdict.value > 0 ? LinkCause::silent : LinkCause::notGreeted,
                Text::tr("%1; a greeting of %2 came late, after %3 ms").arg(silence).arg(verdict.value).arg(ms));
}

bool LinkProbe::failAsEcho()
{
    result.protocol = "unknown";
    return fail(LinkCause::foreign, echoText());
}

// Returns true with the cause if the peer sends two frames at once.
bool LinkProbe::hasSurplus(const ByteVerdict& verdict)
{
    if (!verdict.next)
        return false;
    result.advice = Text::tr("The server sends frames that were not requested. A client drops such a frame if it comes "
                             "together with a reply, and otherwise takes it for the next reply.");
    return !fail(LinkCause::badFrame,
                 Text::tr("%1; then another frame: %2").arg(stage.detail, frameText(*verdict.next)));
}

bool LinkProbe::ask(unsigned char command, ByteVerdict& verdict)
{
    const bool isFirstFrame = lastSequence < 0;
    if (!send(command) ||
        !receive(isFirstFrame ? AwaitedBytes::firstReply : AwaitedBytes::reply, options.timeoutMs, verdict))
        return false;
    if (!finish(verdict))
        return false;
    if (isEcho(*verdict.frame, request))
        return failAsEcho();
    // Without a greeting, the sequence of the first frame may be the server's own count.
    const int last = isFirstFrame ? verdict.frame->sequence - 1 : lastSequence;
    lastSequence = verdict.frame->sequence;
    const Text mismatch = mismatchText(*verdict.frame, request, last);
    if (mismatch.isEmpty())
        return !hasSurplus(verdict);
    result.advice = Text::tr("The server answers another request, or sends more than one frame for one. A client takes "
                             "such a frame for the reply.");
    return fail(LinkCause::badFrame, mismatch);
}

bool LinkProbe::askSystemState()
{
    ByteVerdict verdict;
    return ask(CSocketAPI::systemStateCommand, verdict);
}

bool LinkProbe::askSystemTime()
{
    ByteVerdict verdict;
    if (!ask(CSocketAPI::systemTimeCommand, verdict))
        return false;
    stage.detail = Text::tr("%1, %2").arg(stage.detail,
                                          QDateTime::fromSecsSinceEpoch(verdict.value).toUTC().toString(Qt::ISODate));
    return true;
}

// ------------------------------------------------------------------------------------------------------------------

struct StageStep {
    const char* name;
    bool (LinkProbe::*run)();
    bool isOverUdp;
    bool isAfterGreeting;
};

static const StageStep steps[] = {
    {"resolve", &LinkProbe::resolve, true, false},         {"connect", &LinkProbe::connect, true, false},
    {"greeting", &LinkProbe::awaitGreeting, false, false}, {"systemState", &LinkProbe::askSystemState, true, true},
    {"systemTime", &LinkProbe::askSystemTime, true, true},
};

ProbeResult probeLink(const Endpoint& endpoint, const ProbeOptions& options,
                      const std::function<void(const ProbeStage& stage)>& finished)
{
    LinkProbe probe(endpoint, options);
    for (const StageStep& step : steps) {
        if ((options.isUdp && !step.isOverUdp) || (options.greetingOnly && step.isAfterGreeting))
            continue;
        QElapsedTimer timer;
        timer.start();
        probe.stage = {};
        probe.stage.name = step.name;
        probe.stage.isGood = (probe.*step.run)();
        probe.stage.milliseconds = static_cast<double>(timer.nsecsElapsed()) / 1e6;
        finished(probe.stage);
        if (probe.stage.isGood)
            continue;
        if (probe.result.advice.isEmpty())
            probe.result.advice = causeAdvice(probe.result.cause, {step.isAfterGreeting, options.isUdp, probe.hasCode});
        break;
    }
    return probe.result;
}
