#pragma once

#include "recordFields.h"

#include <vector>

// Takes bytes apart field by field, without the library's reader, and then asks that one too.

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
    std::vector<Fault> faults; // empty if the library's reader takes the bytes
    QString value;             // as JSON; with the fields ahead of a fault
    QByteArray behind;         // the record or list, or unread behind a fault
    int behindOffset = 0;

    bool isAsked = false; // whether the library's reader was
    int result = 0;       // its answer
    QString meaning;      // of the answer, or why it was not asked
    QString disagreement; // between the two; empty if there is none, and there never should be one
};

Decoded decode(const Form& form, const QByteArray& bytes);
