#pragma once

#include <QString>

#include <chrono>

// How far long work has come, as one line on standard error that is written over and over; nothing at all unless that
// is a terminal.
class Progress {
public:
    Progress() = default;
    ~Progress(); // takes the line away
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // Shows a text in place of the last one, cut to the terminal's width. Call it for each step: what comes within a
    // tenth of a second of the last text shown is skipped.
    void show(const QString& text);

private:
    std::chrono::steady_clock::time_point lastShown;
};

// Takes the line away until the next text, from any thread. The console does so ahead of its own lines.
void clearProgress();
