#pragma once

#include "gqtool/frames/frameStream.h"
#include "gqtool/frames/payloadForm.h"

#include <QFile>
#include <QJsonObject>
#include <QString>

enum class Side { client, station };

QString sideText(Side side); // "client" or "station", for JSON

// The lines of a trace: one per frame and event, on standard output, and as JSON in a file.
class TraceOutput {
public:
    // Shows commands by the names of `map`, if it is not null, and their payloads in its forms.
    TraceOutput(bool json, bool datagrams, const CommandMap* map);

    // Also writes each line to a file, with payloads of up to 4 MiB. Returns false and the reason in `error` on failure.
    bool record(const QString& path, QString& error);

    // Number of bytes that a stream must keep of each payload.
    int keptBytes() const;

    // Returns false if writing the file failed.
    bool isGood() const { return !hasFailed; }

    void listening(const QString& endpoint, const QString& station);
    void connected(int connection, const QString& client);

    // Prints any other event; `name` is for JSON, `text` for people.
    void event(int connection, const QString& name, const QString& text);

    // Print the frames that a piece completes in `stream`, and the one that the end of the stream cuts off. piece
    // returns the number of lines.
    size_t piece(int connection, Side from, const QByteArray& bytes, FrameStream& stream);
    void end(int connection, Side from, FrameStream& stream);

    // Prints the frames of a datagram, which is a stream of its own.
    void datagram(int connection, Side from, const QByteArray& bytes);

    // Returns the counts so far, on one line.
    QString summary() const;

private:
    void print(int connection, const QString& text, QJsonObject json);
    void addContent(const Frame& frame, const MappedCommand& command, QJsonObject& json) const;
    void printItems(int connection, Side from, const std::vector<StreamItem>& items);

    void writeRecord(const QJsonObject& json);

    bool isJson;
    FrameSource source;
    QFile recording;
    bool hasFailed = false; // to write it
    long long now = 0;      // time of the current line, in microseconds since 1970
    int connections = 0;
    long long requests = 0; // frames of clients
    long long replies = 0;
    long long faults = 0; // items that are not complete frames
};
