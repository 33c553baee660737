#include "gqFileLog.h"

#include "timePrefix.h"

#include <QDateTime>
#include <QDir>

using gqdb::CMutexLocker;
using gqdb::TimePrefix;

static const int fullFile = 30000; // records after which the file is renamed

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
    queue.append(LogData()); // filled in place, so that the text's reference count is incremented once, not three times
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

// Closes a file that is opened in a scope at its end, also after a failed allocation: a file that stays open cannot be
// opened again.
class FileCloser {
public:
    explicit FileCloser(QFile& fileToOpen) : file(fileToOpen), wasOpen(fileToOpen.isOpen()) {}
    ~FileCloser()
    {
        if (!wasOpen)
            file.close();
    }
    FileCloser(const FileCloser&) = delete;
    FileCloser& operator=(const FileCloser&) = delete;

private:
    QFile& file;
    bool wasOpen;
};

bool CGqFileLog::saveDatas(const QList<LogData>& batch)
{
    if (batch.isEmpty())
        return true;
    {
        const FileCloser closer(file);
        if (!file.open(QIODevice::Append | QIODevice::Text))
            return false;
        TimePrefix prefix;
        QByteArray line;
        line.reserve(120); // so that resize(0) keeps the memory: without it a save takes 1.5 times as long
        for (const LogData& record : batch) {
            ++savedCount;
            line.resize(0);
            if (withTime)
                prefix.append(record.seconds, record.milliseconds, line);
            line += record.text.toUtf8();
            line += '\n';
            file.write(line.constData()); // up to a NUL
        }
    }
    if (savedCount < fullFile)
        return true;
    const QString aside = file.fileName() + ".bak";
    QFile::remove(aside);
    QFile::rename(file.fileName(), aside);
    savedCount = 0;
    return true;
}
