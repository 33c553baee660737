#pragma once

#include "rdbRecords.h"

#include <QByteArray>

#include <string>

// The plain forms of what the codecs do quickly, from the same sources.
namespace plainForms {

char* grow(QByteArray& data, long long count);

void copyText(const std::string& text, char* to);

QByteArray bytesOf(const gqdb::FloatRealData& record);
gqdb::FloatRealData recordOf(const QByteArray& bytes);

} // namespace plainForms
