#pragma once

#include <QByteArray>
#include <QJsonDocument>

// Returns JSON text without line breaks. The control characters that QJsonDocument leaves as they are, U+007F to U+009F,
// become escapes: a terminal would obey them.
QByteArray compactJson(const QJsonDocument& document);
