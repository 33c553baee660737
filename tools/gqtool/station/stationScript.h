#pragma once

#include "faultSelector.h"
#include "stationAnswers.h"

#include <QStringList>

#include <array>
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
    int downMs = 0;           // closes all links instead and refuses new ones for that time
    std::optional<int> error; // sends an error frame with this code instead
};

// Returns the pieces to write, so that these frames are sent with these faults. Pieces of a frame have short pauses
// between them, so that they arrive separately.
std::vector<TimedFrame> piecesOf(std::vector<TimedFrame> frames, const SendFaults& faults);

// Assigns faults to the greetings and replies of a station, one line each:
//     greeting|reply|command COMMAND  SELECTOR  FAULT  [VALUE]
// Greetings, replies, and replies to each command are numbered from 1, over all connections and datagrams.
class StationScript {
public:
    // Selectors by chance repeat their choices with the same seed.
    explicit StationScript(unsigned int chanceSeed) : seed(chanceSeed) {}

    // Adds the lines of a file, with comments from # to the end of a line. Returns false with a message for each wrong
    // line in `errors`.
    bool read(const QString& path, QStringList& errors);

    // Adds a line. Returns false with the reason in `error`.
    bool add(const QString& line, QString& error);

    // Count a greeting or reply and return its faults. The faults of all lines add up; if several lines set the same
    // fault, the last one counts.
    SendFaults nextGreeting();
    SendFaults nextReply(unsigned char command, int& number);

    // Returns the faults and their meanings, a line each, for a help text.
    static QString faultList();

private:
    enum class Answer { greeting, reply, command };

    struct Step {
        Answer answer = Answer::reply;
        int command = 0; // of Answer::command
        FaultSelector selector;
        const FaultWord* fault = nullptr;
        int value = 0;
    };

    static bool readAnswer(QStringList& words, Step& step, QString& error);
    static bool readFault(const QStringList& words, Step& step, QString& error);

    unsigned int seed;
    std::vector<Step> steps;
    int greetings = 0;
    int replies = 0;
    std::array<int, 256> repliesTo = {}; // by command
};
