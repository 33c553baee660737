#pragma once

#include "support/slowness.h"

#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>

#include <gtest/gtest.h>

#include <csignal>

// Runs gqtool and other programs as separate processes.

static const int waitMs = 40000 * slowness();

struct Outcome {
    int exitCode;
    QString output;
    QString errors;
};

// The environment of programs: messages are compared in English.
inline QProcessEnvironment englishEnvironment()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("LC_ALL", "C");
    return environment;
}

inline Outcome runProgram(const QString& program, const QStringList& arguments,
                          const QProcessEnvironment& environment = englishEnvironment())
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    if (!process.waitForFinished(waitMs))
        return {-1, QString(), "did not end"};
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

inline Outcome run(const QStringList& arguments)
{
    return runProgram(GQTOOL, arguments);
}

// A program that runs in parallel with the test, until it ends or is terminated.
class RunningProgram {
public:
    // With a name of a file, its output goes there, and nextLine() has none.
    RunningProgram(const QString& program, const QStringList& arguments, const QString& outputFile = {})
    {
        process.setProcessEnvironment(englishEnvironment());
        if (!outputFile.isEmpty())
            process.setStandardOutputFile(outputFile);
        process.start(program, arguments);
        process.waitForStarted(waitMs); // there is nothing to end before
    }
    ~RunningProgram() { end(); }

    // Ends it by a signal. Returns its exit code, or -1 if it has none.
    int end(int signal = SIGTERM)
    {
        if (process.state() == QProcess::Running && process.processId() > 0) // -1 would signal every process
            ::kill(static_cast<pid_t>(process.processId()), signal);
        process.waitForFinished(waitMs);
        return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    }

    // Waits until it ends. The output lacks what nextLine has returned.
    Outcome outcome()
    {
        if (process.state() != QProcess::NotRunning && !process.waitForFinished(waitMs))
            return {-1, QString(), "did not end"};
        return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
    }

    pid_t pid() const { return static_cast<pid_t>(process.processId()); }

    QString nextLine() { return nextLineOf(QProcess::StandardOutput); }
    QString nextError() { return nextLineOf(QProcess::StandardError); }

private:
    QString nextLineOf(QProcess::ProcessChannel channel)
    {
        process.setReadChannel(channel);
        while (!process.canReadLine()) {
            if (!process.waitForReadyRead(waitMs))
                return "no line";
        }
        return QString::fromUtf8(process.readLine()).trimmed();
    }

    QProcess process;
};

// A separate station for each test, on a port chosen by the system.
class RunningStation : public RunningProgram {
public:
    explicit RunningStation(const QStringList& options = {}) : RunningProgram(GQTOOL, QStringList{"station"} + options)
    {
        const QString first = nextLine();
        EXPECT_TRUE(first.startsWith("listening on 127.0.0.1:")) << first.toStdString();
        endpoint = first.mid(QString("listening on ").size());
    }

    Outcome call(const QStringList& words) { return run(QStringList{"call", endpoint} + words); }
    Outcome callByUdp(const QStringList& words) { return run(QStringList{"call", "--udp", endpoint, "--"} + words); }

    // A call that gets no reply.
    Outcome callWithoutReply() { return run({"call", "--timeout", "300", endpoint, "systemState"}); }

    int port() const { return endpoint.split(':')[1].toInt(); }

    QString endpoint;
};
