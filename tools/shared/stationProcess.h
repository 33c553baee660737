#pragma once

#include <QStringList>

#include <sys/types.h>

#include <cstdio>

// A simulated station, run by gqtool in a process of its own, that ends with this one.
class StationProcess {
public:
    // Options as gqtool station takes them, but for the port.
    StationProcess(const QString& gqtool, const QStringList& options);
    ~StationProcess();
    StationProcess(const StationProcess&) = delete;
    StationProcess& operator=(const StationProcess&) = delete;

    // Starts it on a port, or on one that the system chooses if 0, and waits until it listens. False when it doesn't.
    bool start(int wantedPort);
    void stop();

    int port() const { return listeningPort; }
    pid_t pid() const { return child; }

private:
    QStringList command;
    pid_t child = 0;
    int listeningPort = 0;
    FILE* lines = nullptr; // what it says
};
