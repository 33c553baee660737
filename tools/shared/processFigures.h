#pragma once

#include <QString>

#include <sys/types.h>

// The resident memory of a process in kB; 0 if it is gone.
int residentMemory(pid_t process);

// The number of its open descriptors.
int openDescriptorsOf(pid_t process);

// Memory in kB: once all kinds of replies have been received, and at the end; 0 before that.
struct Memory {
    int warm = 0;
    int last = 0;

    // The heaps of many threads settle slowly. A leak per request would exceed this by far.
    bool hasGrown() const { return warm > 0 && last > warm + warm / 10 + 1024; }

    QString verdict() const { return warm == 0 ? "  TOO SHORT TO COMPARE" : hasGrown() ? "  GROWN" : ""; }
};

void printMemory(const char* side, const Memory& memory);
