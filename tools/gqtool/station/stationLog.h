#pragma once

#include <QString>

#include <atomic>
#include <csignal>
#include <gqFileLog.h>
#include <gqLibUnix.h>

// The station's log file. The station queues lines; a thread of the log saves them, for the last time on SIGTERM or SIGINT.
// Open it before starting other threads, since it blocks both signals in them. Never destroy it once it is open. If a
// write fails, the station prints an error and goes on without the log.
class StationLog {
public:
    StationLog();

    // Returns false and the reason in `error` if the file cannot be written.
    bool open(const QString& path, QString& error);

    // Queues a line, if open.
    void add(const QString& line);

private:
    // save() does not detect a failed write, but the file keeps its error until it is opened again.
    class CheckedLog : public CGqFileLog {
    public:
        QString path() const { return file.fileName(); }
        QString failure() const { return file.error() == QFile::NoError ? QString() : file.errorString(); }
    };

    class Saver : public gqdb::CThread {
    public:
        explicit Saver(StationLog& logToSave) : log(logToSave) {}
        void run() override;

    private:
        StationLog& log;
    };

    void save();

    CheckedLog log;
    Saver saver;
    std::atomic<bool> isOpen = false; // false again after a failed write
};
