#pragma once

#include "gqtool/frames/frameStream.h"

#include <QFile>
#include <QJsonObject>
#include <QString>

enum class Side { client, station };

QString sideText(Side side); // "client" or "station"

// What a trace tells of all that passes: on standard output a line for each frame, and in a file, for text2pcap, a line
// for each piece. The file is written at once and holds all of it whenever the program ends.
class TraceOutput {
public:
    static constexpr int keptBytes = 65536; // of each payload

    explicit TraceOutput(bool json);

    // Starts the file; `datagrams` says what text2pcap is to make of it. False if it can't be written.
    bool open(const QString& path, bool datagrams);

    void listening(const QString& endpoint, const QString& station);
    void connected(int connection, const QString& client, const QString& station);

    // What else happens; `name` is for scripts, `text` for people.
    void event(int connection, const QString& name, const QString& text);

    // A piece of a stream of bytes, which `stream` takes apart, and the frame that the end of it leaves cut.
    void piece(int connection, Side from, const QByteArray& bytes, FrameStream& stream);
    void end(int connection, Side from, FrameStream& stream);

    // A datagram, which is a stream of its own.
    void datagram(int connection, Side from, const QByteArray& bytes);

    // What has passed so far, in a few words.
    QString summary() const;

    // Whether the file, if there is one, has all of it.
    bool isGood() const { return !hasFailed; }

private:
    void tell(int connection, const QString& text, QJsonObject json);
    void tellItems(int connection, Side from, const std::vector<StreamItem>& items);
    void record(const QByteArray& line);
    void recordPiece(int connection, Side from, const QByteArray& bytes);

    bool isJson;
    QFile file;
    bool isOfDatagrams = false;
    bool hasFailed = false;
    long long now = 0; // the moment of what is being told, in microseconds since 1970
    int connections = 0;
    long long requests = 0; // frames of clients
    long long replies = 0;
    long long faults = 0; // what is no whole frame
};
