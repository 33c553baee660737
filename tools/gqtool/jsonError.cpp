#include "jsonError.h"

#include <QRegularExpression>

// The parser's words, to which %3 to %6 of the texts below refer.
[[maybe_unused]] static const char* const parserWords[] = {
    // what is being parsed
    QT_TRANSLATE_NOOP("Text", "value"),
    QT_TRANSLATE_NOOP("Text", "array"),
    QT_TRANSLATE_NOOP("Text", "object"),
    QT_TRANSLATE_NOOP("Text", "object key"),
    QT_TRANSLATE_NOOP("Text", "object separator"),
    // what was found or expected; brackets, ':' and ',' are left as they are
    QT_TRANSLATE_NOOP("Text", "true literal"),
    QT_TRANSLATE_NOOP("Text", "false literal"),
    QT_TRANSLATE_NOOP("Text", "null literal"),
    QT_TRANSLATE_NOOP("Text", "string literal"),
    QT_TRANSLATE_NOOP("Text", "number literal"),
    QT_TRANSLATE_NOOP("Text", "'[', '{', or a literal"),
    QT_TRANSLATE_NOOP("Text", "end of input"),
    // what is wrong with a token
    QT_TRANSLATE_NOOP("Text", "invalid BOM; must be 0xEF 0xBB 0xBF if given"),
    QT_TRANSLATE_NOOP("Text", "invalid literal"),
    QT_TRANSLATE_NOOP("Text", "invalid number; expected digit after '-'"),
    QT_TRANSLATE_NOOP("Text", "invalid number; expected digit after '.'"),
    QT_TRANSLATE_NOOP("Text", "invalid number; expected '+', '-', or digit after exponent"),
    QT_TRANSLATE_NOOP("Text", "invalid number; expected digit after exponent sign"),
    QT_TRANSLATE_NOOP("Text", "invalid string: '\\u' must be followed by 4 hex digits"),
    QT_TRANSLATE_NOOP("Text", "invalid string: forbidden character after backslash"),
    QT_TRANSLATE_NOOP("Text", "invalid string: ill-formed UTF-8 byte"),
    QT_TRANSLATE_NOOP("Text", "invalid string: missing closing quote"),
    QT_TRANSLATE_NOOP("Text", "invalid string: surrogate U+D800..U+DBFF must be followed by U+DC00..U+DFFF"),
    QT_TRANSLATE_NOOP("Text", "invalid string: surrogate U+DC00..U+DFFF must follow U+D800..U+DBFF"),
};

static Text tokenFault(const QString& fault)
{
    static const QRegularExpression control("^invalid string: control character (.+) must be escaped to (.+)$");
    const QRegularExpressionMatch match = control.match(fault);
    if (!match.hasMatch())
        return libraryText(fault);
    const QStringList escapes = match.captured(2).split(" or ");
    return Text::tr("invalid string: control character %1 must be escaped to %2")
        .arg(match.captured(1), escapes.size() == 2 ? Text::tr("%1 or %2").arg(escapes[0], escapes[1])
                                                    : Text::untranslated(match.captured(2)));
}

static Text syntaxError(const QRegularExpressionMatch& match)
{
    const QString line = match.captured("line");
    const QString column = match.captured("column");
    const Text context = libraryText(match.captured("context"));
    const Text expected = libraryText(match.captured("expected"));
    if (!match.captured("found").isEmpty())
        return Text::tr("line %1, column %2: syntax error while parsing %3 - unexpected %4; expected %5")
            .arg(line, column, context, libraryText(match.captured("found")), expected);
    const Text fault = tokenFault(match.captured("fault"));
    const QString last = match.captured("last");
    return expected.isEmpty() ? Text::tr("line %1, column %2: syntax error while parsing %3 - %4; last read: '%5'")
                                    .arg(line, column, context, fault, last)
                              : Text::tr("line %1, column %2: syntax error while parsing %3 - %4; last read: '%5'; "
                                         "expected %6")
                                    .arg(line, column, context, fault, last, expected);
}

Text jsonErrorText(const char* exceptionText)
{
    static const QRegularExpression syntax(
        "^parse error at line (?<line>\\d+), column (?<column>\\d+): syntax error while parsing (?<context>[a-z ]+) - "
        "(?:unexpected (?<found>.+?); expected |(?<fault>.+?); last read: '(?<last>.*?)'(?:; expected |$))"
        "(?<expected>.*)$",
        QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression overflow("^number overflow parsing '(.*)'$");
    QString text = QString::fromUtf8(exceptionText).section("] ", 1); // "[json.exception.parse_error.101] ..."
    // Some versions of the parser name an empty input, others the end of input like any other.
    text.replace(QRegularExpression("attempting to parse an empty input;.*"),
                 "syntax error while parsing value - unexpected end of input; expected '[', '{', or a literal");
    const QRegularExpressionMatch place = syntax.match(text);
    if (place.hasMatch())
        return syntaxError(place);
    const QRegularExpressionMatch number = overflow.match(text);
    return number.hasMatch() ? Text::tr("number overflow parsing '%1'").arg(number.captured(1))
                             : Text::untranslated(QString(text).remove("parse error at "));
}
