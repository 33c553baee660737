#include "processFigures.h"

#include "console.h"

#include <QDir>
#include <QFile>

int residentMemory(pid_t process)
{
    QFile file(QString("/proc/%1/status").arg(process));
    file.open(QIODevice::ReadOnly);
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).replace("kB", "").trimmed().toInt();
    }
    return 0;
}

int openDescriptorsOf(pid_t process)
{
    const QDir folder(QString("/proc/%1/fd").arg(process));
    return static_cast<int>(folder.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size());
}

void printMemory(const char* side, const Memory& memory)
{
    printLine(
        QString("%1 %2 kB %3 kB%4").arg(side, -10).arg(memory.warm, 13).arg(memory.last, 10).arg(memory.verdict()));
}
