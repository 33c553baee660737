#pragma once

#include <QString>
#include <QStringList>

// The language of gqtool's texts, "en" or "zh". JSON and other formats for programs do not depend on it.

// Chooses it by --lang in `words`, else by the locale: LC_ALL, LC_MESSAGES or LANG, and LANGUAGE. Texts are English if
// the program's translations are not installed. Call it once, before anything is printed.
void chooseLanguage(const QStringList& words);

// Returns true after chooseLanguage: programs that do not call it have no --lang.
bool isLanguageChosen();

// Returns the error in a value of --lang, or an empty text if it is right. Null means that the value is missing.
QString languageError(const QString& language);
