#include "gqtool/station/commandAnswers.h"
#include "gqtool/station/recordedAnswers.h"
#include "gqtool/station/stationScript.h"
#include "toolInput.h"

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>

// The files of gqtool station: scripts of faults, commands of a user's server, and recordings.

using Json = nlohmann::json;

static StationRequest requestOf(int command, int sequence, const QByteArray& payload)
{
    StationRequest request;
    request.frame.command = static_cast<unsigned char>(command);
    request.frame.sequence = sequence;
    request.frame.payload = payload;
    request.frame.length = static_cast<unsigned int>(payload.size());
    request.size = 13 + payload.size();
    return request;
}

// --- Scripts ------------------------------------------------------------------------------------------------------

static void requirePieces(const SendFaults& faults)
{
    require(faults.lateMs >= 0 && faults.splitAfter >= 0 && faults.pieceSize >= 0 && faults.closeAfter >= -1 &&
                faults.downMs >= 0,
            "the faults must be in their ranges");
    const QByteArray first = frameOf(1, 2, "first");
    const QByteArray second = frameOf(1, 2, "");
    QByteArray expected = first + second;
    if (faults.wrongEnd)
        expected[expected.size() - 1] = expected[first.size() - 1] = '\x17';
    if (faults.closeAfter >= 0)
        expected.truncate(faults.closeAfter);
    QByteArray sent;
    for (const TimedFrame& piece : piecesOf({{first, 0}, {second, 3}}, faults)) {
        require(!piece.bytes.isEmpty(), "a piece must have bytes");
        sent += piece.bytes;
    }
    require(sent == expected, "the pieces must be the frames");
}

// Each line with an error must be refused alone, and the file must be accepted without these lines. A byte order mark
// counts only at the start of a file.
static void requireWrongLines(const QString& path, const QByteArray& text, const QStringList& errors)
{
    QList<QByteArray> lines = text.split('\n');
    QStringList reasons;
    int last = 0;
    for (const QString& error : errors) {
        const int line = lineOfError(error, path, text);
        require(line > last, "the errors must be in the order of their lines");
        last = line;
        require(!StationScript(7).read(inputFile((line > 1 ? "\n" : "") + lines[line - 1]), reasons),
                "the line of an error must be wrong");
        lines[line - 1].clear();
    }
    require(StationScript(7).read(inputFile(lines.join('\n')), reasons), "the lines without an error must be good");
}

static void readScript(Reading& reading)
{
    InputBytes input(reading);
    const QByteArray text = input.rest();
    const QString path = inputFile(text);
    StationScript script(7);
    QStringList errors;
    const bool isGood = script.read(path, errors);
    require(isGood == errors.isEmpty(), "there must be errors if and only if the script is refused");
    if (!isGood)
        return requireWrongLines(path, text, errors);
    for (int i = 0; i < 12; ++i) {
        int number = 0;
        requirePieces(script.nextGreeting());
        requirePieces(script.nextReply(static_cast<unsigned char>(i % 3), number));
        require(number == i + 1, "replies must be numbered");
    }
}

enum class Subject { greeting, reply, command };

enum class Selector { every, everyNth, number, range };

enum class Fault { late, split, pieces, together, wrongEnd, silent, closeAfter, error, down, none };

static const struct {
    const char* name;
    bool takesValue;
} faultWords[] = {
    {"late", true},    {"split", true},       {"pieces", true}, {"together", false}, {"wrong-end", false},
    {"silent", false}, {"close-after", true}, {"error", true},  {"down", true},      {"none", false},
};

struct ExpectedStep {
    Subject subject;
    int command;
    int first;
    int last;
    int step;
    Fault fault;
    int value;

    bool applies(Subject atSubject, int atCommand, int number) const
    {
        return subject == atSubject && (subject != Subject::command || command == atCommand) && number >= first &&
               number <= last && number % step == 0;
    }
};

static void apply(const ExpectedStep& step, SendFaults& faults)
{
    static const SendFaults noFaults; // g++ 14 wrongly takes the `error` of a temporary for uninitialized
    switch (step.fault) {
    case Fault::late:
        faults.lateMs = step.value;
        break;
    case Fault::split:
        faults.splitAfter = step.value;
        break;
    case Fault::pieces:
        faults.pieceSize = step.value;
        break;
    case Fault::together:
        faults.together = true;
        break;
    case Fault::wrongEnd:
        faults.wrongEnd = true;
        break;
    case Fault::silent:
        faults.silent = true;
        break;
    case Fault::closeAfter:
        faults.closeAfter = step.value;
        break;
    case Fault::error:
        faults.error = step.value;
        break;
    case Fault::down:
        faults.downMs = step.value;
        break;
    case Fault::none:
        faults = noFaults;
    }
}

static bool areSame(const SendFaults& one, const SendFaults& other)
{
    return one.lateMs == other.lateMs && one.splitAfter == other.splitAfter && one.pieceSize == other.pieceSize &&
           one.together == other.together && one.wrongEnd == other.wrongEnd && one.silent == other.silent &&
           one.closeAfter == other.closeAfter && one.downMs == other.downMs && one.error == other.error;
}

// Appends a line of a script made from the next bytes. Returns the effect that it must have.
static ExpectedStep takeStep(InputBytes& input, QByteArray& text)
{
    static const char* const subjects[] = {" greeting\t", "reply ", "command "};
    ExpectedStep step = {Subject(input.number(3)), input.number(3), 1, INT_MAX, 1, Fault::none, 0};
    text += subjects[static_cast<int>(step.subject)];
    if (step.subject == Subject::command)
        text += "0x" + QByteArray::number(step.command, 16) + "  ";
    const auto selector = Selector(input.number(4));
    const int number = input.number(9) + 1;
    const int more = input.number(9);
    if (selector == Selector::every) {
        text += "every";
    } else if (selector == Selector::everyNth) {
        step.step = number;
        text += "every/" + QByteArray::number(number);
    } else {
        step.first = number;
        step.last = selector == Selector::number ? number : number + more;
        text += QByteArray::number(number);
        if (selector == Selector::range)
            text += '-' + QByteArray::number(step.last);
    }
    step.fault = Fault(input.number(10));
    step.value = input.number();
    if (step.fault == Fault::split || step.fault == Fault::down)
        step.value += 1; // at least 1
    if (step.fault == Fault::error)
        step.value -= 128;
    const auto& word = faultWords[static_cast<int>(step.fault)];
    text += ' ' + QByteArray(word.name);
    if (word.takesValue)
        text += ' ' + QByteArray::number(step.value);
    text += more < 4 ? " # late 5\r\n" : "\n\n";
    return step;
}

static void readGoodScript(Reading& reading)
{
    InputBytes input(reading);
    QByteArray text = "# every 1\n";
    std::vector<ExpectedStep> steps;
    while (input.left() > 0 && steps.size() < 30)
        steps.push_back(takeStep(input, text));
    StationScript script(1);
    QStringList errors;
    if (!script.read(inputFile(text), errors))
        fail(errors.join('\n').toStdString() + "\n" + text.toStdString());
    int replies[3] = {};
    for (int i = 1; i <= 20; ++i) {
        const int command = i % 3;
        const int numberOfCommand = ++replies[command];
        SendFaults greeting;
        SendFaults reply;
        for (const ExpectedStep& step : steps) {
            if (step.applies(Subject::greeting, command, i))
                apply(step, greeting);
            if (step.applies(Subject::reply, command, i) || step.applies(Subject::command, command, numberOfCommand))
                apply(step, reply);
        }
        int number = 0;
        require(areSame(script.nextGreeting(), greeting), "a greeting must have the faults of the lines that apply");
        require(areSame(script.nextReply(static_cast<unsigned char>(command), number), reply),
                "a reply must have the faults of the lines that apply");
    }
}

// --- Commands -----------------------------------------------------------------------------------------------------

static void requireFrame(const QByteArray& frame, int sequence)
{
    require(frame.size() >= 13 && frame[0] == '\x68' && frameEndAt(frame, 0) == frame.size() &&
                frame[frame.size() - 1] == '\x16',
            "an answer must be a frame");
    require(static_cast<int>(numberOf4(frame.constData() + 5) & 0xffff) == sequence,
            "an answer must have the sequence of its request");
}

// Returns the payload of a reply that is easy to calculate, or false.
static bool simplePayload(const Json& reply, const QByteArray& request, QByteArray& payload)
{
    if (reply == "echo")
        payload = request;
    else if (reply.is_object() && reply.size() == 1 && reply.contains("int"))
        payload = word4(static_cast<int>(reply["int"].get<double>()));
    else if (reply.is_object() && reply.size() == 1 && reply.contains("ints")) {
        payload = word4(static_cast<int>(reply["ints"].size()));
        for (const Json& item : reply["ints"])
            payload += word4(static_cast<int>(item.get<double>()));
    } else if (reply.is_object() && reply.size() == 1 && reply.contains("strings")) {
        payload = word4(static_cast<int>(reply["strings"].size()));
        for (const Json& item : reply["strings"]) {
            const QByteArray text = QByteArray::fromStdString(item.get<std::string>());
            payload += word4(text.size() + 2).left(2) + word4(text.size()).left(2) + text;
        }
    } else
        return false;
    return true;
}

static int commandOf(const Json& entry)
{
    const Json& command = entry["command"];
    return command.is_number() ? static_cast<int>(command.get<double>())
                               : QString::fromStdString(command.get<std::string>()).toInt(nullptr, 0);
}

static void requireAnswer(CommandAnswers& answers, const Json& entry)
{
    const QByteArray request = "any";
    const int command = commandOf(entry);
    const std::vector<TimedFrame> frames = answers.answer(requestOf(command, 513, request));
    for (const TimedFrame& frame : frames)
        requireFrame(frame.bytes, 513);
    if (entry.contains("error"))
        return require(frames.size() == 1 &&
                           frames[0].bytes == frameOf(0xff, 513, word4(static_cast<int>(entry["error"].get<double>()))),
                       "an error must be answered by its error frame");
    const Json replies = entry["reply"].is_array() ? entry["reply"] : Json::array({entry["reply"]});
    require(frames.size() == replies.size(), "every frame of the reply must be sent");
    for (size_t i = 0; i < frames.size(); ++i) {
        QByteArray payload;
        if (simplePayload(replies[i], request, payload))
            require(frames[i].bytes == frameOf(command, 513, payload), "a reply must have the payload of its line");
        require(frames[i].pauseMs == (i == 0 ? 0 : 9), "only later frames must have a pause");
    }
}

static void readCommands(Reading& reading)
{
    InputBytes input(reading);
    const QByteArray text = input.rest();
    if (text.contains('/') || text.contains("\\u002")) // the names of other files
        return;
    const QString path = inputFile(text);
    CommandAnswers answers(path, 1, 9);
    QStringList messages;
    const bool isGood = answers.read(messages);
    require(isGood || !messages.isEmpty(), "a failure must have errors");
    const Json document = Json::parse(text.begin(), text.end(), nullptr, false);
    require(!isGood || document.is_object(), "only a JSON object is a file of commands");
    for (const QString& message : messages)
        require(message.startsWith(path + ": "), "a message must name the file");
    if (!messages.isEmpty() && document.is_object())
        lineOfError(messages[0], path, text);
    require(answers.count() == (isGood ? document["commands"].size() : 0), "every command must be counted");
    if (!isGood)
        return;
    std::vector<int> seen;
    for (const Json& entry : document["commands"]) {
        const int command = commandOf(entry);
        require(command >= 0 && command < 0xff, "a command must not be that of an error frame");
        if (std::find(seen.begin(), seen.end(), command) == seen.end() && !entry.contains("payload"))
            requireAnswer(answers, entry);
        seen.push_back(command);
    }
}

// --- Recordings ---------------------------------------------------------------------------------------------------

static void readRecording(Reading& reading)
{
    InputBytes input(reading);
    const bool isTimed = input.number(2) == 1;
    const QByteArray text = input.rest();
    const QString path = inputFile(text);
    RecordedAnswers answers(isTimed, 9);
    QString error;
    if (!answers.read(path, error)) {
        if (error != path + ": contains no request")
            lineOfError(error, path, text);
        return;
    }
    for (const QByteArray& line : text.split('\n')) {
        const Json item = Json::parse(line.begin(), line.end(), nullptr, false);
        const bool isRequest = item.is_object() && item.value("from", Json()) == "client" && !item.contains("event") &&
                               item.contains("command") && item.value("payload", Json()).is_string() &&
                               !item.contains("fault") && !item.contains("garbage");
        if (!isRequest)
            continue;
        const QByteArray payload = QByteArray::fromHex(QByteArray::fromStdString(item["payload"].get<std::string>()));
        const int command = static_cast<int>(item["command"].get<double>());
        for (const TimedFrame& frame : answers.answer(requestOf(command, 513, payload)))
            require(frame.pauseMs >= 0, "no pause is negative");
    }
    answers.greeting();
}

struct RecordedExchange {
    int sequence;
    std::vector<QByteArray> frames;
};

static QByteArray recordedLine(const char* from, int command, int sequence, const QByteArray& payload, int ms)
{
    return "{\"time\":\"2026-01-31T23:59:00." + QByteArray::number(1000 + ms % 1000).mid(1) +
           "000Z\",\"connection\":1,\"from\":\"" + from + "\",\"length\":" + QByteArray::number(payload.size()) +
           ",\"sequence\":" + QByteArray::number(sequence) +
           ",\"arg2\":0,\"arg1\":0,\"command\":" + QByteArray::number(command) + ",\"payload\":\"" + payload.toHex() +
           "\"}\n";
}

// The bytes are requests and replies. The station must reply as recorded, with the sequence of the request.
static void readGoodRecording(Reading& reading)
{
    InputBytes input(reading);
    QByteArray text = recordedLine("station", 0, 0, word4(1), 0);
    std::map<QByteArray, std::vector<RecordedExchange>> recorded; // by command and payload
    std::vector<QByteArray> requests;
    int ms = 0;
    for (int sequence = 1; input.left() > 0 && sequence <= 30; ++sequence) {
        const int command = 0x30 + input.number(3);
        const QByteArray payload = input.take(input.number(3));
        const QByteArray key = static_cast<char>(command) + payload;
        text += recordedLine("client", command, sequence, payload, ms);
        RecordedExchange exchange = {sequence, {}};
        for (int count = input.number(4); count > 0; --count) {
            const QByteArray reply = input.take(input.number(20));
            text += recordedLine("station", command, sequence, reply, ++ms);
            exchange.frames.push_back(reply);
        }
        recorded[key].push_back(exchange);
        requests.push_back(key);
        text += input.number() < 20 ? "\r\n" : "";
    }
    RecordedAnswers answers(true, 0);
    QString error;
    if (!answers.read(inputFile(text), error))
        return require(requests.empty(), "a good recording must be read");
    require(answers.greeting()[0].bytes == frameOf(0, 0, word4(1)), "the greeting must be that of the recording");
    std::map<QByteArray, size_t> used;
    for (size_t i = 0; i < 2 * requests.size(); ++i) {
        const QByteArray& key = requests[i % requests.size()];
        const int command = static_cast<unsigned char>(key[0]);
        const std::vector<RecordedExchange>& exchanges = recorded[key];
        const size_t at = std::min(used[key]++, exchanges.size() - 1);
        const std::vector<TimedFrame> frames = answers.answer(requestOf(command, 4000, key.mid(1)));
        require(frames.size() == exchanges[at].frames.size(), "every recorded frame must be sent");
        for (size_t frame = 0; frame < frames.size(); ++frame) {
            if (frames[frame].bytes != frameOf(command, 4000, exchanges[at].frames[frame]))
                fail("the reply is " + frames[frame].bytes.toHex(' ').toStdString() + "\n" + text.toStdString());
        }
    }
}

const std::vector<Target> stationFileTargets = {
    toolTarget("stationScript", readScript),         toolTarget("stationScriptLines", readGoodScript),
    toolTarget("commandFile", readCommands),         toolTarget("recording", readRecording),
    toolTarget("recordingLines", readGoodRecording),
};
