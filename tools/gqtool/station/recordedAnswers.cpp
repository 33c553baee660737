#include "recordedAnswers.h"

#include "gqtool/bytes/readAll.h"
#include "gqtool/records/jsonText.h"
#include "shared/stationProtocol.h"
#include "shared/text.h"

#include <QDateTime>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <climits>
#include <cmath>
#include <map>
#include <socketApi.h>

using gqdb::CByte2Val;
using gqdb::CSocketAPI;

static const int sequenceOffset = 5; // in a frame

// The payload of three ready-made requests is the client's clock.
static QByteArray keyOf(int command, const QByteArray& payload)
{
    const bool hasClock = command == CSocketAPI::systemStateCommand || command == CSocketAPI::systemTimeCommand ||
                          command == CSocketAPI::clearCommand;
    if (hasClock)
        return QByteArray(1, static_cast<char>(command));
    return QByteArray(1, static_cast<char>(command)) + payload;
}

// --- Reading ------------------------------------------------------------------------------------------------------

class RecordingReader {
public:
    explicit RecordingReader(RecordedAnswers& recording) : answers(recording) {}

    // Returns false with the reason in `error`.
    bool readLine(const QByteArray& line);

    QString error;

private:
    bool isWhole();
    bool isFrame() const { return item.contains("command") && !item.contains("garbage"); }
    int takeInteger(const char* name, int most);
    QByteArray takeHex(const char* name, int size);
    QByteArray takeBytes();
    size_t addExchange(RecordedAnswers::ExchangeQueue& queue, int command, int sequence);
    size_t exchangeOf(const std::vector<size_t>& candidates) const;

    RecordedAnswers& answers;
    QJsonObject item; // of the line
    long long time = 0;
    std::map<int, std::vector<size_t>> connections; // the exchanges of each, the greeting first
};

bool RecordingReader::readLine(const QByteArray& line)
{
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(line, &parseError);
    error.clear();
    if (!document.isObject()) {
        error = Text::tr("must be a JSON object of 'gqtool trace --record'");
        return false;
    }
    item = document.object();
    const QDateTime moment = QDateTime::fromString(item.value("time").toString(), Qt::ISODateWithMs);
    time = moment.toMSecsSinceEpoch();
    if (answers.isTimed && !moment.isValid())
        error = Text::tr("time must be a moment such as 2026-01-31T23:59:59.000000Z") + gotText(item.value("time"));
    if (item.contains("event") && !item.value("event").isString())
        error = Text::tr("event must be a string") + gotText(item.value("event"));
    takeInteger("connection", INT_MAX);
    if (!error.isEmpty() || (item.contains("event") && item.value("event") != "connected") || !isWhole())
        return error.isEmpty();
    std::vector<size_t>& exchanges = connections[item.value("connection").toInt(1)];
    if (exchanges.empty())
        exchanges.push_back(addExchange(answers.greetings, -1, 0));
    if (item.contains("event"))
        return true;
    const QString from = item.value("from").toString();
    if (from != "client" && from != "station") {
        error = Text::tr("from must be client or station") + gotText(item.value("from"));
        return false;
    }
    const QByteArray bytes = takeBytes();
    if (!error.isEmpty())
        return false;
    if (from == "client") {
        const QString fault = item.value("fault").toString(); // "form" if only the payload is not as expected
        if (item.value("command").isUndefined() || (!fault.isEmpty() && fault != "form"))
            return true; // not a request
        const int command = item.value("command").toInt();
        const QByteArray payload = QByteArray::fromHex(item.value("payload").toString().toLatin1());
        exchanges.push_back(
            addExchange(answers.replies[keyOf(command, payload)], command, item.value("sequence").toInt()));
        return true;
    }
    RecordedAnswers::Exchange& exchange = answers.exchanges[exchangeOf(exchanges)];
    const bool returnsSequence =
        isFrame() && item.value("sequence").isDouble() && item.value("sequence").toInt() == exchange.sequence;
    exchange.frames.push_back({bytes, time, returnsSequence});
    return true;
}

size_t RecordingReader::addExchange(RecordedAnswers::ExchangeQueue& queue, int command, int sequence)
{
    queue.exchanges.push_back(answers.exchanges.size());
    answers.exchanges.push_back({time, command, sequence, {}});
    return answers.exchanges.size() - 1;
}

// A frame from the server belongs to the unanswered request whose sequence it returns, else to the last request with
// its command, else to the last request: clients wait for each reply, but a server may stay silent, and its sequence
// may be its own count, or always 0.
size_t RecordingReader::exchangeOf(const std::vector<size_t>& candidates) const
{
    const int command = item.value("command").toInt(-1);
    const int sequence = item.value("sequence").toInt(-1);
    const auto hasCommand = [&](size_t index) {
        return answers.exchanges[index].command >= 0 && answers.exchanges[index].command == command;
    };
    const auto hasSequence = [&](size_t index) {
        const RecordedAnswers::Exchange& exchange = answers.exchanges[index];
        return (hasCommand(index) || command == CSocketAPI::errorCommand) && exchange.frames.empty() && sequence != 0 &&
               exchange.sequence == sequence;
    };
    auto last = std::find_if(candidates.rbegin(), candidates.rend(), hasSequence);
    if (last == candidates.rend())
        last = std::find_if(candidates.rbegin(), candidates.rend(), hasCommand);
    return last != candidates.rend() ? *last : candidates.back();
}

// --- Members of a line --------------------------------------------------------------------------------------------

bool RecordingReader::isWhole()
{
    const int payloadSize = item.value("payload").toString().size() / 2;
    if (item.value("fault") == "cut")
        error = Text::tr("the frame is incomplete and cannot be replayed; remove the line");
    else if (item.value("payload").isString() && item.value("length").isDouble() &&
             item.value("length").toDouble() > payloadSize)
        error = Text::tr("the payload is cut: it has %1 of %2; record with 'gqtool trace --record'")
                    .arg(payloadSize)
                    .arg(bytesText(static_cast<long long>(item.value("length").toDouble())));
    return error.isEmpty();
}

int RecordingReader::takeInteger(const char* name, int most)
{
    const QJsonValue value = item.value(QLatin1String(name));
    const double number = value.toDouble(0);
    if ((!value.isUndefined() && !value.isDouble()) || number < 0 || number > most || std::floor(number) != number)
        error = Text::tr("%1 must be an integer from 0 to %2").arg(name).arg(most) + gotText(value);
    return error.isEmpty() ? static_cast<int>(number) : 0;
}

// Of so many bytes; -1 means any number.
QByteArray RecordingReader::takeHex(const char* name, int size)
{
    const QJsonValue value = item.value(QLatin1String(name));
    const QByteArray digits = value.toString().toLatin1();
    QByteArray bytes = QByteArray::fromHex(digits);
    if (!value.isString() || bytes.toHex() != digits.toLower() || (size >= 0 && bytes.size() != size))
        error = (size < 0 ? Text::tr("%1 must be hex digits, two for each of its bytes").arg(name)
                          : Text::tr("%1 must be hex digits for %2").arg(name, bytesText(size))) +
                gotText(value);
    return bytes;
}

// Returns the bytes of the line, with check and end as usual if they are not given.
QByteArray RecordingReader::takeBytes()
{
    if (item.contains("garbage"))
        return takeHex("garbage", -1);
    if (item.contains("length") && !item.contains("command"))
        return QByteArray(1, CSocketAPI::frameStart); // it began no frame
    if (!item.contains("command"))
        error = Text::tr("command is missing");
    QByteArray frame;
    CSocketAPI::addHeader(static_cast<unsigned char>(takeInteger("command", UCHAR_MAX)),
                          static_cast<unsigned char>(takeInteger("arg1", UCHAR_MAX)),
                          static_cast<unsigned char>(takeInteger("arg2", UCHAR_MAX)),
                          takeInteger("sequence", USHRT_MAX), 0, frame);
    frame += takeHex("payload", -1);
    const int payloadEnd = frame.size();
    CSocketAPI::addEnd(frame);
    if (item.contains("check"))
        frame.replace(payloadEnd, 2, takeHex("check", 2));
    if (item.contains("end"))
        frame.replace(payloadEnd + 2, 1, takeHex("end", 1));
    return frame;
}

// ------------------------------------------------------------------------------------------------------------------

// Reads a line. Of one that is no object or too long for a QByteArray, reads only the start.
static QByteArray readLine(QFile& file)
{
    static const int pieceSize = 1 << 16;
    QByteArray line = file.readLine(pieceSize);
    if (!line.trimmed().startsWith('{'))
        return line;
    QByteArray piece = line;
    while (!piece.isEmpty() && !piece.endsWith('\n') && line.size() <= largestInput) {
        piece = file.readLine(pieceSize);
        line += piece;
    }
    return line;
}

bool RecordedAnswers::read(const QString& path, QString& error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        error = Text::tr("cannot read %1: %2").arg(path, libraryText(file.errorString()));
        return false;
    }
    RecordingReader reader(*this);
    int number = 0;
    for (QByteArray line = readLine(file); !line.isEmpty(); line = readLine(file)) { // atEnd is wrong for pipes
        ++number;
        line = line.trimmed();
        const bool isTooLong = line.size() > largestInput;
        if (isTooLong || (!line.isEmpty() && !reader.readLine(line))) {
            error =
                Text::tr("%1: line %2: %3")
                    .arg(path, QString::number(number), isTooLong ? QString(tooLargeText(largestInput)) : reader.error);
            return false;
        }
    }
    if (file.error() != QFileDevice::NoError) {
        error = Text::tr("cannot read %1: %2").arg(path, libraryText(file.errorString()));
        return false;
    }
    // A connection without a greeting, for example a failed connect.
    const auto isEmpty = [this](size_t index) { return exchanges[index].frames.empty(); };
    std::vector<size_t>& sent = greetings.exchanges;
    sent.erase(std::remove_if(sent.begin(), sent.end(), isEmpty), sent.end());
    if (replies.isEmpty())
        error = Text::tr("%1: contains no request").arg(path);
    return error.isEmpty();
}

const RecordedAnswers::Exchange* RecordedAnswers::nextOf(ExchangeQueue& queue) const
{
    if (queue.exchanges.empty())
        return nullptr;
    const Exchange* exchange = &exchanges[queue.exchanges[queue.next]];
    queue.next = std::min(queue.next + 1, queue.exchanges.size() - 1);
    return exchange;
}

std::vector<TimedFrame> RecordedAnswers::framesOf(const Exchange& exchange, int sequence) const
{
    std::vector<TimedFrame> frames;
    long long before = exchange.time;
    for (const RecordedFrame& recorded : exchange.frames) {
        TimedFrame frame = {recorded.bytes, frames.empty() ? 0 : gap};
        if (recorded.returnsSequence)
            CByte2Val::short2Byte(sequence, frame.bytes.data() + sequenceOffset);
        if (isTimed)
            frame.pauseMs = static_cast<int>(std::clamp<long long>(recorded.time - before, 0, INT_MAX));
        before = recorded.time;
        frames.push_back(frame);
    }
    return frames;
}

std::vector<TimedFrame> RecordedAnswers::greeting()
{
    const Exchange* exchange = nextOf(greetings);
    return exchange == nullptr ? std::vector<TimedFrame>() : framesOf(*exchange, exchange->sequence);
}

std::vector<TimedFrame> RecordedAnswers::answer(const StationRequest& request)
{
    const auto found = replies.find(keyOf(request.frame.command, request.frame.payload));
    if (found == replies.end())
        return {{errorFrame(request, errorUnknownCommand)}};
    return framesOf(*nextOf(*found), request.frame.sequence);
}
