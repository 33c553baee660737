#include "stationScript.h"

#include "gqtool/bytes/readAll.h"
#include "gqtool/closestName.h"
#include "gqtool/integer.h"
#include "shared/text.h"

#include <QRegularExpression>

#include <algorithm>
#include <climits>
#include <socketApi.h>

static const int largestScript = 1 << 20; // bytes

// --- The faults ---------------------------------------------------------------------------------------------------

struct FaultWord {
    const char* name;
    const char* value; // the name of its value; empty if it has none
    int least;         // of its value
    const char* meaning;
    void (*set)(SendFaults& faults, int value);
};

static const FaultWord faultWords[] = {
    {"late", "MS", 0, QT_TRANSLATE_NOOP("Text", "wait MS before sending it"),
     [](SendFaults& faults, int ms) { faults.lateMs = ms; }},
    {"split", "BYTES", 1, QT_TRANSLATE_NOOP("Text", "send BYTES bytes, and the rest after a pause"),
     [](SendFaults& faults, int bytes) { faults.splitAfter = bytes; }},
    {"pieces", "BYTES", 0,
     QT_TRANSLATE_NOOP("Text", "send pieces of BYTES bytes with pauses between; 0 sends all at once"),
     [](SendFaults& faults, int bytes) { faults.pieceSize = bytes; }},
    {"together", "", 0, QT_TRANSLATE_NOOP("Text", "send its frames in one write, a single frame twice"),
     [](SendFaults& faults, int) { faults.together = true; }},
    {"wrong-end", "", 0, QT_TRANSLATE_NOOP("Text", "end its frames with a wrong byte"),
     [](SendFaults& faults, int) { faults.wrongEnd = true; }},
    {"silent", "", 0, QT_TRANSLATE_NOOP("Text", "send nothing"), [](SendFaults& faults, int) { faults.silent = true; }},
    {"close-after", "BYTES", 0, QT_TRANSLATE_NOOP("Text", "send at most BYTES bytes and close the connection"),
     [](SendFaults& faults, int bytes) { faults.closeAfter = bytes; }},
    {"error", "CODE", INT_MIN, QT_TRANSLATE_NOOP("Text", "send an error frame with CODE instead"),
     [](SendFaults& faults, int code) { faults.error = code; }},
    {"down", "MS", 1, QT_TRANSLATE_NOOP("Text", "close every link instead and refuse new ones for MS"),
     [](SendFaults& faults, int ms) { faults.downMs = ms; }},
    {"none", "", 0, QT_TRANSLATE_NOOP("Text", "cancel the faults of the lines above"),
     [](SendFaults& faults, int) { faults = SendFaults(); }},
};

static const FaultWord* findFault(const QString& name)
{
    const auto found = std::find_if(std::begin(faultWords), std::end(faultWords),
                                    [&](const FaultWord& word) { return name == word.name; });
    return found == std::end(faultWords) ? nullptr : found;
}

QString StationScript::faultList()
{
    QString text;
    for (const FaultWord& word : faultWords)
        text += QString("  %1  %2\n").arg(QString("%1 %2").arg(word.name, word.value), -18).arg(Text::tr(word.meaning));
    return text;
}

// --- The lines ----------------------------------------------------------------------------------------------------

static const char* const lineForm =
    QT_TRANSLATE_NOOP("Text", "a line must be 'greeting|reply|command COMMAND SELECTOR FAULT [VALUE]'");

// Reads and removes what is before the selector.
bool StationScript::readAnswer(QStringList& words, Step& step, QString& error)
{
    const QString first = words.takeFirst();
    if (first == "greeting")
        step.answer = Answer::greeting;
    else if (first == "reply")
        step.answer = Answer::reply;
    else if (first == "command")
        step.answer = Answer::command;
    else
        error = Text::tr("a line must begin with greeting, reply or command, got '%1'").arg(first);
    if (first == "command" && !words.isEmpty() && !readInt(words[0], 0, UCHAR_MAX, step.command))
        error = Text::tr("COMMAND must be an integer from 0 to 255, got '%1'").arg(words[0]);
    if (first == "command" && !words.isEmpty())
        words.removeFirst();
    return error.isEmpty();
}

bool StationScript::readFault(const QStringList& words, Step& step, QString& error)
{
    step.fault = findFault(words[0]);
    if (step.fault == nullptr) {
        QStringList names;
        for (const FaultWord& word : faultWords)
            names.append(word.name);
        error = Text::tr("FAULT must be one of %1, got '%2'").arg(listText(names), words[0]) +
                didYouMean(closestName(words[0], names));
        return false;
    }
    const FaultWord& fault = *step.fault;
    const bool takesValue = *fault.value != '\0';
    if (words.size() != (takesValue ? 2 : 1))
        error = (takesValue ? Text::tr("%1 takes one VALUE") : Text::tr("%1 takes no VALUE")).arg(fault.name);
    else if (takesValue && !readInt(words[1], fault.least, INT_MAX, step.value))
        error = fault.least == INT_MIN ? Text::tr("%1 must be a 4-byte integer, got '%2'").arg(fault.name, words[1])
                                       : Text::tr("%1 must be an integer from %2 to %3, got '%4'")
                                             .arg(fault.name)
                                             .arg(fault.least)
                                             .arg(INT_MAX)
                                             .arg(words[1]);
    return error.isEmpty();
}

bool StationScript::add(const QString& line, QString& error)
{
    error.clear();
    static const QRegularExpression blanks("\\s+");
    QStringList words = line.split(blanks, Qt::SkipEmptyParts);
    Step step;
    if (words.size() < 3) {
        error = Text::tr(lineForm);
        return false;
    }
    if (!readAnswer(words, step, error))
        return false;
    if (words.size() < 2) {
        error = Text::tr(lineForm);
        return false;
    }
    if (!step.selector.read(words[0], seed + static_cast<unsigned int>(steps.size()))) {
        error =
            Text::tr("SELECTOR must be a number from 1, a range such as 3-7, every, every/10 or a chance such as 2%, "
                     "got '%1'")
                .arg(words[0]);
        return false;
    }
    if (!readFault(words.mid(1), step, error))
        return false;
    steps.push_back(step);
    return true;
}

bool StationScript::read(const QString& path, QStringList& errors)
{
    QByteArray content;
    QString unreadable;
    if (!readAll(path, content, unreadable, largestScript)) {
        errors = QStringList{Text::tr("cannot read %1: %2").arg(path, unreadable)};
        return false;
    }
    errors.clear();
    const QStringList lines = QString::fromUtf8(content.constData(), content.size()).split('\n');
    for (int index = 0; index < lines.size(); ++index) {
        const QString line = lines[index].section('#', 0, 0).trimmed();
        QString reason;
        if (!line.isEmpty() && !add(line, reason))
            errors.append(Text::tr("%1: line %2: %3").arg(path, QString::number(index + 1), reason));
    }
    return errors.isEmpty();
}

SendFaults StationScript::nextGreeting()
{
    ++greetings;
    SendFaults faults;
    for (Step& step : steps) {
        if (step.answer == Answer::greeting && step.selector.chooses(greetings))
            step.fault->set(faults, step.value);
    }
    return faults;
}

SendFaults StationScript::nextReply(unsigned char command, int& number)
{
    number = ++replies;
    const int numberOfCommand = ++repliesTo[command];
    SendFaults faults;
    for (Step& step : steps) {
        const bool isChosen = step.answer == Answer::reply ? step.selector.chooses(number)
                              : step.answer == Answer::command
                                  ? step.command == command && step.selector.chooses(numberOfCommand)
                                  : false;
        if (isChosen)
            step.fault->set(faults, step.value);
    }
    return faults;
}

// --- Pieces -------------------------------------------------------------------------------------------------------

static void addPieces(const TimedFrame& frame, const SendFaults& faults, std::vector<TimedFrame>& pieces)
{
    int size = faults.splitAfter;
    for (int done = 0; done < frame.bytes.size(); done += pieces.back().bytes.size()) {
        if (done > 0 || size == 0)
            size = faults.pieceSize > 0 ? faults.pieceSize : frame.bytes.size();
        pieces.push_back({frame.bytes.mid(done, size), done > 0 ? 1 : frame.pauseMs});
    }
}

static TimedFrame joined(const std::vector<TimedFrame>& frames)
{
    TimedFrame all = frames[0];
    for (size_t i = 1; i < frames.size(); ++i)
        all.bytes += frames[i].bytes;
    if (frames.size() == 1)
        all.bytes += all.bytes;
    return all;
}

std::vector<TimedFrame> piecesOf(std::vector<TimedFrame> frames, const SendFaults& faults)
{
    if (faults.wrongEnd) {
        for (TimedFrame& frame : frames)
            frame.bytes[frame.bytes.size() - 1] = gqdb::CSocketAPI::frameEnd + 1;
    }
    if (faults.together && !frames.empty())
        frames = {joined(frames)};
    std::vector<TimedFrame> pieces;
    int left = faults.closeAfter < 0 ? INT_MAX : faults.closeAfter;
    for (TimedFrame& frame : frames) {
        frame.bytes.truncate(left);
        left -= frame.bytes.size();
        addPieces(frame, faults, pieces);
    }
    return pieces;
}
