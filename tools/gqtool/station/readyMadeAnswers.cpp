#include "readyMadeAnswers.h"

#include "shared/stationProtocol.h"

#include <QDateTime>

#include <socketApi.h>

using gqdb::CByte2Val;
using gqdb::CSocketAPI;

std::optional<QByteArray> ReadyMadeAnswers::answer(const StationRequest& request)
{
    const QByteArray& payload = request.frame.payload;
    const unsigned char command = request.frame.command;
    const bool isSetTime = command == CSocketAPI::setTimeCommand;
    const bool isShort = payload.size() < (isSetTime ? 8 : 4);
    const int value = isShort ? 0 : CByte2Val::byte2Int(payload.constData());
    const long long now = QDateTime::currentSecsSinceEpoch();
    int result = 1;
    switch (command) {
    case CSocketAPI::systemStateCommand:
        result = state;
        break;
    case CSocketAPI::systemTimeCommand:
        result = static_cast<int>(now + clockOffset);
        break;
    case CSocketAPI::clearCommand:
        if (!isShort)
            *this = ReadyMadeAnswers();
        break;
    case CSocketAPI::setTimeCommand: // two integers; a datagram has their count first
        if (!isShort)
            clockOffset = (request.isDatagram ? CByte2Val::byte2Int(payload.constData() + 4) : value) - now;
        break;
    case CSocketAPI::setStateCommand:
        if (!isShort)
            state = value;
        result = value;
        break;
    default:
        return {};
    }
    return isShort ? errorFrame(request, errorBadPayload) : replyFrame(request, intPayload(result));
}
