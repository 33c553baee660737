// The bytes of tests/golden against the library's readers and writers of every record and list, and of waves.

#include "../tools/gqtool/recordFields.h"
#include "../tools/gqtool/recordJson.h"
#include "support/goldenFile.h"
#include "support/hex.h"

#include <QDir>

#include <functional>
#include <gtest/gtest.h>
#include <zlib.h>

struct Golden {
    const Form* form;
    QByteArray bytes; // without those behind
    QByteArray behind;
    QJsonValue value;
};

static void forEachGolden(const char* folder, int least, const std::function<void(const Golden&)>& test)
{
    const QStringList names = QDir(QString(GQLIB_GOLDEN "/") + folder).entryList({"*.json"});
    EXPECT_GE(names.size(), least);
    for (const QString& name : names) {
        const std::string path = folder + ('/' + name.chopped(5).toStdString());
        SCOPED_TRACE(path);
        const QJsonObject json = goldenJson(path + ".json");
        Golden golden{findForm(json["as"].toString()), goldenFile(path + ".hex"), QByteArray(), json["value"]};
        ASSERT_NE(golden.form, nullptr);
        ASSERT_TRUE(!json.contains("behind") || takeBytes(json["behind"], golden.behind));
        golden.bytes.chop(golden.behind.size());
        test(golden);
    }
}

static std::unique_ptr<Content> contentOf(const Golden& golden)
{
    std::unique_ptr<Content> content = golden.form->make();
    EXPECT_EQ(takeJson(golden.value, *content).join('\n').toStdString(), "");
    return content;
}

// By how much the answer of a reader differs from the bytes that it consumed.
static int offset(const Golden& golden)
{
    const QString form = golden.form->name;
    if (form == "commItem")
        return golden.value["text4"].toString().toUtf8().size() - 2;
    return form == "objectBlob" ? -2 : 0;
}

static void readsGolden(const Golden& golden)
{
    if (golden.form->failures == nullptr)
        return; // of a form that is written only
    const std::unique_ptr<Content> told = contentOf(golden);
    const std::unique_ptr<Content> read = golden.form->make();
    const int result = golden.form->answer == answersBytes ? golden.bytes.size() + offset(golden) : 1;
    EXPECT_EQ(read->read(golden.bytes + golden.behind), result);
    EXPECT_EQ(comparableJsonOf(*read).toStdString(), comparableJsonOf(*told).toStdString());
}

static QByteArray written(const Golden& golden)
{
    QByteArray bytes;
    EXPECT_TRUE(contentOf(golden)->write(bytes));
    return bytes;
}

TEST(GoldenRecords, areReadAsTheirJsonTells)
{
    forEachGolden("records", 90, readsGolden);
}

TEST(GoldenRecords, areWhatTheWritersMakeOfTheirJson)
{
    forEachGolden("records", 90, [](const Golden& golden) { EXPECT_EQ(hex(written(golden)), hex(golden.bytes)); });
}

TEST(GoldenWaves, areReadAsTheirJsonTells)
{
    forEachGolden("waves", 10, readsGolden);
}

// Another zlib may pack a block to other bytes.
static QByteArray unpackedFrom(const QByteArray& wave, int block)
{
    QByteArray unpacked(1000, '\0');
    auto size = static_cast<uLongf>(unpacked.size());
    const auto* packed = reinterpret_cast<const Bytef*>(wave.constData() + block);
    EXPECT_EQ(uncompress(reinterpret_cast<Bytef*>(unpacked.data()), &size, packed, uLong(wave.size() - block)), Z_OK);
    return wave.left(block) + unpacked.left(int(size));
}

TEST(GoldenWaves, areWhatTheWriterMakesOfTheirJson)
{
    forEachGolden("waves", 10, [](const Golden& golden) {
        const int block = 96 + 4 * golden.value["markCount"].toInt();
        const bool isCompressed = (golden.value["waveFlags"].toInt() & 4) != 0;
        if (isCompressed)
            EXPECT_EQ(hex(unpackedFrom(written(golden), block)), hex(unpackedFrom(golden.bytes, block)));
        else
            EXPECT_EQ(hex(written(golden)), hex(golden.bytes));
    });
}
