#include "text.h"

#include <algorithm>
#include <clocale>
#include <cstring>
#include <cwchar>

Text Text::tr(const char* source)
{
    return {QCoreApplication::translate("Text", source), QString::fromUtf8(source)};
}

// --- Errors of the system and of libraries ------------------------------------------------------------------------

// Marks the texts that users of gqtool meet. Others are printed in English.
[[maybe_unused]] static const char* const knownTexts[] = {
    // errno
    QT_TRANSLATE_NOOP("Text", "Address already in use"),
    QT_TRANSLATE_NOOP("Text", "Address family not supported by protocol"),
    QT_TRANSLATE_NOOP("Text", "Bad address"),
    QT_TRANSLATE_NOOP("Text", "Bad file descriptor"),
    QT_TRANSLATE_NOOP("Text", "Broken pipe"),
    QT_TRANSLATE_NOOP("Text", "Cannot allocate memory"),
    QT_TRANSLATE_NOOP("Text", "Cannot assign requested address"),
    QT_TRANSLATE_NOOP("Text", "Connection refused"),
    QT_TRANSLATE_NOOP("Text", "Connection reset by peer"),
    QT_TRANSLATE_NOOP("Text", "Connection timed out"),
    QT_TRANSLATE_NOOP("Text", "Device or resource busy"),
    QT_TRANSLATE_NOOP("Text", "Disk quota exceeded"),
    QT_TRANSLATE_NOOP("Text", "File name too long"),
    QT_TRANSLATE_NOOP("Text", "File too large"),
    QT_TRANSLATE_NOOP("Text", "Input/output error"),
    QT_TRANSLATE_NOOP("Text", "Interrupted system call"),
    QT_TRANSLATE_NOOP("Text", "Invalid argument"),
    QT_TRANSLATE_NOOP("Text", "Is a directory"),
    QT_TRANSLATE_NOOP("Text", "Message too long"),
    QT_TRANSLATE_NOOP("Text", "Network is down"),
    QT_TRANSLATE_NOOP("Text", "Network is unreachable"),
    QT_TRANSLATE_NOOP("Text", "No buffer space available"),
    QT_TRANSLATE_NOOP("Text", "No route to host"),
    QT_TRANSLATE_NOOP("Text", "No space left on device"),
    QT_TRANSLATE_NOOP("Text", "No such device or address"),
    QT_TRANSLATE_NOOP("Text", "No such file or directory"),
    QT_TRANSLATE_NOOP("Text", "Not a directory"),
    QT_TRANSLATE_NOOP("Text", "Operation in progress"),
    QT_TRANSLATE_NOOP("Text", "Operation not permitted"),
    QT_TRANSLATE_NOOP("Text", "Permission denied"),
    QT_TRANSLATE_NOOP("Text", "Read-only file system"),
    QT_TRANSLATE_NOOP("Text", "Resource temporarily unavailable"),
    QT_TRANSLATE_NOOP("Text", "Success"),
    QT_TRANSLATE_NOOP("Text", "Too many levels of symbolic links"),
    QT_TRANSLATE_NOOP("Text", "Too many open files"),
    QT_TRANSLATE_NOOP("Text", "Too many open files in system"),
    QT_TRANSLATE_NOOP("Text", "Transport endpoint is not connected"),
    // The resolver
    QT_TRANSLATE_NOOP("Text", "Name or service not known"),
    QT_TRANSLATE_NOOP("Text", "No address associated with hostname"),
    QT_TRANSLATE_NOOP("Text", "Non-recoverable failure in name resolution"),
    QT_TRANSLATE_NOOP("Text", "Temporary failure in name resolution"),
    // Qt
    QT_TRANSLATE_NOOP("Text", "Unknown error"),
    // zlib
    QT_TRANSLATE_NOOP("Text", "incorrect data check"),
    QT_TRANSLATE_NOOP("Text", "incorrect header check"),
    QT_TRANSLATE_NOOP("Text", "incorrect length check"),
    QT_TRANSLATE_NOOP("Text", "invalid bit length repeat"),
    QT_TRANSLATE_NOOP("Text", "invalid block type"),
    QT_TRANSLATE_NOOP("Text", "invalid code -- missing end-of-block"),
    QT_TRANSLATE_NOOP("Text", "invalid code lengths set"),
    QT_TRANSLATE_NOOP("Text", "invalid distance code"),
    QT_TRANSLATE_NOOP("Text", "invalid distance too far back"),
    QT_TRANSLATE_NOOP("Text", "invalid distances set"),
    QT_TRANSLATE_NOOP("Text", "invalid literal/length code"),
    QT_TRANSLATE_NOOP("Text", "invalid literal/lengths set"),
    QT_TRANSLATE_NOOP("Text", "invalid stored block lengths"),
    QT_TRANSLATE_NOOP("Text", "invalid window size"),
    QT_TRANSLATE_NOOP("Text", "too many length or distance symbols"),
    QT_TRANSLATE_NOOP("Text", "unknown compression method"),
};

Text errorText(int error)
{
    return libraryText(strerror(error));
}

Text libraryText(const QString& english)
{
    return Text::tr(english.toUtf8().constData());
}

// --- Counts, lists ------------------------------------------------------------------------------------------------

Text bytesText(long long count)
{
    return count == 1 ? Text::tr("1 byte") : Text::tr("%1 bytes").arg(count);
}

Text listText(const QStringList& names)
{
    Text list;
    for (const QString& name : names)
        list = list.isEmpty() ? Text::untranslated(name) : list + Text::tr(", ") + Text::untranslated(name);
    return list;
}

// --- Columns ------------------------------------------------------------------------------------------------------

int columnsOf(const QString& text)
{
    // The user's locale may know ASCII only. Output is UTF-8 in any case.
    static const locale_t utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    if (utf8 == nullptr)
        return static_cast<int>(text.size());
    const std::wstring wide = text.toStdWString();
    const locale_t before = uselocale(utf8);
    const int columns = wcswidth(wide.c_str(), wide.size());
    uselocale(before);
    return columns < 0 ? static_cast<int>(text.size()) : columns; // control characters have no width
}

QString padded(const QString& text, int columns)
{
    return text + QString(qMax(0, columns - columnsOf(text)), ' ');
}

static bool isTerminalControl(QChar character)
{
    return character.category() == QChar::Other_Control && character != '\n' && character != '\t';
}

bool isDirectionControl(QChar character)
{
    return (character >= QChar(0x202a) && character <= QChar(0x202e)) ||
           (character >= QChar(0x2066) && character <= QChar(0x2069));
}

QString harmlessText(QString text)
{
    const auto isReplaced = [](QChar one) { return isTerminalControl(one) || isDirectionControl(one); };
    std::replace_if(text.begin(), text.end(), isReplaced, QChar(QChar::ReplacementCharacter));
    return text;
}

Text zeroByteText(int line)
{
    return Text::tr("line %1: %2").arg(line).arg(Text::tr("must not contain a zero byte"));
}
