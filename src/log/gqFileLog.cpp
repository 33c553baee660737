#include "gqFileLog.h"

#include <QDateTime>
#include <QDir>

using gqdb::CMutexLocker;

static const int fullFile = 30000; // records

CGqFileLog::CGqFileLog(bool showTime) : withTime(showTime), savedCount(0) {}

bool CGqFileLog::init(const QString& path)
{
    file.setFileName(QDir(path).absolutePath());
    savedCount = 0;
    return true;
}

bool CGqFileLog::clear()
{
    return file.remove();
}

// --- Queue --------------------------------------------------------------------------------------------------------

void CGqFileLog::info(const QString& text)
{
    info(text, static_cast<unsigned int>(QDateTime::currentSecsSinceEpoch()), 0);
}

void CGqFileLog::info(const QString& text, unsigned int seconds, unsigned int milliseconds)
{
    const CMutexLocker lock(&queueMutex);
    queue.append(LogData()); // empty, and assigned where it stands: the text is shared once, not three times
    LogData& record = queue.last();
    record.text = text;
    record.seconds = seconds;
    record.milliseconds = milliseconds;
}

bool CGqFileLog::save()
{
    QList<LogData> batch;
    {
        const CMutexLocker lock(&queueMutex);
        batch.swap(queue);
    }
    if (batch.isEmpty())
        return true;
    const CMutexLocker lock(&fileMutex);
    return saveDatas(batch);
}

// --- File ---------------------------------------------------------------------------------------------------------

// Begins the lines of a batch. Most follow one of the same time, whose prefix stands in front already.
class LineBegin {
public:
    // Cuts `line`, that of the record before, down to the prefix of this time.
    void put(unsigned int seconds, unsigned int milliseconds, QByteArray& line)
    {
        if (size == 0 || seconds != lastSeconds || milliseconds != lastMilliseconds) {
            if (size == 0 || seconds != lastSeconds)
                clock = QDateTime::fromTime_t(seconds).time();
            line = QString::asprintf("<%02d:%02d:%02d.%03d> ", clock.hour(), clock.minute(), clock.second(),
                                     static_cast<int>(milliseconds))
                       .toLatin1();
            size = line.size();
            lastSeconds = seconds;
            lastMilliseconds = milliseconds;
        }
        line.resize(size);
    }

private:
    int size = 0;
    QTime clock;
    unsigned int lastSeconds = 0;
    unsigned int lastMilliseconds = 0;
};

bool CGqFileLog::saveDatas(const QList<LogData>& batch)
{
    if (batch.isEmpty())
        return true;
    if (!file.open(QIODevice::Append | QIODevice::Text))
        return false;
    LineBegin begin;
    QByteArray line;
    for (const LogData& record : batch) {
        ++savedCount;
        if (withTime)
            begin.put(record.seconds, record.milliseconds, line);
        else
            line.resize(0);
        line += record.text.toUtf8();
        line += '\n';
        file.write(line.constData()); // up to a NUL
    }
    file.close();
    if (savedCount < fullFile)
        return true;
    const QString aside = file.fileName() + ".bak";
    QFile::remove(aside);
    QFile::rename(file.fileName(), aside);
    savedCount = 0;
    return true;
}
