// Each allocation of the readers and writers of all golden records, lists and waves fails.

#include "support/failingAllocations.h"
#include "support/goldenRecords.h"
#include "support/hex.h"
#include "support/recordJsonWriter.h"

#include <gtest/gtest.h>

// --- What a reader leaves -----------------------------------------------------------------------------------------

struct Leaf {
    std::string path;
    Json value;
};

static void collect(const Json& value, const std::string& path, std::vector<Leaf>& leaves)
{
    if (!value.is_structured() || value.empty()) {
        leaves.push_back({path, value});
        return;
    }
    for (const auto& item : value.items())
        collect(item.value(), path + '/' + item.key(), leaves);
}

// The fields of a record or list in the order of the bytes.
static std::vector<Leaf> leavesOf(const Json& value)
{
    std::vector<Leaf> leaves;
    collect(value, "", leaves);
    return leaves;
}

static const Json* find(const std::vector<Leaf>& leaves, const std::string& path)
{
    for (const Leaf& leaf : leaves) {
        if (leaf.path == path)
            return &leaf.value;
    }
    return nullptr;
}

// Returns true for the field of a fresh record. `path` is within the record.
static bool isFresh(const Form& form, const std::vector<Leaf>& fresh, const std::string& path, const Json& value)
{
    const QString name = form.name;
    if (path == (name.startsWith("float") || name.startsWith("int") ? "/code2" : "/code4") && name.contains("Point"))
        return true; // not initialised
    if (const Json* const known = find(fresh, path))
        return value == *known;
    return value == 0 || value == "" || (value.is_structured() && value.empty());
}

static Json jsonFrom(Content& content)
{
    return Json::parse(comparableJsonOf(content));
}

// The fields read so far keep their new values: all fields up to some one are those of the bytes, the others are those
// of a fresh record.
static void expectPartlyRead(const Form& form, const Json& left, const Json& whole)
{
    const std::unique_ptr<Content> content = form.make();
    const std::unique_ptr<Content> item = content->makeItem();
    const std::vector<Leaf> fresh = leavesOf(jsonFrom(item != nullptr ? *item : *content));
    const std::vector<Leaf> expected = leavesOf(whole);
    bool isRead = true;
    for (const Leaf& leaf : leavesOf(left)) {
        const Json* const value = find(expected, leaf.path);
        isRead = isRead && value != nullptr && leaf.value == *value;
        const std::string path =
            item != nullptr ? leaf.path.substr(std::min(leaf.path.find('/', 1), leaf.path.size())) : leaf.path;
        EXPECT_TRUE(isRead || isFresh(form, fresh, path, leaf.value))
            << leaf.path << " is " << leaf.value << " in " << left;
    }
}

// --- Readers ------------------------------------------------------------------------------------------------------

static bool isRead(const GoldenRecord& golden, int result)
{
    return golden.form->onSuccess == returnsOne ? result == 1 : result > 0;
}

static void failsInReader(const GoldenRecord& golden)
{
    if (golden.form->failures == nullptr)
        return; // this form is only written
    const QByteArray bytes = golden.bytes + golden.behind;
    const std::unique_ptr<Content> whole = golden.content();
    const Json expected = jsonFrom(*whole);
    failEachAllocation([&] {
        const std::unique_ptr<Content> content = golden.form->make();
        int result = 0;
        const bool done = attempt([&] { result = content->read(bytes); });
        const AllocationsUntouched untouched;
        const bool zlibFailed = golden.form->name == std::string("wave") && failedAllocations() > 0 && result == 0;
        if (done && !zlibFailed) {
            EXPECT_TRUE(isRead(golden, result)) << result;
            EXPECT_EQ(jsonFrom(*content), expected);
        } else {
            expectPartlyRead(*golden.form, jsonFrom(*content), expected);
        }
    });
}

// Reads a list to one that has the same items already.
static void failsInReaderOfMore(const GoldenRecord& golden)
{
    const QByteArray bytes = golden.bytes + golden.behind;
    const std::unique_ptr<Content> twice = golden.form->make();
    if (golden.form->failures == nullptr || twice->makeItem() == nullptr)
        return;
    twice->read(bytes);
    const Json once = jsonFrom(*twice);
    twice->read(bytes);
    const Json both = jsonFrom(*twice);
    if (once.empty() || both.size() != 2 * once.size())
        return; // the reader replaces the list
    failEachAllocation([&] {
        const std::unique_ptr<Content> content = golden.form->make();
        content->read(bytes);
        const bool done = attempt([&] { content->read(bytes); });
        Json left;
        Json next;
        {
            const AllocationsUntouched untouched;
            left = jsonFrom(*content);
        }
        content->read(bytes); // the next call
        const AllocationsUntouched untouched;
        next = jsonFrom(*content);
        EXPECT_TRUE(!done || left == both);
        EXPECT_GE(left.size(), once.size());
        expectPartlyRead(*golden.form, left, both);
        for (size_t i = 0; i < once.size() && i < left.size(); ++i)
            EXPECT_EQ(left[i], once[i]);
        EXPECT_EQ(next.size(), left.size() + once.size());
        for (size_t i = 0; i < once.size() && i < next.size(); ++i)
            EXPECT_EQ(next[next.size() - once.size() + i], once[i]);
    });
}

// --- Writers ------------------------------------------------------------------------------------------------------

// What the array held stays. The bytes after it are to be discarded.
static void failsInWriter(const GoldenRecord& golden)
{
    const std::unique_ptr<Content> content = golden.content();
    const QByteArray before("before");
    QByteArray whole;
    content->write(whole);
    failEachAllocation([&] {
        QByteArray data(before.constData(), before.size());
        bool isWritten = false;
        attempt([&] { isWritten = content->write(data); });
        EXPECT_TRUE(data.startsWith(before));
        EXPECT_LE(data.size(), before.size() + whole.size());
        EXPECT_EQ(isWritten, failedAllocations() == 0);
        EXPECT_TRUE(!isWritten || data == before + whole);
        data.truncate(before.size());
        content->write(data); // the next call
        EXPECT_EQ(hex(data), hex(before + whole));
    });
}

// Packs samples to a wave that holds other bytes. `samples` are floats or raw values.
template <typename Samples>
static void failsInPacking(const Samples& samples, unsigned char flags)
{
    const std::vector<int> marks(50, 7);
    std::vector<unsigned char> rawBuffer(4 * samples.size());
    std::vector<unsigned char> packedBuffer(gqdb::CByte2Rdb::waveBlockSize);
    const std::vector<unsigned char> before{1, 2, 3};
    failEachAllocation([&] {
        gqdb::BlobWaveHead head;
        head.waveFlags = flags;
        std::vector<unsigned char> stored = before;
        int result = 0;
        const bool done = attempt([&] {
            result = gqdb::CByte2Rdb::wave2Byte(head, samples, marks, rawBuffer.data(), packedBuffer.data(), stored);
        });
        EXPECT_EQ(result, failedAllocations() == 0 ? 1 : done ? -1 : 0);
        EXPECT_EQ(stored == before, result != 1);
        EXPECT_EQ(head.sampleCount, samples.size());
    });
}

// --- Tests --------------------------------------------------------------------------------------------------------

TEST(RecordAllocation, leavesTheFieldsReadSoFar)
{
    forEachGoldenRecord("records", 90, failsInReader);
}

TEST(RecordAllocation, leavesTheItemsThatTheListHad)
{
    forEachGoldenRecord("records", 90, failsInReaderOfMore);
}

TEST(RecordAllocation, leavesTheBytesThatTheArrayHad)
{
    forEachGoldenRecord("records", 90, failsInWriter);
}

TEST(WaveAllocation, leavesWhatWasUnpackedSoFar)
{
    forEachGoldenRecord("waves", 10, failsInReader);
}

TEST(WaveAllocation, leavesTheStoredBytesAsTheyWere)
{
    for (const unsigned char compressed : {0, 4}) {
        failsInPacking(std::vector<float>(1000, 1.5F), compressed);
        failsInPacking(std::vector<float>(1000, 1.5F), compressed | 2);
        failsInPacking(std::vector<int>(1000, 7), compressed);
    }
}

TEST(WaveAllocation, leavesWhatTheArrayHad)
{
    forEachGoldenRecord("waves", 10, failsInWriter);
}
