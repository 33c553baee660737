#include "stationLog.h"

#include "shared/console.h"
#include "shared/text.h"

#include <QDateTime>

#include <unistd.h>

static sigset_t endSignals()
{
    sigset_t endings;
    sigemptyset(&endings);
    sigaddset(&endings, SIGTERM);
    sigaddset(&endings, SIGINT);
    return endings;
}

StationLog::StationLog() : saver(*this) {}

bool StationLog::open(const QString& path, QString& error)
{
    log.init(path);
    QFile file(path);
    isOpen = file.open(QIODevice::Append); // saving an empty queue would not open it
    if (!isOpen) {
        error = libraryText(file.errorString());
        return false;
    }
    const sigset_t endings = endSignals();
    pthread_sigmask(SIG_BLOCK, &endings, nullptr);
    if (saver.start())
        return true;
    error = Text::tr("cannot start a thread");
    return false;
}

void StationLog::add(const QString& line)
{
    if (!isOpen)
        return;
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    log.info(line, static_cast<unsigned int>(now / 1000), static_cast<unsigned int>(now % 1000));
}

void StationLog::save()
{
    if (!isOpen)
        return;
    log.save();
    const QString failure = log.failure();
    isOpen = failure.isEmpty();
    if (!isOpen)
        printError(
            Text::tr("cannot write to %1, the station continues without it: %2").arg(log.path(), libraryText(failure)));
}

void StationLog::Saver::run()
{
    const sigset_t endings = endSignals();
    const timespec pause = {0, 200000000}; // 200 ms
    int signal;
    do {
        signal = sigtimedwait(&endings, nullptr, &pause);
        log.save();
    } while (signal < 0);
    // End the process by the signal, as it would end without a log.
    std::signal(signal, SIG_DFL);
    pthread_sigmask(SIG_UNBLOCK, &endings, nullptr);
    kill(getpid(), signal);
}
