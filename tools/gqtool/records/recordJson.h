#pragma once

#include "jsonText.h"
#include "recordFields.h"

#include <QStringList>

// Reads a record from JSON, as tests/golden/README.md describes it, into `content`. Returns the errors, each with the
// path of its field, which begins with `path`; empty on success.
QStringList takeJson(const Json& value, Content& content, const QString& path = "value");
