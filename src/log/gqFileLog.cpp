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
    const LogData record = {text, seconds, milliseconds};
    const CMutexLocker lock(&queueMutex);
    queue.append(record);
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

// The prefix of the lines. Most follow one of the same second, whose clock time is not made again.
class TimePrefix {
public:
    void append(unsigned int seconds, unsigned int milliseconds, QByteArray& line)
    {
        if (clock.isEmpty() || seconds != clockSeconds) {
            const QTime time = QDateTime::fromTime_t(seconds).time();
            clock = QString::asprintf("<%02d:%02d:%02d.", time.hour(), time.minute(), time.second()).toLatin1();
            clockSeconds = seconds;
        }
        line += clock;
        if (milliseconds == 0) // as info() leaves it where it takes the time itself
            line += "000> ";
        else
            line += QString::asprintf("%03d> ", static_cast<int>(milliseconds)).toLatin1();
    }

private:
    QByteArray clock;
    unsigned int clockSeconds = 0;
};

bool CGqFileLog::saveDatas(const QList<LogData>& batch)
{
    if (batch.isEmpty())
        return true;
    if (!file.open(QIODevice::Append | QIODevice::Text))
        return false;
    TimePrefix prefix;
    QByteArray line;
    for (const LogData& record : batch) {
        ++savedCount;
        line.resize(0);
        if (withTime)
            prefix.append(record.seconds, record.milliseconds, line);
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
