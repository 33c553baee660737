#pragma once

#include "recordFields.h"

#include <QJsonValue>
#include <QStringList>

// Records as JSON, with the fields in the order of the bytes. tests/golden/README.md tells the shape.

// --- Records to JSON ----------------------------------------------------------------------------------------------

// What a content holds.
QString jsonOf(Content& content);

// The same without what the library's readers do not give back, for comparisons.
QString comparableJsonOf(Content& content);

// --- JSON to records ----------------------------------------------------------------------------------------------

// Fills `content`. What is wrong, each with the path of its field; empty if nothing is.
QStringList takeJson(const QJsonValue& value, Content& content);
