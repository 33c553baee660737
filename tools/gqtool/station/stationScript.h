#pragma once

#include <QByteArrayList>
#include <QStringList>

#include <optional>
#include <vector>

struct FaultWord;

// What goes wrong with one greeting or reply of a station. The default is that all is well.
struct SendFaults {
    int lateMs = 0;           // waits that long ahead
    int splitAfter = 0;       // sends that many bytes, and the rest a moment later; 0 sends all at once
    int pieceSize = 0;        // sends pieces of that many bytes, a moment apart; 0 likewise
    bool together = false;    // sends all frames of a reply in one write, and one that is alone with its copy
    bool wrongEnd = false;    // ends frames with a wrong byte
    bool silent = false;      // sends nothing
    int closeAfter = -1;      // sends no more than that many bytes and closes the connection; -1 leaves it open
    std::optional<int> error; // sends an error frame with this code instead
};

// Frames, whole but for the faults, as the writes that a connection or datagrams carry them in: those of one frame
// stand in a list of their own.
std::vector<QByteArrayList> writesOf(QByteArrayList frames, const SendFaults& faults);

// Which greeting and which reply of a station get which faults, line by line:
//     greeting|reply  NUMBER|every  FAULT  [VALUE]
// A station counts its greetings and its replies from 1 on, over all connections and datagrams.
class StationScript {
public:
    // The lines of a file, comments from # to the end of a line. False with place and reason in `error`.
    bool read(const QString& path, QString& error);

    // One more line. False with the reason in `error`.
    bool add(const QString& line, QString& error);

    // All lines add up; of those that set the same thing the last one holds.
    SendFaults ofGreeting(int number) const { return faultsOf(greeting, number); }
    SendFaults ofReply(int number) const { return faultsOf(reply, number); }

    // The faults and what they do, a line each, for a help text.
    static QString faultList();

private:
    enum Answer { greeting, reply };

    struct Step {
        Answer answer;
        int number; // 0 stands for every
        const FaultWord* fault;
        int value;
    };

    SendFaults faultsOf(Answer answer, int number) const;

    std::vector<Step> steps;
};
