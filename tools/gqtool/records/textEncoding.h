#pragma once

#include "jsonText.h"
#include "shared/text.h"

#include <QStringList>

// The encoding of the texts in database records, which the library passes on byte for byte. One encoding applies to
// the whole program: UTF-8 unless set. Texts of front-end records are always UTF-8, as the library converts them.

// Returns false if Qt does not know an encoding of that name.
bool setTextEncoding(const QString& name);

// Returns the names of all encodings that Qt knows.
QStringList textEncodings();

// Returns a hint at --encoding if a RecordText was not UTF-8 and no other encoding is set; else an empty text.
Text encodingHint();

// A text of a record as a value: a text, or {"hex": ...} if the bytes are not text in the encoding. Valid as long as
// the bytes.
class RecordText {
public:
    explicit RecordText(std::string_view bytes);

    FieldValue value() const;

private:
    std::string_view bytes;
    std::string utf8;
    std::string hexJson;
};

// Read the bytes of a text, in UTF-8 or in the encoding of records. Return what is wrong with the value; empty on success.
QString takeUtf8(const Json& value, QByteArray& bytes);
QString takeRecordText(const Json& value, QByteArray& bytes);
