#pragma once

#include "jsonText.h"

#include "shared/text.h"

// Bytes of the input and what they mean.
class DecodedRow {
public:
    long long offset;       // -1 for a sample that was unpacked
    std::string_view bytes; // of the field
    std::string_view path;  // of the record: "[2]"
    const char* name;       // of the field: "text1"; null if the path is the whole name
    FieldValue value;
    const Text* remark = nullptr; // for people, instead of the value

    // "[2].text1"
    void appendName(std::string& text) const { appendName(text, name); }

    // The same for people: "(zlib stream)" in their language.
    void appendLabel(std::string& text) const
    {
        if (name != nullptr && *name == '(')
            appendName(text, Text::tr(name).toStdString().c_str());
        else
            appendName(text);
    }

private:
    void appendName(std::string& text, const char* last) const
    {
        text += path;
        if (last == nullptr)
            return;
        if (!path.empty())
            text += '.';
        text += last;
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
