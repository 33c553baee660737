#include "stationScript.h"

#include "gqtool/commandLine.h"

#include <QFile>
#include <QRegularExpression>

#include <algorithm>
#include <climits>
#include <socketApi.h>

// --- The faults ---------------------------------------------------------------------------------------------------

struct FaultWord {
    const char* name;
    const char* value; // the name of its value; empty if it has none
    int least;         // of its value
    const char* meaning;
    void (*set)(SendFaults& faults, int value);
};

static const FaultWord faultWords[] = {
    {"late", "MS", 0, "wait MS before sending it", [](SendFaults& faults, int ms) { faults.lateMs = ms; }},
    {"split", "BYTES", 1, "send BYTES bytes, and the rest after a pause",
     [](SendFaults& faults, int bytes) { faults.splitAfter = bytes; }},
    {"pieces", "BYTES", 0, "send pieces of BYTES bytes with pauses between; 0 sends all at once",
     [](SendFaults& faults, int bytes) { faults.pieceSize = bytes; }},
    {"together", "", 0, "send its frames in one write, a single frame twice",
     [](SendFaults& faults, int) { faults.together = true; }},
    {"wrong-end", "", 0, "end its frames with a wrong byte", [](SendFaults& faults, int) { faults.wrongEnd = true; }},
    {"silent", "", 0, "send nothing", [](SendFaults& faults, int) { faults.silent = true; }},
    {"close-after", "BYTES", 0, "send at most BYTES bytes and close the connection",
     [](SendFaults& faults, int bytes) { faults.closeAfter = bytes; }},
    {"error", "CODE", INT_MIN, "send an error frame with CODE instead",
     [](SendFaults& faults, int code) { faults.error = code; }},
    {"none", "", 0, "cancel the faults of the lines above", [](SendFaults& faults, int) { faults = SendFaults(); }},
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
        text += QString("  %1  %2\n").arg(QString("%1 %2").arg(word.name, word.value), -18).arg(word.meaning);
    return text;
}

// --- The lines ----------------------------------------------------------------------------------------------------

bool StationScript::add(const QString& line, QString& error)
{
    const QStringList words = line.split(QRegularExpression("\\s+"), Qt::SkipEmptyParts);
    if (words.size() < 3) {
        error = "a line must be 'greeting|reply NUMBER|every FAULT [VALUE]'";
        return false;
    }
    Step step = {words[0] == "greeting" ? greeting : reply, 0, findFault(words[2]), 0};
    if (words[0] != "greeting" && words[0] != "reply") {
        error = QString("a line must begin with greeting or reply, got '%1'").arg(words[0]);
        return false;
    }
    if (words[1] != "every" && !readInt(words[1], 1, INT_MAX, step.number)) {
        error = QString("NUMBER must be 'every' or at least 1, got '%1'").arg(words[1]);
        return false;
    }
    if (step.fault == nullptr) {
        QStringList names;
        for (const FaultWord& word : faultWords)
            names.append(word.name);
        error = QString("FAULT must be one of %1, got '%2'").arg(names.join(", "), words[2]);
        return false;
    }
    const bool takesValue = *step.fault->value != '\0';
    if (words.size() != (takesValue ? 4 : 3)) {
        error = QString("%1 takes %2").arg(step.fault->name, takesValue ? "one VALUE" : "no VALUE");
        return false;
    }
    if (takesValue && !readInt(words[3], step.fault->least, INT_MAX, step.value)) {
        error = step.fault->least == INT_MIN
                    ? QString("%1 must be a 4-byte integer, got '%2'").arg(step.fault->name, words[3])
                    : QString("%1 must be an integer from %2 to %3, got '%4'")
                          .arg(step.fault->name)
                          .arg(step.fault->least)
                          .arg(INT_MAX)
                          .arg(words[3]);
        return false;
    }
    steps.push_back(step);
    return true;
}

bool StationScript::read(const QString& path, QString& error)
{
    QFile file(path);
    const QByteArray content = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    if (file.error() != QFileDevice::NoError) {
        error = QString("cannot read %1: %2").arg(path, file.errorString());
        return false;
    }
    const QStringList lines = QString::fromUtf8(content.constData(), content.size()).split('\n');
    for (int index = 0; index < lines.size(); ++index) {
        const QString line = lines[index].section('#', 0, 0).trimmed();
        QString reason;
        if (!line.isEmpty() && !add(line, reason)) {
            error = QString("%1: line %2: %3").arg(path).arg(index + 1).arg(reason);
            return false;
        }
    }
    return true;
}

SendFaults StationScript::faultsOf(Answer answer, int number) const
{
    SendFaults faults;
    for (const Step& step : steps) {
        if (step.answer == answer && (step.number == 0 || step.number == number))
            step.fault->set(faults, step.value);
    }
    return faults;
}

// --- Writes -------------------------------------------------------------------------------------------------------

static QByteArrayList piecesOf(const QByteArray& bytes, const SendFaults& faults)
{
    QByteArrayList pieces;
    int size = faults.splitAfter;
    for (int done = 0; done < bytes.size(); done += pieces.constLast().size()) {
        if (done > 0 || size == 0)
            size = faults.pieceSize > 0 ? faults.pieceSize : bytes.size();
        pieces.append(bytes.mid(done, size));
    }
    return pieces;
}

std::vector<QByteArrayList> writesOf(QByteArrayList frames, const SendFaults& faults)
{
    if (faults.wrongEnd) {
        for (QByteArray& frame : frames)
            frame[frame.size() - 1] = gqdb::CSocketAPI::frameEnd + 1;
    }
    if (faults.together)
        frames = {frames.size() == 1 ? frames[0] + frames[0] : frames.join()};
    std::vector<QByteArrayList> writes;
    int left = faults.closeAfter < 0 ? INT_MAX : faults.closeAfter;
    for (const QByteArray& frame : frames) {
        if (left > 0)
            writes.push_back(piecesOf(frame.left(left), faults));
        left -= std::min(left, frame.size());
    }
    return writes;
}
