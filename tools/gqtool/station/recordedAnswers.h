#pragma once

#include "stationAnswers.h"

#include <QHash>
#include <QString>

#include <vector>

// Answers as a recorded server did, from a file of 'gqtool trace --record': each request gets what the server sent to
// the same command and payload, in the recorded order; the last reply is repeated. Greetings are also sent in the
// recorded order. A request that was not recorded is refused as an unknown command.
class RecordedAnswers : public StationAnswers {
public:
    // Frames are sent after the recorded delays if `withDelays`, otherwise `gapMs` apart.
    RecordedAnswers(bool withDelays, int gapMs) : isTimed(withDelays), gap(gapMs) {}

    // Returns false with the place and reason in `error`.
    bool read(const QString& path, QString& error);

    std::vector<TimedFrame> greeting() override;
    std::vector<TimedFrame> answer(const StationRequest& request) override;

private:
    struct RecordedFrame {
        QByteArray bytes;
        long long time = 0;           // in ms
        bool returnsSequence = false; // has the sequence of its request
    };

    // A request or the start of a connection, and what the server sent then.
    struct Exchange {
        long long time = 0; // in ms
        int command = 0;    // -1 for the start of a connection
        int sequence = 0;
        std::vector<RecordedFrame> frames;
    };

    // The recorded exchanges with the same request, and the next to be used.
    struct ExchangeQueue {
        std::vector<size_t> exchanges;
        size_t next = 0;
    };

    friend class RecordingReader;

    const Exchange* nextOf(ExchangeQueue& queue) const;
    std::vector<TimedFrame> framesOf(const Exchange& exchange, int sequence) const;

    const bool isTimed;
    const int gap;
    std::vector<Exchange> exchanges;
    ExchangeQueue greetings;
    QHash<QByteArray, ExchangeQueue> replies; // by command and payload
};
