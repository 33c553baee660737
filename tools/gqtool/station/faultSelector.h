#pragma once

#include <QString>

#include <climits>
#include <random>

// Chooses the greetings or replies that a line of a script applies to, by their numbers from 1:
//     3  3-7  every  every/10 (the 10th, 20th ...)  2% (by chance)
class FaultSelector {
public:
    // Reads a selector. Call it at most once. Its choices by chance depend only on `seed`. Returns false if the text is not
    // a selector.
    bool read(const QString& text, unsigned int seed);

    // Returns true if it chooses this number. Must be called for each number in order.
    bool chooses(int number);

private:
    int first = 1;
    int last = INT_MAX;
    int step = 1;
    double percent = 100;
    std::mt19937 generator;
};
