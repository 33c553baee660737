#pragma once

#include "gqtool/map/commandMap.h"
#include "shared/text.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <string>
#include <vector>

// What a decoder of frames needs besides their bytes, and what it is to decode. tests/golden/README.md lists the forms
// of payloads.
struct FrameSource {
    static constexpr int usualPayload = 4 << 20;  // bytes
    static constexpr int mostPayload = 128 << 20; // its hex text must fit a QString

    bool isUdp = false;
    bool isRequest = false;
    QString form; // of the payloads of commands that neither the library nor the map defines; empty if unknown
    const CommandMap* map = nullptr; // takes precedence over the ready-made commands
    // Size of the largest payload that is decoded. Clients accept more, but a larger length is most likely not that of
    // a frame, and memory for it is limited.
    int largestPayload = usualPayload;
    const MappedCommand* table = nullptr; // if set, only the records in its replies are decoded, a list per reply

    // Returns the command in the map, or null.
    const MappedCommand* mapped(unsigned char command) const { return map == nullptr ? nullptr : map->find(command); }
};

// A payload read by its form, independently of the library's parsers.
struct Payload {
    QString form;        // "ints"; of records "bytes:pointRealDatas"; empty if it is not known
    std::string content; // as JSON; empty if there is none
    long long used = 0;
    Text fault; // empty if the payload has its form
};

// Returns the form of the records in the bytes of a payload; null if it has none.
const Form* recordsOf(unsigned char command, const FrameSource& source);

Payload payloadOf(unsigned char command, const QByteArray& bytes, const FrameSource& source);

// Says why a payload does not have the form "int", "ints", "bytes" or "strings", with the sizes; empty if it has.
Text formFault(const QString& form, const QByteArray& bytes);

// Returns the result of the library's parser of that form for these bytes: 1 on success.
int parserResult(const QString& form, const QByteArray& bytes);

// The texts of a string list, up to the first one that overruns the payload.
struct PayloadTexts {
    QStringList texts;
    long long used = 4;  // bytes, with the count
    bool isWhole = true; // all texts are inside the payload
    bool isExact = true; // both length fields of every text agree
};

PayloadTexts readTexts(const QByteArray& payload, unsigned int count);

// Returns the bytes of a byte list, which must be complete.
QByteArray bytesOf(const QByteArray& payload);

std::vector<int> readIntegers(const char* first, unsigned int count);
