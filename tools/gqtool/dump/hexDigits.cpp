#include "hexDigits.h"

QString HexError::message() const
{
    const QString place = QString("line %1").arg(line);
    return (column > 0 ? place + QString(", column %1").arg(column) : place) + ": " + text;
}

int digitValue(char character)
{
    if (character >= '0' && character <= '9')
        return character - '0';
    if (character >= 'a' && character <= 'f')
        return character - 'a' + 10;
    return character >= 'A' && character <= 'F' ? character - 'A' + 10 : -1;
}

bool isBlank(char character)
{
    return character == ' ' || (character >= '\t' && character <= '\r' && character != '\n');
}

QString badDigit(char character)
{
    const auto code = static_cast<unsigned char>(character);
    if (code >= ' ' && code < 0x7f)
        return QString("'%1' is not a hex digit").arg(QChar(code));
    return QString("byte 0x%1 is not a hex digit; use --raw for raw bytes").arg(code, 2, 16, QChar('0'));
}

void appendDigits(const char* digits, int count, QByteArray& bytes)
{
    for (int i = 0; i < count; i += 2)
        bytes.append(static_cast<char>(digitValue(digits[i]) * 16 + digitValue(digits[i + 1])));
}
