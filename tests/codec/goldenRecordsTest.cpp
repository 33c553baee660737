// Compares the bytes of tests/golden with the library's readers and writers of every record, list and wave.

#include "support/goldenRecords.h"
#include "support/hex.h"
#include "support/recordJsonWriter.h"

#include <gtest/gtest.h>
#include <zlib.h>

// Difference between a reader's result and the bytes it consumed.
static int offset(const GoldenRecord& golden)
{
    const QString form = golden.form->name;
    if (form == "commItem")
        return static_cast<int>(golden.value["text4"].get<std::string>().size()) - 2;
    return form == "objectBlob" ? -2 : 0;
}

static void readsGolden(const GoldenRecord& golden)
{
    if (golden.form->failures == nullptr)
        return; // this form is only written
    const std::unique_ptr<Content> expected = golden.content();
    const std::unique_ptr<Content> read = golden.form->make();
    const int result = golden.form->onSuccess == returnsBytes ? golden.bytes.size() + offset(golden) : 1;
    EXPECT_EQ(read->read(golden.bytes + golden.behind), result);
    EXPECT_EQ(comparableJsonOf(*read), comparableJsonOf(*expected));
}

static QByteArray written(const GoldenRecord& golden)
{
    QByteArray bytes;
    EXPECT_TRUE(golden.content()->write(bytes));
    return bytes;
}

TEST(GoldenRecords, areReadAsTheirJson)
{
    forEachGoldenRecord("records", 90, readsGolden);
}

TEST(GoldenRecords, areWrittenFromTheirJson)
{
    forEachGoldenRecord("records", 90,
                        [](const GoldenRecord& golden) { EXPECT_EQ(hex(written(golden)), hex(golden.bytes)); });
}

TEST(GoldenWaves, areReadAsTheirJson)
{
    forEachGoldenRecord("waves", 10, readsGolden);
}

// Another version of zlib may compress a block to other bytes.
static QByteArray unpackedFrom(const QByteArray& wave, int block)
{
    QByteArray unpacked(1000, '\0');
    auto size = static_cast<uLongf>(unpacked.size());
    const auto* packed = reinterpret_cast<const Bytef*>(wave.constData() + block);
    EXPECT_EQ(uncompress(reinterpret_cast<Bytef*>(unpacked.data()), &size, packed, uLong(wave.size() - block)), Z_OK);
    return wave.left(block) + unpacked.left(int(size));
}

TEST(GoldenWaves, areWrittenFromTheirJson)
{
    forEachGoldenRecord("waves", 10, [](const GoldenRecord& golden) {
        const int block = 96 + 4 * golden.value["markCount"].get<int>();
        const bool isCompressed = (golden.value["waveFlags"].get<int>() & 4) != 0;
        if (isCompressed)
            EXPECT_EQ(hex(unpackedFrom(written(golden), block)), hex(unpackedFrom(golden.bytes, block)));
        else
            EXPECT_EQ(hex(written(golden)), hex(golden.bytes));
    });
}
