#pragma once

#include <QByteArray>
#include <QJsonDocument>

// Returns JSON text without line breaks. What QJsonDocument leaves as it is but a terminal obeys becomes an escape:
// the control characters U+007F to U+009F, and direction controls.
QByteArray compactJson(const QJsonDocument& document);
