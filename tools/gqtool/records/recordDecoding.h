#pragma once

#include "recordFields.h"

#include <memory>
#include <vector>

// Decodes bytes field by field, independently of the library's reader, then calls that reader for its result.

struct DecodedField {
    int offset = 0;   // -1 for a sample that was unpacked
    QByteArray bytes; // of the field
    QString name;     // "[2].text1"
    QString value;    // as JSON
};

struct Fault {
    int offset = 0;
    QString text;
};

struct Decoded {
    std::vector<DecodedField> fields;
    std::vector<Fault> faults;        // empty if the library's reader accepts the bytes
    std::unique_ptr<Content> content; // with the fields before a fault; null for frames
    QString value;                    // the content as JSON
    QByteArray rest;                  // after the record or list; after a fault, what was not read
    int restOffset = 0;

    bool readerCalled = false;
    int result = 0;  // of the library's reader
    QString meaning; // of the result, or why the reader was not called
};

Decoded decode(const Form& form, const QByteArray& bytes);
