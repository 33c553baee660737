#pragma once

#include "recordFields.h"

#include <QJsonValue>
#include <QStringList>

// Records as JSON, with the fields in the order of the bytes. tests/golden/README.md describes it.

// --- Records to JSON ----------------------------------------------------------------------------------------------

QString jsonOf(Content& content);

// Without the texts that the library's readers do not return, for comparisons.
QString comparableJsonOf(Content& content);

// --- JSON to records ----------------------------------------------------------------------------------------------

// Fills `content`. Returns the errors, each with the path of its field; empty on success.
QStringList takeJson(const QJsonValue& value, Content& content);
