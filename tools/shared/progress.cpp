#include "progress.h"

#include "text.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>
#include <mutex>

static constexpr std::chrono::milliseconds shortestPause(100);
static const char* const eraseLine = "\r\033[K";

static std::mutex mutex;
static bool isShown = false;

static int terminalWidth()
{
    winsize size = {};
    ioctl(STDERR_FILENO, TIOCGWINSZ, &size);
    return size.ws_col > 0 ? size.ws_col : 80;
}

Progress::~Progress()
{
    clearProgress();
}

void Progress::show(const QString& text)
{
    const auto now = std::chrono::steady_clock::now();
    if (now - lastShown < shortestPause || isatty(STDERR_FILENO) == 0)
        return;
    const std::lock_guard<std::mutex> lock(mutex);
    QString line = harmlessText(text);
    while (columnsOf(line) >= terminalWidth()) // a full row would wrap
        line.chop(line.at(line.size() - 1).isLowSurrogate() ? 2 : 1);
    std::fputs((eraseLine + line.toUtf8()).constData(), stderr);
    lastShown = now;
    isShown = true;
}

void clearProgress()
{
    const std::lock_guard<std::mutex> lock(mutex);
    if (isShown)
        std::fputs(eraseLine, stderr);
    isShown = false;
}
