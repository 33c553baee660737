#pragma once

#include <QStringList>

#include <sys/types.h>

#include <cstdio>

// A simulated station: gqtool in a process of its own, which ends with this one.
class StationProcess {
public:
    // `options` are those of gqtool station, without --port.
    StationProcess(const QString& gqtool, const QStringList& options);
    ~StationProcess();
    StationProcess(const StationProcess&) = delete;
    StationProcess& operator=(const StationProcess&) = delete;

    // Starts the station on a port, or on a free one if 0, and waits until it listens. Returns false on failure.
    bool start(int wantedPort);
    void stop();

    int port() const { return listeningPort; }
    pid_t pid() const { return child; }

private:
    QStringList command;
    pid_t child = 0;
    int listeningPort = 0;
    FILE* lines = nullptr; // its standard output
};
