#pragma once

#include "support/plainSockets.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include <sys/resource.h>
#include <unistd.h>

// What a process uses.

inline int descriptorsOf(pid_t process)
{
    return static_cast<int>(
        QDir(QString("/proc/%1/fd").arg(process)).entryList(QDir::NoDotAndDotDot | QDir::AllEntries).size());
}

// A line of /proc/PID/status in kB, such as VmRSS, the resident memory, or VmHWM, its peak.
inline int memoryOf(pid_t process, const QByteArray& name = "VmRSS")
{
    QFile file(QString("/proc/%1/status").arg(process));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (line.startsWith(name + ':'))
            return line.mid(name.size() + 1).replace("kB", "").trimmed().toInt();
    }
    return 0;
}

// The processor time that it has used.
inline int processorMs(pid_t process)
{
    QFile file(QString("/proc/%1/stat").arg(process));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    const QList<QByteArray> fields = file.readAll().split(')').last().simplified().split(' '); // from the third on
    return int((fields.value(11).toLong() + fields.value(12).toLong()) * 1000 / ::sysconf(_SC_CLK_TCK));
}

inline void limitDescriptors(pid_t process, rlim_t most)
{
    const rlimit limit = {most, most};
    EXPECT_EQ(prlimit(process, RLIMIT_NOFILE, &limit, nullptr), 0);
}

// Looks again until the condition is true; false if it is not within the time.
template <typename Condition>
bool comesTrue(Condition condition)
{
    const Clock::time_point start = Clock::now();
    while (!condition()) {
        if (msSince(start) > limitMs)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}
