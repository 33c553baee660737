#pragma once

#include <QString>

#include <csignal>
#include <gqFileLog.h>
#include <gqLibUnix.h>

// The station's log file: lines are queued by the threads of the connections and saved by one of its own, and once more
// when the program is told to end. Open it ahead of all other threads: it takes SIGTERM and SIGINT off them. Never
// destroy it once it is open.
class StationLog {
public:
    StationLog();

    // False if the file can't be written.
    bool open(const QString& path);

    // Queues a line, if open.
    void add(const QString& line);

    // Writes what is queued. The thread of the log does so by itself five times a second.
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
