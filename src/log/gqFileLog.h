#pragma once

#include "gqLibExport.h"
#include "gqLibUnix.h"

#include <QFile>
#include <QList>
#include <QString>

// A buffered text log. info() queues a line in memory; nothing touches the disk until the application calls save().
// There is no thread of its own: who calls save(), and how often, is the application's decision.
//
// The file is UTF-8 text, a line for each record: with time the prefix "<hh:mm:ss.mmm> " (no date; the local time as it
// stands at the save()), then the message, then "\n". Behind the batch that brings it to 30000 records the file is
// moved aside, to its name with ".bak" appended, in place of the one that was there; the next save begins a new file. A
// move that fails is not noticed: the older file is gone, the file goes on, and the count starts at 0. Nothing else
// bounds or ages the log, and nothing bounds the queue: without save() it grows until memory ends.
//
// info() and save() may be called from any thread at any time; info() never waits for the disk. Records of one batch
// keep the order of their info() calls, but the batches of two concurrent save() calls may stand in the file in either
// order. init(), clear() and saveDatas() take no lock: keep them apart from save() and from each other.
//
// The destructor drops what is still queued: call save() first.
class GQLIB_EXPORT CGqFileLog {
public:
    // A line that is queued.
    struct LogData {
        QString text;                  // the message, without a line end
        unsigned int seconds = 0;      // since 1970-01-01 00:00 UTC
        unsigned int milliseconds = 0; // shown as it is, even above 999; from 2^31 on as a negative number
    };

    explicit CGqFileLog(bool showTime = true); // whether the lines begin with their time
    CGqFileLog(const CGqFileLog&) = delete;
    CGqFileLog& operator=(const CGqFileLog&) = delete;

    // Names the file, made absolute against the working directory of this moment, and counts its records from 0,
    // however many it holds. Creates neither the file nor a folder. Always true.
    bool init(const QString& path);

    // Removes the file, not the ".bak". Whether QFile::remove() did. Queue and count stay as they are.
    bool clear();

    // Queues a line: with the present second and 0 milliseconds, or with a time of the caller's.
    // A message ends at its first NUL, and loses its line end with it: the next record follows on the same line. A "\n"
    // in it is written as it stands.
    void info(const QString& text);
    void info(const QString& text, unsigned int seconds, unsigned int milliseconds);

    // Writes out what is queued. True, for an empty queue too, which leaves the file alone.
    // False if the file can't be opened (no init(), a missing folder, no rights): the queued records are lost then. A
    // write that fails, on a full disk for one, is not noticed: true, and the records are lost too.
    bool save();

    // Writes a batch, as save() does with the queue. The caller keeps other writers off meanwhile.
    bool saveDatas(const QList<LogData>& batch);

protected:
    QFile file;
    bool withTime;
    int savedCount; // records since init() or the last move aside
    QList<LogData> queue;
    gqdb::CMutex queueMutex; // held for an append or a swap, never together with fileMutex
    gqdb::CMutex fileMutex;  // held for the file work of a batch
};
