#include "hexDigits.h"
#include "shared/text.h"

QString HexError::message() const
{
    return column > 0 ? Text::tr("line %1, column %2: %3").arg(line).arg(column).arg(text)
                      : Text::tr("line %1: %2").arg(line).arg(text);
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
        return Text::tr("'%1' is not a hex digit").arg(QChar(code));
    return Text::tr("byte 0x%1 is not a hex digit").arg(code, 2, 16, QChar('0'));
}

void appendDigits(const char* digits, int count, QByteArray& bytes)
{
    for (int i = 0; i < count; i += 2)
        bytes.append(static_cast<char>(digitValue(digits[i]) * 16 + digitValue(digits[i + 1])));
}
