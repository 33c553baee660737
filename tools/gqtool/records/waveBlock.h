#pragma once

#include <QByteArray>
#include <QString>

// What a stored wave has after its head: marks and the sample block. Found out without the library's reader, to say why
// that one refuses a wave.

// Returns why `size` bytes after the head cannot hold the marks and the least block that goes with them; empty if they
// can.
QString markFault(unsigned int markCount, long long size);

struct UnpackedBlock {
    QByteArray bytes; // up to the fault, if there is one
    int used = 0;     // bytes of the zlib stream
    QString fault;    // empty if the stream is whole
};

// Inflates the zlib stream at the start of `packed`.
UnpackedBlock unpackBlock(const QByteArray& packed);
