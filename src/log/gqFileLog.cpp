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
    LogData record;
    record.text = text;
    record.seconds = seconds;
    record.milliseconds = milliseconds;
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

// "<hh:mm:ss." of a second, made anew only where the second changes.
class ClockText {
public:
    const QString& of(unsigned int seconds)
    {
        if (text.isEmpty() || seconds != shown) {
            const QTime time = QDateTime::fromTime_t(seconds).time();
            text = QString::asprintf("<%02d:%02d:%02d.", time.hour(), time.minute(), time.second());
            shown = seconds;
        }
        return text;
    }

private:
    QString text;
    unsigned int shown = 0;
};

bool CGqFileLog::saveDatas(const QList<LogData>& batch)
{
    if (batch.isEmpty())
        return true;
    if (!file.open(QIODevice::Append | QIODevice::Text))
        return false;
    ClockText clock;
    QString line;
    for (const LogData& record : batch) {
        ++savedCount;
        line.resize(0);
        if (withTime) {
            line += clock.of(record.seconds);
            line += QString::asprintf("%03d> ", static_cast<int>(record.milliseconds));
        }
        line += record.text;
        line += '\n';
        file.write(line.toUtf8().constData()); // up to a NUL
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
