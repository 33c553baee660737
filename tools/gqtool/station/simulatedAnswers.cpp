#include "simulatedAnswers.h"

#include "frontEnd.h"
#include "pointDatabase.h"
#include "shared/stationProtocol.h"

#include <algorithm>
#include <socketApi.h>

using gqdb::CByte2Val;

// --- Lists --------------------------------------------------------------------------------------------------------

// The data set: readings that rise and fall, bytes that count up, and names of points.
static void addInt(int index, QByteArray& payload)
{
    const int phase = index % 200;
    CByte2Val::int2Byte(200 + 10 * (phase < 100 ? phase : 200 - phase), payload);
}

static void addByte(int index, QByteArray& payload)
{
    payload.append(static_cast<char>(index));
}

static void addString(int index, QByteArray& payload)
{
    QByteArray text;
    CByte2Val::str2Byte(QString("unit %1 temperature %2").arg(index / 12 + 1).arg(index % 12 + 1), text);
    CByte2Val::short2Byte(static_cast<int>(text.size()), payload); // each text has two length fields
    payload.append(text);
}

struct StationList {
    unsigned char command;
    int available;
    int perFrame;
    void (*addItem)(int index, QByteArray& payload);
};

static const StationList lists[] = {{commandInts, intCount, intsPerFrame, addInt},
                                    {commandBytes, byteCount, bytesPerFrame, addByte},
                                    {commandStrings, stringCount, stringsPerFrame, addString}};

// Returns the first `count` items in frames of up to `perFrame` items.
static QByteArrayList listFrames(const StationRequest& request, const StationList& list, int count)
{
    if (count < 1 || count > list.available)
        return {errorFrame(request, errorBadPayload)};
    QByteArrayList frames;
    for (int first = 0; first < count; first += list.perFrame) {
        const int items = std::min(list.perFrame, count - first);
        QByteArray payload = intPayload(items);
        for (int index = first; index < first + items; ++index)
            list.addItem(index, payload);
        frames.append(replyFrame(request, payload));
    }
    return frames;
}

// ------------------------------------------------------------------------------------------------------------------

std::vector<TimedFrame> SimulatedAnswers::answer(const StationRequest& request)
{
    if (const std::optional<QByteArray> reply = readyMade.answer(request))
        return {{*reply}};
    if (request.frame.payload.size() < 4)
        return {{errorFrame(request, errorBadPayload)}};
    const unsigned char command = request.frame.command;
    const int value = CByte2Val::byte2Int(request.frame.payload.constData());
    if (command == commandError)
        return {{errorFrame(request, value)}};
    for (const StationList& list : lists) {
        if (list.command == command)
            return spaced(listFrames(request, list, value), gap);
    }
    QByteArray records = databaseReply(command);
    if (records.isEmpty())
        records = frontEndReply(command);
    if (records.isEmpty())
        return {{errorFrame(request, errorUnknownCommand)}};
    return {{replyFrame(request, intPayload(records.size()) + records)}};
}
