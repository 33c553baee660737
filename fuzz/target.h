#pragma once

// A target tests one reader of foreign bytes. Two programs run it: gqFuzz with inputs of libFuzzer, and fuzzReplay with
// the seeds, in every test run. For any input a target requires:
//   - the result that follows from the record's layout, computed here independently of the library (layout.h)
//   - if reader and writer use the same form, the same bytes when the record is written again
//   - the same outcome whatever bytes follow the input and whatever elements the list had before
// Targets of gqtool's readers compare them with the library's, with a model, or with themselves when the input comes in
// pieces.
// The sanitizers check the rest. If a requirement fails, the program prints it and aborts.

#include "layout.h"

#include <QByteArray>

#include <algorithm>
#include <string>
#include <vector>

struct Reading {
    const char* buf;
    int size;
    bool hasNeighbours;        // other bytes follow these, and the list has elements already
    size_t elementsBefore = 0; // in the list, before it is read
    int result = 0;            // of the reader, or `tooMuch`
    QByteArray written = {};   // the record or list after reading, as its writer writes it
};

// In place of a result: the reader tried to allocate more than the limit, because it trusts counts and lengths.
const int tooMuch = 1 << 30;

struct Target {
    const char* name;
    void (*read)(Reading& reading);
    void (*check)(const Layout& layout, const Reading& reading); // not for gqtool's readers
    Layout layout;
    bool isOfTool = false; // a reader of gqtool: run once, since it copies its input and cannot read past it
};

// Returns a target for a reader of gqtool. Such a reader trusts no count, so a failed allocation is a failure. `read`
// makes all checks.
Target toolTarget(const char* name, void (*read)(Reading& reading));

extern const std::vector<Target> byte2ValTargets;
extern const std::vector<Target> byte2RdbDefinitionTargets;
extern const std::vector<Target> byte2RdbValueTargets;
extern const std::vector<Target> byte2RdbQueryTargets;
extern const std::vector<Target> byte2RdbObjectTargets;
extern const std::vector<Target> byte2RdbWaveTargets;
extern const std::vector<Target> byte2FepTargets;
extern const std::vector<Target> frameTargets;
extern const std::vector<Target> gqToolsTargets;
extern const std::vector<Target> hexReaderTargets;
extern const std::vector<Target> commandMapTargets;
extern const std::vector<Target> decodeTargets;
extern const std::vector<Target> documentEncoderTargets;
extern const std::vector<Target> packetPayloadTargets;
extern const std::vector<Target> peerTargets;
extern const std::vector<Target> stationFileTargets;

std::vector<Target> allTargets();

// Runs one input. `data` ends where its allocation ends, so that AddressSanitizer reports a read past the end.
void runTarget(const Target& target, const char* data, int size);

// Sets `reading.elementsBefore`, the number of elements that a list must have before its reader appends to it, and
// returns it. They have default values, which are written as the shortest record of the target's layout.
size_t setElementsBefore(Reading& reading);

// --- Reading ----------------------------------------------------------------------

// The type of record or list that a writer takes.
template <typename Record>
Record writtenBy(void (*writer)(const Record&, QByteArray&));

// Reads a record and writes it again.
template <auto reader, auto writer>
void readRecord(Reading& reading)
{
    decltype(writtenBy(writer)) record;
    reading.result = reader(reading.buf, reading.size, record);
    writer(record, reading.written);
}

// Reads a list, to which the reader appends, and writes it again.
template <auto reader, auto writer>
void readList(Reading& reading)
{
    decltype(writtenBy(writer)) list(setElementsBefore(reading));
    reading.result = reader(reading.buf, reading.size, list);
    writer(list, reading.written);
}

// Number of elements that the bytes can begin. A list that was resized for more is cut to it before it is written: the
// rest have default values, and writing them takes long.
size_t mostElements(const Layout& layout, const Reading& reading);

// As readList, for a reader that resizes the list to the count.
template <auto reader, auto writer, const Layout& layout>
void readResizedList(Reading& reading)
{
    decltype(writtenBy(writer)) list(setElementsBefore(reading));
    reading.result = reader(reading.buf, reading.size, list);
    list.resize(std::min(list.size(), mostElements(layout, reading)));
    writer(list, reading.written);
}

// --- Requirements ----------------------------------------------------------------------

[[noreturn]] void fail(const std::string& message);

void require(bool isMet, const char* requirement);

void requireResult(const Reading& reading, int expected);

// `reading.written` must be the first `count` bytes of the input.
void requireWrittenAgain(const Reading& reading, long long count);

// Returns true if the bytes begin with a count of more records than they can hold: the only valid reason for `tooMuch`.
bool countsTooMuch(const Layout& layout, const Reading& reading);
