#pragma once

#include "jsonText.h"
#include "recordFields.h"

#include <QStringList>

// Records as JSON, with the fields in the order of the bytes. tests/golden/README.md describes it.

// --- Records to JSON ----------------------------------------------------------------------------------------------

std::string jsonOf(Content& content);

// Without the texts that the library's readers do not return, for comparisons.
std::string comparableJsonOf(Content& content);

// --- JSON to records ----------------------------------------------------------------------------------------------

// Fills `content`. Returns the errors, each with the path of its field, which begins with `path`; empty on success.
QStringList takeJson(const Json& value, Content& content, const QString& path = "value");
