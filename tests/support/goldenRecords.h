#pragma once

#include "gqtool/records/jsonText.h"
#include "gqtool/records/recordFields.h"
#include "gqtool/records/recordJson.h"
#include "support/goldenFile.h"

#include <QDir>

#include <functional>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

// A pair of files in tests/golden/records or tests/golden/waves.
struct GoldenRecord {
    const Form* form;
    QByteArray bytes; // of the record alone
    QByteArray behind;
    Json value;

    // The record described by the JSON.
    std::unique_ptr<Content> content() const
    {
        std::unique_ptr<Content> result = form->make();
        EXPECT_EQ(takeJson(value, *result).join('\n').toStdString(), "");
        return result;
    }
};

inline void forEachGoldenRecord(const char* folder, int least, const std::function<void(const GoldenRecord&)>& test)
{
    const QStringList names = QDir(QString(GQLIB_GOLDEN "/") + folder).entryList({"*.json"});
    EXPECT_GE(names.size(), least);
    for (const QString& name : names) {
        const std::string path = folder + ('/' + name.chopped(5).toStdString());
        SCOPED_TRACE(path);
        const QJsonObject json = goldenJson(path + ".json");
        GoldenRecord golden{findForm(json["as"].toString()), goldenFile(path + ".hex"), QByteArray(),
                            Json::parse(jsonText(json["value"]))};
        ASSERT_NE(golden.form, nullptr);
        ASSERT_TRUE(!json.contains("behind") || takeBytes(Json::parse(jsonText(json["behind"])), golden.behind));
        golden.bytes.chop(golden.behind.size());
        test(golden);
    }
}
