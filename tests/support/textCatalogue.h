#pragma once

#include <QFile>
#include <QStringList>
#include <QXmlStreamReader>

#include <gtest/gtest.h>

#include <vector>

// A message of a .ts file.
struct CatalogueText {
    QString source;
    QString translation;
    QString type; // "unfinished", "vanished" or "obsolete"; empty if it is translated
};

inline std::vector<CatalogueText> readCatalogue(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    QXmlStreamReader xml(&file);
    std::vector<CatalogueText> texts;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (xml.name() == QLatin1String("source")) {
            texts.push_back({xml.readElementText(), {}, {}});
        } else if (xml.name() == QLatin1String("translation")) {
            texts.back().type = xml.attributes().value("type").toString();
            texts.back().translation = xml.readElementText();
        }
    }
    EXPECT_FALSE(xml.hasError()) << xml.errorString().toStdString();
    return texts;
}
