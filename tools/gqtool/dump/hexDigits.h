#pragma once

#include <QByteArray>
#include <QString>

// What the readers of hex text share.

// The first error of a text. `column` is 0 if the whole line is wrong.
struct HexError {
    qint64 line = 0; // from 1; 0 if there is no error
    qint64 column = 0;
    QString text;

    bool isSet() const { return line > 0; }
    QString message() const; // "line 3, column 5: 'g' is not a hex digit"
};

// Returns -1 if the character is not a hex digit.
int digitValue(char character);

bool isBlank(char character); // and not the end of a line

// Returns the error text for a character that is not a hex digit.
QString badDigit(char character);

// Appends the bytes of an even number of hex digits.
void appendDigits(const char* digits, int count, QByteArray& bytes);
