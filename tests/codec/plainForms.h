#pragma once

#include "rdbRecords.h"

#include <QByteArray>

#include <string>

// The plain forms of what the codecs do quickly, from the same sources.
namespace plainForms {

char* growByResize(QByteArray& data, long long count);

void copyText(const std::string& text, char* to);

QByteArray bytesOf(const gqdb::FloatRealData& record);
gqdb::FloatRealData recordOf(const QByteArray& bytes);

void quantise(const float* values, size_t count, float upper, float lower, int* raw);
void quantiseToBytes(const float* values, size_t count, float upper, float lower, char* bytes);
void unquantise(const int* raw, size_t count, float upper, float lower, float* values);
void unquantiseBytes(const char* bytes, size_t count, float upper, float lower, float* values);
void scaleRaw(const int* raw, size_t count, double scale, double offset, float* values);
void scaleBytes(const char* bytes, size_t count, double scale, double offset, float* values);

} // namespace plainForms
