#include "stationProcess.h"

#include <QByteArray>

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <vector>

StationProcess::StationProcess(const QString& gqtool, const QStringList& options)
    : command(QStringList{gqtool, "station", "--lang", "en"} + options)
{
}

StationProcess::~StationProcess()
{
    stop();
}

bool StationProcess::start(int wantedPort)
{
    QList<QByteArray> words; // made before the fork, since the child must not allocate
    for (const QString& word : command + QStringList{"--port", QString::number(wantedPort)})
        words.append(word.toLocal8Bit());
    std::vector<char*> arguments;
    arguments.reserve(static_cast<size_t>(words.size()) + 1);
    for (QByteArray& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);

    int ends[2];
    if (pipe(ends) != 0)
        return false;
    child = fork();
    if (child == 0) {
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        dup2(ends[1], STDOUT_FILENO);
        close(ends[0]);
        close(ends[1]);
        execv(arguments[0], arguments.data());
        _exit(127);
    }
    close(ends[1]);
    lines = fdopen(ends[0], "r");
    char line[200];
    return std::fgets(line, sizeof line, lines) != nullptr &&
           std::sscanf(line, "listening on %*[0-9.]:%d", &listeningPort) == 1;
}

void StationProcess::stop()
{
    if (child <= 0)
        return;
    kill(child, SIGTERM);
    waitpid(child, nullptr, 0);
    child = 0;
    std::fclose(lines);
}
