#pragma once

#include "decodeOutput.h"
#include "gqtool/bytes/spool.h"
#include "gqtool/frames/payloadForm.h"

// Prints a JSON object, which gqtool encode accepts. Of large input, the fields and the result of the library's reader
// are left out unless they are asked for.
class DecodeJson : public DecodeOutput {
public:
    struct Members {
        bool fields;
        bool library;
    };

    // `source` is null for anything but frames.
    DecodeJson(const QString& form, const FrameSource* source, const ByteWindow& bytes, Members wanted);

    void row(const DecodedRow& row) override;
    void begin(const char* name, char bracket) override;
    void end(char bracket) override;
    void member(const char* name, const FieldValue& value) override;

    void flush() override;
    void rest(const QByteArray& bytes) override;
    bool finish(const Decoding& decoding) override;

private:
    void flushFull();
    void endRest();
    bool addFields();
    void addFaults(const FaultList& faults);

    const ByteWindow& input;
    Members wants;
    JsonBuilder json;
    int depth = 0; // of the value
    bool hasValue = false;
    QByteArray behind;        // the rest, until it is large
    bool isBehindHex = false; // large, and therefore printed as hex
    JsonBuilder field;
    Spool fields;
};
