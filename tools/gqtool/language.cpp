#include "language.h"

#include "shared/text.h"

#include <QTranslator>

#include <clocale>

static const QStringList languages = {"en", "zh"};
static bool isChosen = false;

// Returns the language of a locale such as "zh_CN.UTF-8", or an empty text if gqtool has no texts in it. Output is
// UTF-8, which a terminal with another encoding cannot show.
static QString languageOf(const QString& locale)
{
    const QString language = locale.section('@', 0, 0).section('.', 0, 0).section('_', 0, 0);
    const QString encoding = locale.section('@', 0, 0).section('.', 1).remove('-').toLower();
    const bool isShown = encoding.isEmpty() || encoding == "utf8";
    return isShown && languages.contains(language) ? language : QString();
}

static QString languageOfLocale()
{
    QString locale;
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (locale.isEmpty())
            locale = qEnvironmentVariable(variable);
    }
    if (locale.isEmpty() || locale == "POSIX" || locale.section('.', 0, 0) == "C")
        return "en"; // LANGUAGE has no effect
    for (const QString& preferred : qEnvironmentVariable("LANGUAGE").split(':', Qt::SkipEmptyParts)) {
        QString language = languageOf(preferred);
        if (!language.isEmpty())
            return language;
    }
    return languageOf(locale);
}

void chooseLanguage(const QStringList& words)
{
    QString language = languageOfLocale();
    for (int i = 0; i < words.size() && words[i] != "--"; ++i) {
        const QString value = words[i] == "--lang" ? words.value(i + 1) : words[i].section('=', 1);
        if (words[i].section('=', 0, 0) != "--lang")
            continue;
        if (languages.contains(value))
            language = value;
    }
    // So that the system's errors are English texts, which can be looked up and do not change JSON.
    setlocale(LC_MESSAGES, "C");
    isChosen = true;
    static QTranslator translator;
    if (language == "zh" &&
        translator.load("gqtool_" + language, QCoreApplication::applicationDirPath() + "/" GQTOOL_TRANSLATIONS))
        QCoreApplication::installTranslator(&translator);
}

bool isLanguageChosen()
{
    return isChosen;
}

QString languageError(const QString& language)
{
    if (language.isNull())
        return Text::tr("%1 requires %2").arg("--lang", "LANG");
    return languages.contains(language) ? QString() : Text::tr("--lang must be en or zh, got '%1'").arg(language);
}
