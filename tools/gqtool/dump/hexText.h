#pragma once

#include "hexDigits.h"

// Reads hex text without offsets: two digits per byte, in groups of any length. Skips white space, the separators
// ':', '-' and ',', 0x before digits, comments (# and // to the end of the line, /* to */), quotes, braces and
// declarations of C arrays. A byte can also be an escape, \x68; then all bytes must be escapes.
class HexText {
public:
    // Appends the bytes of groups that this piece completes. Returns false after an error.
    bool feed(const char* piece, int size, QByteArray& bytes);

    // Ends the text.
    bool end(QByteArray& bytes);

    // Returns true if the text ends within what may be the declaration of an array.
    bool isInDeclaration() const { return state == declaration; }

    const HexError& error() const { return firstError; }

private:
    enum State {
        between,
        group,
        lineComment,
        slash,
        blockComment,
        starInComment,
        backslash,
        declaration, // of an array or its size, up to =
        initialiser, // after =
        arraySize,   // an integer, up to ;
    };
    enum Prefix { none, zeroX, escape };

    bool take(char character, QByteArray& bytes);
    bool takeBetween(char character);
    bool beginGroup(char character, Prefix groupPrefix);
    bool takeInGroup(char character, QByteArray& bytes);
    bool endGroup(QByteArray& bytes);
    bool endSmallGroup(int least);
    bool takeAfterBackslash(char character);
    bool takeDeclaration(char character);
    bool beginArray(char character);
    bool takeArraySize(char character);
    bool openQuote(char character);
    bool fail(const QString& text) { return fail(line, column, text); }
    bool fail(qint64 errorLine, qint64 errorColumn, const QString& text);
    QString groupText() const;

    State state = between;
    qint64 line = 1;
    qint64 column = 0; // of the character that is taken
    HexError firstError;

    // The group
    QByteArray digits; // not yet converted
    QByteArray firstDigits;
    qint64 groupSize = 0; // number of digits
    qint64 groupColumn = 0;
    Prefix prefix = none;
    bool hasGroups = false;
    bool hasEscapes = false;

    // C
    char quote = 0;          // that is open
    int depth = 0;           // of braces
    qint64 openLine = 0;     // of the quote or the outermost brace
    bool isStatement = true; // a declaration may begin
    bool isDeclared = false; // the braces belong to a declaration
    QByteArray declared;
    HexError notDeclared; // the error if what looks like a declaration is none
    qint64 arrayBytes = 0;
};
