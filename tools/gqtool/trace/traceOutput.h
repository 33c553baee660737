#pragma once

#include "gqtool/frames/frameStream.h"
#include "gqtool/frames/payloadForm.h"

#include <QFile>
#include <QJsonObject>
#include <QString>

#include <optional>

enum class Side { client, station };

QString sideText(Side side); // "client" or "station", for JSON

// A connection, or the client of datagrams, as it appears in the lines.
struct TracedLink {
    int number;
    std::optional<Frame> request = std::nullopt; // the latest one, without its payload
    int lastSequence = -1;                       // of the station's previous frame; -1 if there is none
};

// The lines of a trace: one per frame and event, on standard output, and as JSON in a file.
class TraceOutput {
public:
    // Shows commands by the names of `map`, if it is not null, and their payloads in its forms.
    TraceOutput(bool json, bool datagrams, const CommandMap* map);

    // Also writes each line to a file, with up to `mostBytes` of each payload. Returns false and the reason in `error`
    // on failure.
    bool record(const QString& path, int mostBytes, QString& error);

    // Number of bytes that a stream must keep of each payload.
    int keptBytes() const;

    // Returns false if writing the file failed.
    bool isGood() const { return !hasFailed; }

    void listening(const QString& endpoint, const QString& station);
    void connected(int connection, const QString& client);

    // Prints any other event; `name` is for JSON, `text` for people. If `error`, an errno, is not 0, its description
    // replaces the next placeholder of `text` and is the reason in JSON.
    void event(int connection, const QString& name, const Text& text, int error = 0);

    // piece() prints the frames that a piece completes in `stream`, end() the one that the end of the stream cuts off.
    // Of many frames piece() prints some, so that other connections need not wait: while stream.hasMore(), call more()
    // before the next piece.
    void piece(TracedLink& link, Side from, const QByteArray& bytes, FrameStream& stream);
    void more(TracedLink& link, Side from, FrameStream& stream);
    void end(TracedLink& link, Side from, FrameStream& stream);

    // Prints the frames of a datagram, which is a stream of its own.
    void datagram(TracedLink& link, Side from, const QByteArray& bytes);

    // Returns the counts so far, on one line.
    QString summary() const;

private:
    void print(int connection, const QString& text, QJsonObject json);
    void addContent(const Frame& frame, const MappedCommand& command, QJsonObject& json) const;
    QString addMismatch(const Frame& reply, const TracedLink& link, QJsonObject& json) const;
    void printItems(TracedLink& link, Side from, const std::vector<StreamItem>& items);

    void writeRecord(const QJsonObject& json);

    bool isJson;
    FrameSource source;
    QFile recording;
    int recordedBytes = 0;  // of each payload
    bool hasFailed = false; // to write it
    long long now = 0;      // time of the current line, in microseconds since 1970
    int connections = 0;
    long long requests = 0; // frames of clients
    long long replies = 0;
    long long faults = 0; // items that are not complete frames
};
