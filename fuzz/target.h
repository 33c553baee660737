#pragma once

// A target is one reader of foreign bytes under two programs: gqFuzz, which libFuzzer feeds, and fuzzReplay, which
// feeds it the seeds in every test run. Whatever the bytes are, a target demands:
//   - the result that the layout of the record gives, counted here apart from the library (layout.h)
//   - where reader and writer fit each other, the same bytes when the record is written again
//   - the same outcome whatever lies behind the bytes and ahead of a list's elements
// and the sanitizers demand the rest. A demand that fails ends the program with a line that tells it.

#include "layout.h"

#include <QByteArray>

#include <string>
#include <vector>

struct Reading {
    const char* buf;
    int size;
    bool isAmid;          // other bytes stand behind these, and elements ahead
    size_t ahead = 0;     // elements that the list held before
    int result = 0;       // of the reader, or `tooMuch`
    QByteArray left = {}; // what record or list hold afterwards, as bytes
};

// In place of a result: the reader has asked for more memory than there is, as counts and lengths are believed.
const int tooMuch = 1 << 30;

struct Target {
    const char* name;
    void (*read)(Reading& reading);
    void (*check)(const Layout& layout, const Reading& reading);
    Layout layout;
};

extern const std::vector<Target> byte2ValTargets;
extern const std::vector<Target> byte2RdbDefinitionTargets;
extern const std::vector<Target> byte2RdbValueTargets;
extern const std::vector<Target> byte2RdbQueryTargets;
extern const std::vector<Target> byte2RdbObjectTargets;
extern const std::vector<Target> byte2RdbWaveTargets;
extern const std::vector<Target> byte2FepTargets;
extern const std::vector<Target> frameTargets;
extern const std::vector<Target> gqToolsTargets;

std::vector<Target> allTargets();

// One input. `data` ends where its memory ends, so that AddressSanitizer sees a read behind it.
void runTarget(const Target& target, const char* data, int size);

// How many elements a list is to hold before it is read, if its reader appends. They are defaults, and are written as
// the shortest record of the target's layout.
size_t elementsAhead(Reading& reading);

// --- Demands ----------------------------------------------------------------------

[[noreturn]] void fail(const std::string& message);

void require(bool isMet, const char* demand);

void requireResult(const Reading& reading, int expected);

// The first `count` bytes stand in `left` again.
void requireWrittenAgain(const Reading& reading, long long count);

// Whether the bytes begin with a count of more records than they can hold: the one good reason for `tooMuch`.
bool countsTooMuch(const Layout& layout, const Reading& reading);

// The elements that the bytes can begin. A list that was resized for more is cut there before it is written: what
// stands behind is all the same, and takes long.
size_t mostElements(const Layout& layout, const Reading& reading);
