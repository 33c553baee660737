#pragma once

#include "locatedJson.h"
#include "readyMadeAnswers.h"

#include <QByteArrayList>
#include <QStringList>

#include <optional>
#include <vector>

// The commands of a user's own server, from a JSON file: docs/guide/ownServer.md describes it. The ready-made commands
// are answered too, unless the file has them; any other one is refused as unknown.
class CommandAnswers : public StationAnswers {
public:
    // `gapMs` separates the frames of a reply.
    CommandAnswers(const QString& file, int greetingValue, int gapMs);

    // Reads the file. On failure keeps what was there, and returns false with a message for each error. On success there
    // is a message for each ready-made command that the file replaces.
    bool read(QStringList& messages);

    size_t count() const { return entries.size(); }

    std::vector<TimedFrame> greeting() override { return {{greetingFrame(greetingNumber)}}; }
    std::vector<TimedFrame> answer(const StationRequest& request) override;

    struct Part {
        bool isEcho = false; // of the request's payload
        QByteArray payload;
    };

    struct Entry {
        int command = 0;
        std::optional<QByteArray> payload; // of the request; without it any payload fits
        std::vector<Part> frames;
        std::optional<int> error; // in place of frames
    };

private:
    const QString path;
    const int greetingNumber;
    const int gap;
    ReadyMadeAnswers readyMade;
    std::vector<Entry> entries;
};
