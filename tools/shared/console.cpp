#include "console.h"

#include "compactJson.h"
#include "progress.h"
#include "text.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>

static int dataOutput = STDOUT_FILENO;

// Opens each of standard input, output and error that is closed, so that no other file gets its descriptor and with it
// the printed text. Reading and writing there fail.
static void occupyClosedStreams()
{
    int descriptor;
    do
        descriptor = open("/", O_PATH);
    while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    close(descriptor);
}

void takeStandardOutput()
{
    occupyClosedStreams();
    const int devNull = open("/dev/null", O_WRONLY);
    dataOutput = dup(STDOUT_FILENO);
    dup2(devNull, STDOUT_FILENO);
    close(devNull);
}

static bool isDataOnTerminal()
{
    static const bool is = isatty(dataOutput) == 1;
    return is;
}

void printBytes(const QByteArray& bytes)
{
    static std::mutex mutex;
    const std::lock_guard<std::mutex> lock(mutex);
    if (isDataOnTerminal())
        clearProgress();
    for (int done = 0; done < bytes.size();) {
        const ssize_t count = write(dataOutput, bytes.constData() + done, static_cast<size_t>(bytes.size() - done));
        if (count > 0)
            done += static_cast<int>(count);
        else if (errno != EINTR) {
            const int error = errno;
            clearProgress();
            printError(Text::tr("cannot write to standard output: %1").arg(errorText(error)));
            _exit(EXIT_FAILURE);
        }
    }
}

void printLine(const QString& line)
{
    printBytes((isDataOnTerminal() ? harmlessText(line) : line).toUtf8() + '\n');
}

void printJson(const QJsonObject& object)
{
    printLine(compactJson(QJsonDocument(object)));
}

void printError(const QString& line)
{
    clearProgress();
    const QByteArray bytes = QByteArray(program_invocation_short_name) + ": " + harmlessText(line).toUtf8() + '\n';
    std::fputs(bytes.constData(), stderr);
}

void printQtWarning(QtMsgType /*type*/, const QMessageLogContext& /*context*/, const QString& message)
{
    if (!message.contains("Cannot call seek on a sequential device") && !message.startsWith("Detected locale "))
        printError(message);
}
