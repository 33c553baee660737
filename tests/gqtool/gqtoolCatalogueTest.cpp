// The catalogue of gqtool's texts in Chinese, compared with the sources.

#include "shared/text.h"
#include "support/gqtoolProgram.h"
#include "support/textCatalogue.h"

#include <QRegularExpression>
#include <QTemporaryDir>

static const char* const catalogue = GQTOOL_CATALOGUES "/gqtool_zh.ts";

// Returns what the expression finds, sorted.
static QStringList found(const QRegularExpression& expression, const QString& text)
{
    QStringList all;
    for (auto matches = expression.globalMatch(text); matches.hasNext();)
        all.append(matches.next().captured());
    all.sort();
    return all;
}

// lupdate adds texts that the catalogue lacks as unfinished and marks those that are no longer in the sources.
TEST(GqtoolCatalogue, translatesExactlyTheTextsOfTheSources)
{
    QTemporaryDir folder;
    const QString updated = folder.filePath("gqtool_zh.ts");
    ASSERT_TRUE(QFile::copy(catalogue, updated));
    const Outcome outcome = runProgram(LUPDATE, {"-locations", "none", "-extensions", "cpp,h", GQTOOL_SOURCES "/gqtool",
                                                 GQTOOL_SOURCES "/shared", "-ts", updated});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors.toStdString();
    const std::vector<CatalogueText> texts = readCatalogue(updated);
    EXPECT_GT(texts.size(), 600u);
    for (const CatalogueText& text : texts) {
        EXPECT_EQ(text.type, "") << text.source.toStdString();
        EXPECT_NE(text.translation, "") << text.source.toStdString();
    }
    EXPECT_EQ(readCatalogue(catalogue).size(), texts.size());
}

TEST(GqtoolCatalogue, keepsPlaceholdersAndNamesOfOptions)
{
    const QRegularExpression placeholder("%[0-9]");
    const QRegularExpression option("(?<![\\w-])--[a-z][a-z-]*");
    for (const CatalogueText& text : readCatalogue(catalogue)) {
        EXPECT_EQ(found(placeholder, text.translation), found(placeholder, text.source)) << text.source.toStdString();
        QStringList options = found(option, text.source);
        QStringList kept = found(option, text.translation);
        options.removeDuplicates();
        kept.removeDuplicates();
        EXPECT_EQ(kept, options) << text.source.toStdString();
    }
}

// Lines of a description that begin with blanks are commands, JSON and tables.
TEST(GqtoolCatalogue, fitsIntoTheColumnsOfTheEnglishTexts)
{
    const int widest = 112;
    for (const CatalogueText& text : readCatalogue(catalogue)) {
        if (!text.source.contains('\n'))
            continue;
        for (const QString& line : text.translation.split('\n'))
            EXPECT_LE(columnsOf(line), widest) << line.toStdString();
        EXPECT_EQ(text.translation.endsWith('\n'), text.source.endsWith('\n')) << text.source.toStdString();
    }
}
