#pragma once

#include <QString>

#include <csignal>
#include <gqFileLog.h>
#include <gqLibUnix.h>

// The station's log file. The station queues lines; a thread of the log saves them, for the last time on SIGTERM or SIGINT.
// Open it before starting other threads, since it blocks both signals in them. Never destroy it once it is open.
class StationLog {
public:
    StationLog();

    // Returns false and the reason in `error` if the file cannot be written.
    bool open(const QString& path, QString& error);

    // Queues a line, if open.
    void add(const QString& line);

    // Writes the queued lines. The thread of the log does this five times a second.
    void save();

private:
    class Saver : public gqdb::CThread {
    public:
        explicit Saver(CGqFileLog& logToSave) : log(logToSave) {}
        void run() override;

    private:
        CGqFileLog& log;
    };

    CGqFileLog log;
    Saver saver;
    bool isOpen = false;
};
