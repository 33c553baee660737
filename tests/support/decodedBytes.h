#pragma once

#include "gqtool/frames/frameCodec.h"
#include "gqtool/records/recordDecoding.h"

#include <climits>

// What a decoding passes on, collected.

struct DecodedField {
    long long offset;
    QByteArray bytes;
    std::string name;
    std::string value; // as JSON

    bool operator==(const DecodedField& other) const
    {
        return offset == other.offset && bytes == other.bytes && name == other.name && value == other.value;
    }
};

struct Decoded {
    std::vector<DecodedField> fields;
    std::string value; // as JSON
    std::vector<Fault> faults;
    long long moreFaults;
    QByteArray rest;
    long long restOffset;
    bool readerCalled;
    int result;
    QString meaning;
};

class DecodedCollector : public DecodeListener {
public:
    void row(const DecodedRow& row) override
    {
        DecodedField field = {row.offset, QByteArray(row.bytes.data(), static_cast<int>(row.bytes.size())), "", ""};
        row.appendName(field.name);
        appendJson(field.value, row.value);
        fields.push_back(field);
    }
    void begin(const char* name, char bracket) override { json.begin(name, bracket); }
    void end(char bracket) override { json.end(bracket); }
    void member(const char* name, const FieldValue& value) override { json.add(name, value); }

    Decoded collected(ByteWindow& bytes, const Decoding& decoding)
    {
        bytes.holds(LLONG_MAX); // to its end
        return {fields,
                json.text,
                decoding.faults.listed(),
                decoding.faults.others(),
                QByteArray(bytes.at(), bytes.left()),
                decoding.restOffset,
                decoding.readerCalled,
                decoding.result,
                decoding.meaning};
    }

private:
    std::vector<DecodedField> fields;
    JsonBuilder json;
};

// Decodes bytes that arrive in pieces of `pieceSize`.
inline Decoded decodePieces(const Form& form, const QByteArray& bytes, int pieceSize, size_t mostFaults = 1000)
{
    MemorySource source(bytes, pieceSize);
    ByteWindow window(source);
    DecodedCollector collector;
    Decoding decoding = decode(form, window, collector, mostFaults);
    Decoded decoded = collector.collected(window, decoding);
    callReader(form, window, decoding);
    decoded.readerCalled = decoding.readerCalled;
    decoded.result = decoding.result;
    decoded.meaning = decoding.meaning;
    return decoded;
}

inline Decoded decodeFramePieces(const QByteArray& bytes, const FrameSource& frames, int pieceSize,
                                 size_t mostFaults = 1000)
{
    MemorySource source(bytes, pieceSize);
    ByteWindow window(source);
    DecodedCollector collector;
    const Decoding decoding = decodeFrames(window, frames, collector, mostFaults);
    return collector.collected(window, decoding);
}

inline Decoded decodeBytes(const Form& form, const QByteArray& bytes)
{
    return decodePieces(form, bytes, INT_MAX);
}
