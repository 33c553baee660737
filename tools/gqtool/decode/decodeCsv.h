#pragma once

#include "decodeOutput.h"
#include "gqtool/bytes/outputFile.h"
#include "gqtool/records/recordFields.h"

// Writes a list as a table: field names in the first line, then a line per item, quoted as in RFC 4180.
class DecodeCsv : public DecodeOutput {
public:
    DecodeCsv(const Form& list, const ByteWindow& bytes, QString inputName, OutputFile& output);

    void row(const DecodedRow&) override {}
    void begin(const char* name, char bracket) override;
    void end(char bracket) override;
    void member(const char* name, const FieldValue& value) override;

    void flush() override;
    void rest(const QByteArray&) override {}
    bool finish(const Decoding& decoding) override;

private:
    void separate();

    const ByteWindow& input;
    const QString inputName;
    OutputFile& file;
    std::string text; // complete lines, and the one of the item that is incomplete
    size_t linesEnd = 0;
    size_t width = 0;   // columns
    size_t columns = 0; // of the incomplete line
    int depth = 0;
};
