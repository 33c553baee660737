#include "hexText.h"
#include "shared/text.h"

#include <cstring>

static const int keptDigits = 64;          // of a group, until it is known to be a group and not a word
static const int longestDeclaration = 256; // characters
static const int shownDigits = 20;         // in a message

static bool isWordCharacter(char character)
{
    return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'z') ||
           (character >= 'A' && character <= 'Z') || character == '_';
}

static bool isLetter(char character)
{
    return isWordCharacter(character) && (character < '0' || character > '9');
}

static bool isSeparator(char character)
{
    return character == ':' || character == '-' || character == ',';
}

static bool isQuote(char character)
{
    return character == '"' || character == '\'';
}

bool HexText::fail(qint64 errorLine, qint64 errorColumn, const QString& text)
{
    firstError = {errorLine, errorColumn, text};
    return false;
}

bool HexText::feed(const char* piece, int size, QByteArray& bytes)
{
    for (int i = 0; i < size && !firstError.isSet(); ++i) {
        ++column;
        if (take(piece[i], bytes) && piece[i] == '\n') {
            ++line;
            column = 0;
        }
    }
    return !firstError.isSet();
}

bool HexText::end(QByteArray& bytes)
{
    ++column;
    if (firstError.isSet())
        return false;
    if (state == group && !endGroup(bytes))
        return false;
    if (state == declaration || state == initialiser || state == arraySize) {
        firstError = notDeclared;
        return false;
    }
    if (state == slash)
        return fail(line, column - 1, badDigit('/'));
    if (state == blockComment || state == starInComment)
        return fail(openLine, 0, Text::tr("/* must be closed by */"));
    if (quote != 0)
        return fail(openLine, 0, Text::tr("%1 must be closed").arg(quote));
    if (depth > 0)
        return fail(openLine, 0, Text::tr("{ must be closed by }"));
    return true;
}

bool HexText::take(char character, QByteArray& bytes)
{
    switch (state) {
    case between:
        return takeBetween(character);
    case group:
        return takeInGroup(character, bytes);
    case lineComment:
        state = character == '\n' ? between : lineComment;
        return true;
    case slash:
        if (character != '/' && character != '*')
            return fail(line, column - 1, badDigit('/'));
        state = character == '/' ? lineComment : blockComment;
        openLine = character == '*' && depth == 0 ? line : openLine;
        return true;
    case blockComment:
        state = character == '*' ? starInComment : blockComment;
        return true;
    case starInComment:
        state = character == '/' ? between : character == '*' ? starInComment : blockComment;
        return true;
    case backslash:
        return takeAfterBackslash(character);
    case declaration:
        return takeDeclaration(character);
    case initialiser:
        return beginArray(character);
    case arraySize:
        return takeArraySize(character);
    }
    return true;
}

bool HexText::takeBetween(char character)
{
    if (quote != 0 && character == quote) {
        quote = 0;
        return true;
    }
    if (digitValue(character) >= 0)
        return beginGroup(character, none);
    if (character == '\\') {
        state = backslash;
        return true;
    }
    const bool isGap = isBlank(character) || character == '\n' || isSeparator(character);
    if (quote != 0)
        return (isGap && !hasEscapes) || fail(badDigit(character));
    if (isGap)
        return true;
    if (isQuote(character))
        return openQuote(character);
    switch (character) {
    case '#':
        state = lineComment;
        return true;
    case '/':
        state = slash;
        return true;
    case ';':
        isStatement = depth == 0;
        return depth == 0 || fail(Text::tr("';' must come after the closing }"));
    case '{':
        openLine = depth == 0 ? line : openLine;
        ++depth;
        return true;
    case '}':
        if (depth == 0)
            return fail(Text::tr("} closes nothing"));
        --depth;
        isStatement = depth == 0;
        isDeclared = isDeclared && depth > 0;
        return true;
    default:
        break;
    }
    if (isLetter(character) && isStatement && depth == 0) {
        notDeclared = {line, column, badDigit(character)};
        declared.clear();
        state = declaration;
        return takeDeclaration(character);
    }
    return fail(badDigit(character));
}

bool HexText::openQuote(char character)
{
    quote = character;
    openLine = depth == 0 ? line : openLine;
    state = between;
    return true;
}

// --- Groups of digits ---------------------------------------------------------------------------------------------

bool HexText::beginGroup(char character, Prefix groupPrefix)
{
    state = group;
    prefix = groupPrefix;
    digits.clear();
    firstDigits.clear();
    groupSize = 0;
    groupColumn = column;
    if (groupPrefix == escape) {
        --groupColumn; // the backslash
        return true;
    }
    digits.append(character);
    groupSize = 1;
    return true;
}

QString HexText::groupText() const
{
    const QByteArray shown = prefix == zeroX ? "0x" : prefix == escape ? "\\x" : "";
    return (shown + (groupSize > keptDigits ? firstDigits : digits)).left(shownDigits);
}

bool HexText::takeInGroup(char character, QByteArray& bytes)
{
    if (digitValue(character) >= 0) {
        digits.append(character);
        ++groupSize;
        if (digits.size() > keptDigits) { // 65 digits, or an even number more of a long group
            firstDigits = groupSize <= keptDigits + 1 ? digits.left(shownDigits) : firstDigits;
            appendDigits(digits.constData(), keptDigits, bytes);
            arrayBytes += keptDigits / 2;
            digits.remove(0, keptDigits);
        }
        return true;
    }
    if (prefix == none && groupSize == 1 && digits[0] == '0' && (character == 'x' || character == 'X')) {
        prefix = zeroX;
        digits.clear();
        groupSize = 0;
        return true;
    }
    const bool isShort = prefix == none && groupSize <= keptDigits;
    if (isShort && quote == 0 && isQuote(character) && digits == "b") // b'...' of Python
        return openQuote(character);
    if (isShort && isWordCharacter(character) && isLetter(digits[0]) && isStatement && depth == 0 && quote == 0) {
        notDeclared = {line, column, badDigit(character)};
        declared = digits;
        state = declaration;
        return takeDeclaration(character);
    }
    const bool endsGroup =
        isBlank(character) || character == '\n' || isSeparator(character) || character == '\\' ||
        (quote != 0 ? character == quote : std::strchr("#/;{}\"'", character) != nullptr && character != 0);
    if (!endsGroup)
        return fail(badDigit(character));
    return endGroup(bytes) && takeBetween(character);
}

// Ends a group that is one byte: an item of an array, or an escape.
bool HexText::endSmallGroup(int least)
{
    if (groupSize < least || groupSize > 2)
        return fail(
            line, groupColumn,
            (least == 2 ? Text::tr("'%1' must have 2 hex digits") : Text::tr("'%1' must have 1 or 2 hex digits"))
                .arg(groupText()));
    if (groupSize == 1)
        digits.prepend('0');
    return true;
}

bool HexText::endGroup(QByteArray& bytes)
{
    state = between;
    isStatement = false;
    if (hasGroups && hasEscapes != (prefix == escape))
        return fail(line, groupColumn,
                    (hasEscapes ? Text::tr("'%1' must begin with \\x, as the bytes before it")
                                : Text::tr("'%1' must not begin with \\x, as the bytes before it"))
                        .arg(groupText()));
    hasGroups = true;
    hasEscapes = prefix == escape;
    if (depth > 0 && isDeclared && prefix == none && quote == 0)
        return fail(line, groupColumn, Text::tr("'%1' must begin with 0x in an array").arg(groupText()));
    if (prefix == escape && !endSmallGroup(2))
        return false;
    if (prefix == zeroX && depth > 0 && !endSmallGroup(1))
        return false;
    if (groupSize == 0 || digits.size() % 2 != 0)
        return fail(line, groupColumn,
                    (groupSize == 0 ? Text::tr("'%1' must have hex digits")
                                    : Text::tr("'%1' must have an even number of hex digits"))
                        .arg(groupText()));
    appendDigits(digits.constData(), digits.size(), bytes);
    arrayBytes += digits.size() / 2;
    return true;
}

bool HexText::takeAfterBackslash(char character)
{
    if (character == 'x')
        return beginGroup(character, escape);
    if (character == '\n') { // continues a line
        state = between;
        return true;
    }
    return isBlank(character) || fail(line, column - 1, badDigit('\\'));
}

// --- C ------------------------------------------------------------------------------------------------------------

bool HexText::takeDeclaration(char character)
{
    if (character == '=') {
        state = initialiser;
        return true;
    }
    if (character == '{')
        return beginArray(character);
    const bool belongs = isWordCharacter(character) || isBlank(character) ||
                         (character != 0 && std::strchr("\n:<>,[]*&", character) != nullptr);
    if (!belongs || declared.size() == longestDeclaration) {
        firstError = notDeclared;
        return false;
    }
    declared.append(character);
    return true;
}

bool HexText::beginArray(char character)
{
    if (isBlank(character) || character == '\n')
        return true;
    if (isQuote(character)) {
        arrayBytes = 0;
        return openQuote(character);
    }
    if (character == '{') {
        arrayBytes = 0;
        isDeclared = true;
        state = between;
        return takeBetween(character);
    }
    digits.clear();
    state = arraySize;
    return takeArraySize(character);
}

// xxd -i writes the number of bytes to NAME_len.
bool HexText::takeArraySize(char character)
{
    if (isWordCharacter(character) && digits.size() < keptDigits) {
        digits.append(character);
        return true;
    }
    bool isNumber = false;
    const qint64 size = digits.toLongLong(&isNumber, 0);
    if (character != ';' || !isNumber) {
        firstError = notDeclared;
        return false;
    }
    const QByteArray name = declared.trimmed();
    if (name.endsWith("_len") && size != arrayBytes)
        return fail(line, 0, Text::tr("the array has %1, but its size is %2").arg(bytesText(arrayBytes)).arg(size));
    state = between;
    return true;
}
