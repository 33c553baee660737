#include "console.h"

#include "progress.h"

#include <QJsonDocument>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <mutex>

static int dataOutput = STDOUT_FILENO;

void takeStandardOutput()
{
    const int nowhere = open("/dev/null", O_WRONLY);
    dataOutput = dup(STDOUT_FILENO);
    dup2(nowhere, STDOUT_FILENO);
    close(nowhere);
}

void printLine(const QString& line)
{
    static std::mutex mutex;
    const std::lock_guard<std::mutex> lock(mutex);
    static const bool isTerminal = isatty(dataOutput) == 1;
    if (isTerminal)
        clearProgress();
    const QByteArray bytes = line.toUtf8() + '\n';
    for (int done = 0; done < bytes.size();) {
        const ssize_t count = write(dataOutput, bytes.constData() + done, static_cast<size_t>(bytes.size() - done));
        if (count > 0)
            done += static_cast<int>(count);
        else if (errno != EINTR) {
            const int exitCode = errno == EPIPE ? EXIT_SUCCESS : EXIT_FAILURE;
            clearProgress();
            _exit(exitCode);
        }
    }
}

void printJson(const QJsonObject& object)
{
    printLine(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

void printError(const QString& line)
{
    clearProgress();
    const QByteArray bytes = "gqtool: " + line.toUtf8() + '\n';
    std::fputs(bytes.constData(), stderr);
}
