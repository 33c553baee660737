#pragma once

#include "jsonText.h"

// Bytes of the input and what they mean.
struct DecodedRow {
    long long offset;       // -1 for a sample that was unpacked
    std::string_view bytes; // of the field
    std::string_view path;  // of the record: "[2]"
    const char* name;       // of the field: "text1"; null if the path is the whole name
    FieldValue value;

    // "[2].text1"
    void appendName(std::string& text) const
    {
        text += path;
        if (name == nullptr)
            return;
        if (!path.empty())
            text += '.';
        text += name;
    }
};

// Receives what a decoding finds, in the order of the bytes: each piece of the input as a row, and the same as a
// document of objects, arrays and members. Views are valid during the call only.
class DecodeListener {
public:
    DecodeListener() = default;
    virtual ~DecodeListener() = default;
    DecodeListener(const DecodeListener&) = delete;
    DecodeListener& operator=(const DecodeListener&) = delete;

    virtual void row(const DecodedRow& row) = 0;

    // Names are null for the items of an array and for the whole.
    virtual void begin(const char* name, char bracket) = 0;
    virtual void end(char bracket) = 0;
    virtual void member(const char* name, const FieldValue& value) = 0;
};
