// Prints the text of a relative time code in Chinese, then in English.

#include <gqLib/gqTools.h>

#include <QCoreApplication>
#include <QTranslator>

#include <cstdio>

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    std::printf("155: %s\n", qPrintable(CGqTools::relTime2Str(155)));

    //! [load]
    QTranslator english;
    if (!english.load("gqLib_en", GQLIB_TRANSLATIONS)) // the folder: gqLib_TRANSLATIONS_DIR in CMake
        return 1;
    QCoreApplication::installTranslator(&english);
    //! [load]
    std::printf("155: %s\n", qPrintable(CGqTools::relTime2Str(155)));
    return 0;
}
