#include "replyMatch.h"

#include "gqtool/map/commandMap.h"

#include <socketApi.h>

using gqdb::CSocketAPI;

bool isSequenceOfReply(const Frame& reply, const Frame& request, int lastSequence)
{
    const bool isCounted = lastSequence >= 0 && reply.sequence == ((lastSequence + 1) & 0xFFFF);
    return reply.sequence == request.sequence || reply.sequence == 0 || isCounted;
}

Text mismatchText(const Frame& reply, const Frame& request, int lastSequence)
{
    if (reply.command != request.command)
        return Text::tr("reply of command %1, expected %2")
            .arg(commandText(reply.command), commandText(request.command));
    if (isSequenceOfReply(reply, request, lastSequence))
        return {};
    return Text::tr("reply of sequence %1, expected %2").arg(reply.sequence).arg(request.sequence);
}

bool isRepeated(const Frame& reply, const Frame& request)
{
    return reply.command == request.command && reply.sequence == request.sequence && reply.payload == request.payload;
}

// The requests of these two contain the client's time, and the replies do not.
bool isEcho(const Frame& reply, const Frame& request)
{
    const bool wasTime =
        request.command == CSocketAPI::systemStateCommand || request.command == CSocketAPI::clearCommand;
    return wasTime && isRepeated(reply, request);
}

Text echoText()
{
    return Text::tr("the request itself came back, as from an echo server");
}
