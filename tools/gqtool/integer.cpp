#include "integer.h"

bool readInt(const QString& text, int least, int most, int& value)
{
    bool ok = false;
    value = text.toInt(&ok, text.contains("0x") ? 16 : 10); // leading zeros do not mean octal
    return ok && value >= least && value <= most;
}
