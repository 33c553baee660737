#pragma once

#include <QByteArrayList>
#include <QStringList>

#include <optional>
#include <vector>

struct FaultWord;

// The faults of one greeting or reply of a station. By default there are none.
struct SendFaults {
    int lateMs = 0;           // waits before sending
    int splitAfter = 0;       // sends that many bytes, and the rest after a pause; 0 sends all at once
    int pieceSize = 0;        // sends pieces of that many bytes with pauses between; 0 sends all at once
    bool together = false;    // sends all frames of a reply in one write, and a single frame twice
    bool wrongEnd = false;    // ends frames with a wrong byte
    bool silent = false;      // sends nothing
    int closeAfter = -1;      // sends at most that many bytes and closes the connection; -1 leaves it open
    std::optional<int> error; // sends an error frame with this code instead
};

// Returns the writes that send these frames with these faults. An inner list has the pieces of one write, which are
// sent with short pauses between them.
std::vector<QByteArrayList> writesOf(QByteArrayList frames, const SendFaults& faults);

// Assigns faults to the greetings and replies of a station, one line each:
//     greeting|reply  NUMBER|every  FAULT  [VALUE]
// Greetings and replies are numbered from 1, over all connections and datagrams.
class StationScript {
public:
    // Adds the lines of a file, with comments from # to the end of a line. Returns false with place and reason in
    // `error`.
    bool read(const QString& path, QString& error);

    // Adds a line. Returns false with the reason in `error`.
    bool add(const QString& line, QString& error);

    // The faults of all lines add up; if several lines set the same fault, the last one counts.
    SendFaults ofGreeting(int number) const { return faultsOf(greeting, number); }
    SendFaults ofReply(int number) const { return faultsOf(reply, number); }

    // Returns the faults and their meanings, a line each, for a help text.
    static QString faultList();

private:
    enum Answer { greeting, reply };

    struct Step {
        Answer answer;
        int number; // 0 means every
        const FaultWord* fault;
        int value;
    };

    SendFaults faultsOf(Answer answer, int number) const;

    std::vector<Step> steps;
};
