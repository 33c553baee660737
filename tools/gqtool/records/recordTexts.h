#pragma once

#include "recordFields.h"
#include "shared/text.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <string>

// Records in words: "pointId 1000, value 1.5".
struct RecordTexts {
    QStringList texts; // of a list, one for each record; of a single record, one for each field
    bool isList = false;
    std::string json; // the same as a JSON array or object
    int rest = 0;     // bytes after the records
    Text fault;       // the first one, with its offset; empty if there is none
};

// Without `wantsTexts`, `texts` stays empty, and large records take less memory.
RecordTexts recordTexts(const Form& form, const QByteArray& bytes, bool wantsTexts = true);
