#pragma once

#include <QString>

// Reads an integer from `least` to `most`; 0x marks a hexadecimal one.
bool readInt(const QString& text, int least, int most, int& value);
