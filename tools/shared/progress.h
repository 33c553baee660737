#pragma once

#include <QString>

#include <chrono>

// The progress of a long operation, as a line on standard error that is overwritten. Prints only to a terminal.
class Progress {
public:
    Progress() = default;
    ~Progress(); // clears the line
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // Replaces the line, cut to the terminal's width. Call it for each step: within a tenth of a second of the last
    // change, calls do nothing.
    void show(const QString& text);

private:
    std::chrono::steady_clock::time_point lastShown;
};

// Clears the line until the next show(). Any thread may call it. The console calls it before printing.
void clearProgress();
