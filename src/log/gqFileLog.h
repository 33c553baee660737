#pragma once

#include "gqLibExport.h"
#include "gqLibUnix.h"

#include <QFile>
#include <QList>
#include <QString>

// A buffered text log. info() queues a record in memory; only save() writes to the disk, and only when the application
// calls it.
//
// The file is UTF-8 text with one line for each record: the prefix `<hh:mm:ss.mmm>` and a blank (unless switched off; no
// date; in the time zone that is set when save() runs), the message, and `\n`. Once an object has saved 30000 records since
// init(), the file is renamed to its name with ".bak" appended, replacing an older one, and the next save() begins a
// new file. Records that are already in the file, or that other objects save, are not counted: such a file grows
// longer, and if programs restart before 30000 records it grows without limit. If the renaming fails, the older ".bak"
// is lost, the file keeps growing, and the count restarts at 0; this is not reported. The queue is not limited either:
// without save() it grows until memory is exhausted.
//
// Any thread may call info() and save() at any time; info() never waits for the disk. The records of one save() are in
// the order of their info() calls, but two concurrent save() calls may write in either order. init(), clear() and
// saveDatas() take no lock: do not call them during save() or each other.
//
// A failed allocation is passed on to the caller. init() then keeps the former file, and info() queues nothing. save()
// and saveDatas() close the file and lose the records that they have not written; if this happens while the file is
// renamed, the next call tries again.
//
// The destructor discards queued records: call save() first.
class GQLIB_EXPORT CGqFileLog {
public:
    // A queued record.
    struct LogData {
        QString text;                  // the message, without a line end
        unsigned int seconds = 0;      // since 1970-01-01 00:00 UTC
        unsigned int milliseconds = 0; // printed unchanged, even above 999; from 2^31 on as a negative number
    };

    explicit CGqFileLog(bool showTime = true); // lines begin with their time if it is true
    CGqFileLog(const CGqFileLog&) = delete;
    CGqFileLog& operator=(const CGqFileLog&) = delete;

    // Sets the file, relative to the current working directory, and the count of records to 0. Creates neither the file
    // nor a folder. Returns true.
    bool init(const QString& path);

    // Removes the file, but not the ".bak". Returns the result of QFile::remove(). Queue and count do not change.
    bool clear();

    // Queue a record with the current second and 0 milliseconds, or with the given time. If a message contains a NUL,
    // the rest of it and the line end are not written: the next record follows on the same line. A `\n` in a message is
    // written unchanged.
    void info(const QString& text);
    void info(const QString& text, unsigned int seconds, unsigned int milliseconds);

    // Appends the queued records to the file. Returns true, or false if the file cannot be opened (no init(), missing
    // folder, no permission); the records are lost then. A failed write, for example on a full disk, is not detected:
    // it returns true although records are lost. With an empty queue it returns true without opening the file.
    bool save();

    // Writes a list of records as save() writes the queue. The caller must exclude other writers.
    bool saveDatas(const QList<LogData>& batch);

protected:
    QFile file;
    bool withTime;
    int savedCount; // records since init() or the last renaming
    QList<LogData> queue;
    gqdb::CMutex queueMutex; // held while records are appended or taken, never together with fileMutex
    gqdb::CMutex fileMutex;  // held while save() writes
};
