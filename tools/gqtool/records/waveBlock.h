#pragma once
#include "shared/text.h"

#include <QByteArray>
#include <QString>

// Marks and sample block of a stored wave, examined without the library's reader, to explain why that reader refuses a
// wave.

// Returns why `size` bytes after the head cannot hold the marks and the least block that goes with them; empty if they
// can.
Text markFault(unsigned int markCount, long long size);

struct UnpackedBlock {
    QByteArray bytes; // up to the fault, if there is one
    int used = 0;     // bytes of the zlib stream
    Text fault;       // empty if the stream is whole
};

// Inflates the zlib stream at the start of `packed`.
UnpackedBlock unpackBlock(const QByteArray& packed);
