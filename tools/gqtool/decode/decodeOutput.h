#pragma once

#include "gqtool/records/decodeListener.h"
#include "gqtool/records/decoding.h"

// Prints a decoding while it runs.
class DecodeOutput : public DecodeListener {
public:
    // Prints what it has received so far.
    virtual void flush() = 0;

    // Receives the bytes after the fields, in pieces.
    virtual void rest(const QByteArray& bytes) = 0;

    // Ends the output, when the input has been read to its end. Returns false after it printed an error.
    virtual bool finish(const Decoding& decoding) = 0;
};
