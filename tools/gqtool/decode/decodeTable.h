#pragma once

#include "decodeOutput.h"

// Prints a line per field: offset, bytes, name and value. Names are aligned as far as they are known when they are
// printed.
class DecodeTable : public DecodeOutput {
public:
    explicit DecodeTable(const ByteWindow& bytes) : input(bytes) {}

    void row(const DecodedRow& row) override;
    void begin(const char*, char) override {}
    void end(char) override {}
    void member(const char*, const FieldValue&) override {}

    void flush() override;
    void rest(const QByteArray&) override {}
    bool finish(const Decoding& decoding) override;

private:
    // Ends of the parts of a line in `text`.
    struct Line {
        size_t bytesEnd;
        size_t nameEnd;
        size_t nameWidth; // columns
        size_t valueEnd;
    };

    const ByteWindow& input;
    std::string text; // of the lines that are not printed yet
    std::vector<Line> lines;
    size_t nameWidth = 0;
};
