#pragma once

#include "recordFields.h"

#include <memory>
#include <vector>

// Decodes bytes field by field, without the library's reader, and then calls that one too for its result.

struct DecodedField {
    int offset = 0;   // -1 of a sample that was unpacked
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

    bool isAsked = false; // the library's reader was called
    int result = 0;       // what it returned
    QString meaning;      // of the result, or why it was not called
};

Decoded decode(const Form& form, const QByteArray& bytes);
