#include "support/hex.h"
#include "support/logFolder.h"
#include "support/threads.h"
#include "support/timeZone.h"

#include "gqFileLog.h"

#include <QDir>
#include <QtGlobal>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstdio>
#include <ctime>
#include <functional>
#include <string>
#include <type_traits>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using LogData = CGqFileLog::LogData;
using Batch = QList<LogData>;

static constexpr unsigned int morning = 1699952707; // 2023-11-14 09:05:07 UTC

// --- The class ---

static_assert(!std::is_polymorphic_v<CGqFileLog>);
static_assert(!std::is_copy_constructible_v<CGqFileLog> && !std::is_copy_assignable_v<CGqFileLog>);
static_assert(!std::is_convertible_v<bool, CGqFileLog>);
static_assert(std::is_same_v<decltype(&CGqFileLog::init), bool (CGqFileLog::*)(const QString&)>);
static_assert(std::is_same_v<decltype(&CGqFileLog::clear), bool (CGqFileLog::*)()>);
static_assert(std::is_same_v<decltype(&CGqFileLog::save), bool (CGqFileLog::*)()>);
static_assert(std::is_same_v<decltype(&CGqFileLog::saveDatas), bool (CGqFileLog::*)(const Batch&)>);
[[maybe_unused]] static constexpr void (CGqFileLog::*infoNow)(const QString&) = &CGqFileLog::info;
[[maybe_unused]] static constexpr void (CGqFileLog::*infoOfATime)(const QString&, unsigned int,
                                                                  unsigned int) = &CGqFileLog::info;

static_assert(std::is_same_v<decltype(OpenFileLog::file), QFile>);
static_assert(std::is_same_v<decltype(OpenFileLog::withTime), bool>);
static_assert(std::is_same_v<decltype(OpenFileLog::savedCount), int>);
static_assert(std::is_same_v<decltype(OpenFileLog::queue), Batch>);
static_assert(std::is_same_v<decltype(OpenFileLog::queueMutex), gqdb::CMutex>);
static_assert(std::is_same_v<decltype(OpenFileLog::fileMutex), gqdb::CMutex>);

static_assert(std::is_same_v<decltype(LogData::text), QString>);
static_assert(std::is_same_v<decltype(LogData::seconds), unsigned int>);
static_assert(std::is_same_v<decltype(LogData::milliseconds), unsigned int>);

TEST(FileLogClass, keepsTheOrderOfItsMembers)
{
    const OpenFileLog log;
    const void* const members[] = {&log.file,  &log.withTime,   &log.savedCount,
                                   &log.queue, &log.queueMutex, &log.fileMutex};
    EXPECT_EQ(members[0], &log); // no base and no virtual table before it
    EXPECT_TRUE(std::is_sorted(std::begin(members), std::end(members), std::less<>()));
}

TEST(FileLogClass, startsEmpty)
{
    for (const bool withTime : {false, true}) {
        const OpenFileLog log(withTime);
        EXPECT_EQ(log.withTime, withTime);
        EXPECT_EQ(log.savedCount, 0);
        EXPECT_TRUE(log.queue.isEmpty());
        EXPECT_TRUE(log.file.fileName().isEmpty());
    }
}

TEST(FileLogClass, writesTheTimeByDefault)
{
    EXPECT_TRUE(OpenFileLog().withTime);
}

TEST(FileLogLogData, startsEmpty)
{
    const LogData record;
    EXPECT_TRUE(record.text.isEmpty());
    EXPECT_EQ(record.seconds, 0u);
    EXPECT_EQ(record.milliseconds, 0u);
}

TEST(FileLogLogData, keepsTheOrderOfItsFields)
{
    const LogData record{"text", 1, 2};
    EXPECT_EQ(record.text, "text");
    EXPECT_EQ(record.seconds, 1u);
    EXPECT_EQ(record.milliseconds, 2u);
}

// Collects the messages of Qt.
class QtMessages {
public:
    QtMessages() : former(qInstallMessageHandler(take)) { texts().clear(); }
    ~QtMessages() { qInstallMessageHandler(former); }
    QtMessages(const QtMessages&) = delete;
    QtMessages& operator=(const QtMessages&) = delete;

    static std::string& texts()
    {
        static std::string all;
        return all;
    }

private:
    static void take(QtMsgType, const QMessageLogContext&, const QString& text) { texts() += text.toStdString(); }

    QtMessageHandler former;
};

// --- The lines ---

// A log with the file "log" in the folder.
class FileLog : public LogFolder {
protected:
    explicit FileLog(bool withTime = false) : log(withTime) {}

    void SetUp() override
    {
        LogFolder::SetUp();
        ASSERT_TRUE(log.init(path("log")));
    }

    // Queues and saves this many lines of one letter as a batch.
    void saveLines(int count, char letter = 'x')
    {
        for (int i = 0; i < count; ++i)
            log.info(QString(QLatin1Char(letter)), 0, 0);
        EXPECT_TRUE(log.save());
    }

    // Returns the content of the file and removes the file.
    std::string takeContent()
    {
        const std::string result = content("log");
        EXPECT_TRUE(log.clear());
        return result;
    }

    OpenFileLog log;
};

// The text with consecutive equal lines counted: "2 x\n1 y\n".
static std::string counted(const std::string& text)
{
    std::string result;
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size() - 1);
        const std::string line = text.substr(at, end + 1 - at);
        int count = 0;
        for (; text.compare(at, line.size(), line) == 0; at += line.size())
            ++count;
        result += std::to_string(count) + " " + line;
    }
    return result;
}

class FileLogWithTime : public FileLog {
protected:
    FileLogWithTime() : FileLog(true) {}

    std::string lineOf(const QString& text, unsigned int seconds, unsigned int milliseconds)
    {
        log.info(text, seconds, milliseconds);
        EXPECT_TRUE(log.save());
        return takeContent();
    }
};

TEST_F(FileLogWithTime, writesTheTimeOfDayBeforeTheMessage)
{
    const TimeZone zone("UTC0");
    EXPECT_EQ(lineOf("x", morning, 0), "<09:05:07.000> x\n");
    EXPECT_EQ(lineOf("", morning, 0), "<09:05:07.000> \n");
    EXPECT_EQ(lineOf("x", 0, 0), "<00:00:00.000> x\n");
    EXPECT_EQ(lineOf("x", 86399, 0), "<23:59:59.000> x\n");
    EXPECT_EQ(lineOf("x", 2147483648u, 0), "<03:14:08.000> x\n");
    EXPECT_EQ(lineOf("x", 4294967295u, 0), "<06:28:15.000> x\n");
}

TEST_F(FileLogWithTime, writesMillisecondsUnchanged)
{
    const TimeZone zone("UTC0");
    EXPECT_EQ(lineOf("x", morning, 7), "<09:05:07.007> x\n");
    EXPECT_EQ(lineOf("x", morning, 45), "<09:05:07.045> x\n");
    EXPECT_EQ(lineOf("x", morning, 999), "<09:05:07.999> x\n");
    EXPECT_EQ(lineOf("x", morning, 1000), "<09:05:07.1000> x\n");
    EXPECT_EQ(lineOf("x", morning, 1234), "<09:05:07.1234> x\n");
    EXPECT_EQ(lineOf("x", morning, 2147483647), "<09:05:07.2147483647> x\n");
    EXPECT_EQ(lineOf("x", morning, 2147483648u), "<09:05:07.-2147483648> x\n"); // printed as signed
    EXPECT_EQ(lineOf("x", morning, 4294967295u), "<09:05:07.-01> x\n");
}

TEST_F(FileLogWithTime, writesLocalTime)
{
    static constexpr unsigned int summerMorning = 1689325507; // 2023-07-14 09:05:07 UTC
    const struct {
        const char* zone;
        unsigned int seconds;
        const char* line;
    } cases[] = {
        {"CST-8", morning, "<17:05:07.000> x\n"},
        {"EST5", morning, "<04:05:07.000> x\n"},
        {"IST-5:30", morning, "<14:35:07.000> x\n"},
        {"NFT-11:30", morning, "<20:35:07.000> x\n"},
        {"CST-8", morning + 8 * 3600, "<01:05:07.000> x\n"}, // on the next day
        {"EST5", 3600, "<20:00:00.000> x\n"},                // before 1970 there
        {"CET-1CEST,M3.5.0,M10.5.0/3", morning, "<10:05:07.000> x\n"},
        {"CET-1CEST,M3.5.0,M10.5.0/3", summerMorning, "<11:05:07.000> x\n"},
    };
    for (const auto& [zone, seconds, line] : cases) {
        SCOPED_TRACE(zone);
        const TimeZone local(zone);
        EXPECT_EQ(lineOf("x", seconds, 0), line);
    }
}

TEST_F(FileLogWithTime, writesTheTimeOfEachRecordAndNotOfTheSave)
{
    const TimeZone zone("UTC0");
    log.info("later", morning + 60, 2);
    log.info("earlier", morning, 1);
    EXPECT_TRUE(log.save());
    EXPECT_EQ(content("log"), "<09:06:07.002> later\n"
                              "<09:05:07.001> earlier\n");
}

TEST_F(FileLogWithTime, writesTheTimeOfEachRecordOfABatch)
{
    const TimeZone zone("UTC0");
    const struct {
        unsigned int seconds;
        unsigned int milliseconds;
    } times[] = {{0, 0}, {0, 5}, {morning, 5}, {morning, 0}, {morning + 1, 0}, {morning, 999}, {0, 0}};
    for (const auto& [seconds, milliseconds] : times)
        log.info("x", seconds, milliseconds);
    EXPECT_TRUE(log.save());
    EXPECT_EQ(content("log"), "<00:00:00.000> x\n"
                              "<00:00:00.005> x\n"
                              "<09:05:07.005> x\n"
                              "<09:05:07.000> x\n"
                              "<09:05:08.000> x\n"
                              "<09:05:07.999> x\n"
                              "<00:00:00.000> x\n");
}

TEST_F(FileLogWithTime, formatsTheTimeWhenSaving)
{
    const TimeZone zone("UTC0");
    log.info("x", morning, 0);
    const TimeZone other("CST-8");
    EXPECT_TRUE(log.save());
    EXPECT_EQ(content("log"), "<17:05:07.000> x\n");
}

TEST_F(FileLogWithTime, usesTheCurrentSecondWithoutMilliseconds)
{
    const TimeZone zone("UTC0");
    const auto before = unsigned(std::time(nullptr));
    log.info("x");
    const auto after = unsigned(std::time(nullptr));
    ASSERT_EQ(log.queue.size(), 1);
    const unsigned int seconds = log.queue.first().seconds;
    EXPECT_GE(seconds, before);
    EXPECT_LE(seconds, after);
    EXPECT_EQ(log.queue.first().milliseconds, 0u);

    EXPECT_TRUE(log.save());
    char line[32];
    std::snprintf(line, sizeof line, "<%02u:%02u:%02u.000> x\n", seconds / 3600 % 24, seconds / 60 % 60, seconds % 60);
    EXPECT_EQ(content("log"), line);
}

TEST_F(FileLogWithTime, doesNotTreatTheMessageAsAFormat)
{
    const TimeZone zone("UTC0");
    EXPECT_EQ(lineOf("100% %d %s %1", morning, 0), "<09:05:07.000> 100% %d %s %1\n");
}

TEST_F(FileLogWithTime, truncatesAMessageAtItsFirstZeroCharacter)
{
    const TimeZone zone("UTC0");
    log.info(QString("cut") + QChar(0) + "lost", morning, 0);
    log.info("next", morning, 1);
    EXPECT_TRUE(log.save());
    EXPECT_EQ(content("log"), "<09:05:07.000> cut<09:05:07.001> next\n");
}

TEST_F(FileLog, writesNoTimeIfTurnedOff)
{
    log.info("x");
    log.info("y", morning, 45);
    EXPECT_TRUE(log.save());
    EXPECT_EQ(content("log"), "x\n"
                              "y\n");
}

TEST_F(FileLog, keepsTheOrderOfTheMessages)
{
    for (const char* text : {"b", "c", "", "a", "b"})
        log.info(text);
    EXPECT_TRUE(log.save());
    EXPECT_EQ(content("log"), "b\nc\n\na\nb\n");
}

TEST_F(FileLog, writesUtf8)
{
    log.info(QString(QChar(0x65E5)) + QChar(0x5FD7));               // two Chinese characters
    log.info(QString(QChar(0xE9)) + QChar(0xD83D) + QChar(0xDE00)); // e acute, and a surrogate pair
    EXPECT_TRUE(log.save());
    EXPECT_EQ(hex(QByteArray::fromStdString(takeContent())), hex("e697a5 e5bf97 0a"
                                                                 "c3a9 f09f9880 0a"_hex));
    log.info(QString("a") + QChar(0xD83D) + "b");
    log.info(QString(QChar(0xDE00)) + "b");
    log.info(QString("a") + QChar(0xD83D));
    EXPECT_TRUE(log.save());
    EXPECT_EQ(hex(QByteArray::fromStdString(takeContent())),
              hex("61 3f 62 0a" // a lone surrogate becomes a question mark
                  "3f 62 0a"
                  "61 3f 0a"_hex));
}

TEST_F(FileLog, writesALineEndInAMessageUnchanged)
{
    log.info("one\ntwo\r\n");
    log.info("three");
    EXPECT_TRUE(log.save());
    EXPECT_EQ(content("log"), "one\ntwo\r\n\nthree\n");
    EXPECT_EQ(log.savedCount, 2);
}

TEST_F(FileLog, losesTheLineEndAfterAZeroCharacter)
{
    log.info(QString("cut") + QChar(0) + "lost");
    log.info("next");
    log.info(QString(QChar(0)) + "lost");
    log.info("last");
    EXPECT_TRUE(log.save());
    EXPECT_EQ(content("log"), "cutnext\n"
                              "last\n");
    EXPECT_EQ(log.savedCount, 4);
}

TEST_F(FileLog, writesLongMessages)
{
    const std::string text(200000, 'y');
    log.info(QString::fromStdString(text));
    log.info("x");
    EXPECT_TRUE(log.save());
    EXPECT_EQ(content("log"), text + "\nx\n");
    EXPECT_EQ(log.savedCount, 2); // records, not bytes
}

// --- init ---

using FileLogInit = FileLog;

TEST_F(FileLogInit, createsNothing)
{
    EXPECT_TRUE(log.init(path("log")));
    EXPECT_TRUE(log.init(path("missing/log")));
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
}

TEST_F(FileLogInit, cleansThePath)
{
    EXPECT_TRUE(log.init(folder.path() + "/missing/..//./log/"));
    EXPECT_EQ(log.file.fileName(), folder.path() + "/log");
}

TEST_F(FileLogInit, resolvesThePathInTheCurrentFolder)
{
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(folder.path()));
    const QString here = QDir::currentPath();
    EXPECT_TRUE(log.init("missing/../log"));
    OpenFileLog nameless;
    EXPECT_TRUE(nameless.init(""));
    ASSERT_TRUE(QDir::setCurrent(before));

    EXPECT_EQ(log.file.fileName(), here + "/log");
    EXPECT_EQ(nameless.file.fileName(), here);
    saveLines(1);
    EXPECT_EQ(content("log"), "x\n");
}

TEST_F(FileLogInit, countsFromZeroAfterTheLinesOfAnExistingFile)
{
    saveLines(29999);
    EXPECT_EQ(log.savedCount, 29999);
    EXPECT_TRUE(log.init(path("log")));
    EXPECT_EQ(log.savedCount, 0);
    saveLines(1, 'y');
    EXPECT_EQ(log.savedCount, 1);
    EXPECT_EQ(counted(content("log")), "29999 x\n1 y\n");
    EXPECT_FALSE(exists("log.bak"));
}

TEST_F(FileLogInit, keepsTheQueue)
{
    OpenFileLog early(false);
    early.info("early");
    EXPECT_TRUE(early.init(path("log")));
    EXPECT_TRUE(early.save());
    EXPECT_EQ(content("log"), "early\n");
}

TEST_F(FileLogInit, changesTheFile)
{
    saveLines(1, 'a');
    EXPECT_TRUE(log.init(path("other")));
    saveLines(1, 'b');
    EXPECT_EQ(content("log"), "a\n");
    EXPECT_EQ(content("other"), "b\n");
}

// --- info ---

using FileLogInfo = FileLog;

TEST_F(FileLogInfo, queuesWithoutTouchingTheDisk)
{
    log.info("x", 1, 2);
    EXPECT_FALSE(exists("log"));
    ASSERT_EQ(log.queue.size(), 1);
    EXPECT_EQ(log.queue.first().text, "x");
    EXPECT_EQ(log.queue.first().seconds, 1u);
    EXPECT_EQ(log.queue.first().milliseconds, 2u);
    EXPECT_EQ(log.savedCount, 0);
}

TEST_F(FileLogInfo, keepsItsOwnCopyOfTheString)
{
    QString text = "before";
    log.info(text);
    log.info(text, 1, 2);
    text[0] = QLatin1Char('x');
    EXPECT_TRUE(log.save());
    EXPECT_EQ(content("log"), "before\nbefore\n");
}

TEST_F(FileLogInfo, isDroppedWithTheLog)
{
    {
        OpenFileLog other(false);
        EXPECT_TRUE(other.init(path("other")));
        other.info("x");
    }
    EXPECT_FALSE(exists("other"));
}

// --- save ---

// The descriptor that the next open(2) would return.
static int nextDescriptor()
{
    const int descriptor = ::dup(STDERR_FILENO);
    ::close(descriptor);
    return descriptor;
}

using FileLogSave = FileLog;

TEST_F(FileLogSave, doesNotTouchTheFileWithoutRecords)
{
    EXPECT_TRUE(log.save());
    EXPECT_FALSE(exists("log"));
    saveLines(1);
    EXPECT_TRUE(log.save());
    EXPECT_EQ(content("log"), "x\n");
}

TEST_F(FileLogSave, appendsEachRecordOnce)
{
    saveLines(2, 'a');
    EXPECT_TRUE(log.queue.isEmpty());
    saveLines(1, 'b');
    EXPECT_EQ(content("log"), "a\na\nb\n");
    EXPECT_EQ(log.savedCount, 3);
}

TEST_F(FileLogSave, leavesTheFileClosed)
{
    const int next = nextDescriptor();
    saveLines(1);
    EXPECT_FALSE(log.file.isOpen());
    EXPECT_EQ(nextDescriptor(), next);
    log.savedCount = 29999;
    saveLines(1); // moves aside
    EXPECT_FALSE(log.file.isOpen());
    EXPECT_EQ(nextDescriptor(), next);
}

TEST_F(FileLogSave, appendsAfterTheLinesOfOthers)
{
    saveLines(1, 'a');
    write("log", "a\nforeign\n");
    saveLines(1, 'b');
    EXPECT_EQ(content("log"), "a\nforeign\nb\n");
}

TEST_F(FileLogSave, createsAFileThatOthersRemoved)
{
    saveLines(1, 'a');
    ASSERT_TRUE(QFile::remove(path("log")));
    saveLines(1, 'b');
    EXPECT_EQ(content("log"), "b\n");
}

// --- saveDatas ---

using FileLogSaveDatas = FileLog;

TEST_F(FileLogSaveDatas, writesTheBatchInOrderAndLeavesTheQueue)
{
    log.info("queued");
    EXPECT_TRUE(log.saveDatas({{"b", 0, 0}, {"a", 0, 0}}));
    EXPECT_EQ(content("log"), "b\na\n");
    EXPECT_EQ(log.savedCount, 2);
    EXPECT_EQ(log.queue.size(), 1);
}

TEST_F(FileLogSaveDatas, doesNotOpenTheFileForAnEmptyBatch)
{
    EXPECT_TRUE(log.saveDatas({}));
    EXPECT_FALSE(exists("log"));
    EXPECT_TRUE(log.init(path("missing/log")));
    EXPECT_TRUE(log.saveDatas({}));
}

TEST_F(FileLogSaveDatas, doesNotMoveAsideForAnEmptyBatch)
{
    saveLines(1);
    log.savedCount = 30000;
    EXPECT_TRUE(log.saveDatas({}));
    EXPECT_EQ(log.savedCount, 30000);
    EXPECT_FALSE(exists("log.bak"));
}

// --- The move aside ---

using FileLogMoveAside = FileLog;

TEST_F(FileLogMoveAside, happensAfterThe30000thRecord)
{
    saveLines(29999);
    EXPECT_EQ(log.savedCount, 29999);
    EXPECT_FALSE(exists("log.bak"));
    saveLines(1);
    EXPECT_EQ(log.savedCount, 0);
    EXPECT_FALSE(exists("log"));
    EXPECT_EQ(counted(content("log.bak")), "30000 x\n");
    saveLines(1, 'y');
    EXPECT_EQ(log.savedCount, 1);
    EXPECT_EQ(content("log"), "y\n");
    EXPECT_EQ(counted(content("log.bak")), "30000 x\n");
}

TEST_F(FileLogMoveAside, countsSingleRecordsToo)
{
    log.savedCount = 29997;
    for (int i = 0; i < 4; ++i)
        saveLines(1, char('a' + i));
    EXPECT_EQ(content("log.bak"), "a\nb\nc\n");
    EXPECT_EQ(content("log"), "d\n");
}

TEST_F(FileLogMoveAside, waitsForTheEndOfTheBatch)
{
    saveLines(29999, 'x');
    saveLines(501, 'y');
    EXPECT_EQ(log.savedCount, 0);
    EXPECT_FALSE(exists("log"));
    EXPECT_EQ(counted(content("log.bak")), "29999 x\n501 y\n");
}

TEST_F(FileLogMoveAside, happensAfterASingleBatchOfThatSize)
{
    saveLines(30000);
    EXPECT_FALSE(exists("log"));
    EXPECT_EQ(counted(content("log.bak")), "30000 x\n");
}

TEST_F(FileLogMoveAside, replacesThePreviousFile)
{
    saveLines(30000, 'a');
    saveLines(30001, 'b');
    EXPECT_FALSE(exists("log"));
    EXPECT_EQ(counted(content("log.bak")), "30001 b\n");
    EXPECT_FALSE(exists("log.bak.bak"));
}

TEST_F(FileLogMoveAside, isIgnoredIfItFails)
{
    ASSERT_TRUE(QDir(folder.path()).mkpath("log.bak/taken"));
    log.savedCount = 29999;
    saveLines(1, 'a');
    EXPECT_EQ(log.savedCount, 0);
    EXPECT_EQ(content("log"), "a\n");
    saveLines(1, 'b');
    EXPECT_EQ(log.savedCount, 1);
    EXPECT_EQ(content("log"), "a\nb\n");
}

// --- clear ---

using FileLogClear = FileLog;

TEST_F(FileLogClear, removesTheFileAndNotTheOlderOne)
{
    saveLines(1);
    write("log.bak", "older\n");
    EXPECT_TRUE(log.clear());
    EXPECT_FALSE(exists("log"));
    EXPECT_EQ(content("log.bak"), "older\n");
}

TEST_F(FileLogClear, failsWithoutAFile)
{
    EXPECT_FALSE(log.clear());
    saveLines(1);
    EXPECT_TRUE(log.clear());
    EXPECT_FALSE(log.clear());
}

TEST_F(FileLogClear, leavesTheQueue)
{
    saveLines(1, 'a');
    log.info("b");
    EXPECT_TRUE(log.clear());
    EXPECT_TRUE(log.save());
    EXPECT_EQ(content("log"), "b\n");
}

TEST_F(FileLogClear, leavesTheCount)
{
    saveLines(20000);
    EXPECT_TRUE(log.clear());
    EXPECT_EQ(log.savedCount, 20000);
    saveLines(9999);
    EXPECT_EQ(counted(content("log")), "9999 x\n");
    EXPECT_FALSE(exists("log.bak"));
    saveLines(1);
    EXPECT_FALSE(exists("log"));
    EXPECT_EQ(counted(content("log.bak")), "10000 x\n");
}

// --- Failures ---

using FileLogFailure = FileLog;

TEST_F(FileLogFailure, losesTheBatchIfTheFolderIsMissing)
{
    const QtMessages messages;
    const int next = nextDescriptor();
    saveLines(1, 'a');
    EXPECT_TRUE(log.init(path("missing/log")));
    log.savedCount = 29999;
    log.info("lost");
    EXPECT_FALSE(log.save());
    EXPECT_TRUE(log.queue.isEmpty());
    EXPECT_EQ(log.savedCount, 29999);
    EXPECT_FALSE(exists("missing"));
    EXPECT_TRUE(log.save()); // nothing is left
    EXPECT_EQ(nextDescriptor(), next);
    EXPECT_EQ(QtMessages::texts(), "");

    ASSERT_TRUE(QDir(folder.path()).mkdir("missing"));
    log.savedCount = 0;
    saveLines(1, 'b');
    EXPECT_EQ(content("missing/log"), "b\n");
}

TEST_F(FileLogFailure, losesTheBatchIfTheNameIsAFolder)
{
    const QtMessages messages;
    EXPECT_TRUE(log.init(folder.path()));
    log.info("lost");
    EXPECT_FALSE(log.save());
    EXPECT_TRUE(log.queue.isEmpty());
    EXPECT_EQ(log.savedCount, 0);
    EXPECT_EQ(QtMessages::texts(), "");
}

TEST_F(FileLogFailure, losesTheBatchBeforeInit)
{
    const QtMessages messages; // Qt warns about opening without a name
    OpenFileLog early(false);
    EXPECT_TRUE(early.save());
    early.info("lost");
    EXPECT_FALSE(early.save());
    EXPECT_TRUE(early.queue.isEmpty());
    EXPECT_EQ(early.savedCount, 0);
    EXPECT_FALSE(early.clear());
    EXPECT_TRUE(early.init(path("log")));
    EXPECT_TRUE(early.save());
    EXPECT_FALSE(exists("log"));
}

TEST_F(FileLogFailure, losesTheBatchOfSaveDatas)
{
    EXPECT_TRUE(log.init(path("missing/log")));
    log.savedCount = 30000;
    EXPECT_FALSE(log.saveDatas({{"lost", 0, 0}}));
    EXPECT_EQ(log.savedCount, 30000); // and no move aside
}

TEST_F(FileLogFailure, countsRecordsThatCouldNotBeWritten)
{
    if (::access("/dev/full", W_OK) != 0)
        GTEST_SKIP() << "no /dev/full";
    const QtMessages messages; // Qt warns about a device without an end to seek to
    ASSERT_EQ(::symlink("/dev/full", path("log").toUtf8().constData()), 0);
    saveLines(3);                                // returns true
    log.info(QString(100000, QLatin1Char('x'))); // more than QFile buffers, so the write itself fails
    saveLines(1);
    EXPECT_EQ(log.savedCount, 5);
    log.savedCount = 29999;
    saveLines(1);
    EXPECT_EQ(log.savedCount, 0);
    EXPECT_TRUE(exists("log.bak"));
    EXPECT_FALSE(exists("log"));
}

// --- Locks ---

static pthread_mutex_t& handleOf(gqdb::CMutex& mutex)
{
    struct Open : gqdb::CMutex {
        static pthread_mutex_t CMutex::*place() { return &Open::handle; }
    };
    return mutex.*Open::place();
}

class FileLogLocks : public FileLog {
protected:
    pthread_mutex_t& queueHandle = handleOf(log.queueMutex);
    pthread_mutex_t& fileHandle = handleOf(log.fileMutex);
    OtherThread other;
};

TEST_F(FileLogLocks, areReleasedByEachOperation)
{
    const std::function<void()> operations[] = {
        [&] { log.info("x"); },
        [&] { log.info("x", 1, 2); },
        [&] { EXPECT_TRUE(log.save()); },
        [&] { EXPECT_TRUE(log.save()); }, // nothing
        [&] {
            EXPECT_TRUE(log.saveDatas({{"x", 0, 0}}));
        },
        [&] { EXPECT_TRUE(log.clear()); },
        [&] { EXPECT_TRUE(log.init(path("missing/log"))); },
        [&] { log.info("x"); },
        [&] { EXPECT_FALSE(log.save()); },
    };
    for (const auto& operation : operations) {
        operation();
        EXPECT_TRUE(isFreeForOthers(queueHandle));
        EXPECT_TRUE(isFreeForOthers(fileHandle));
    }
}

TEST_F(FileLogLocks, areNotLockedByInitClearAndSaveDatas)
{
    other.run([&] {
        log.queueMutex.lock();
        log.fileMutex.lock();
    });
    EXPECT_TRUE(log.init(path("log")));
    EXPECT_TRUE(log.saveDatas({{"x", 0, 0}}));
    EXPECT_TRUE(log.clear());
    other.run([&] {
        log.fileMutex.unlock();
        log.queueMutex.unlock();
    });
}

TEST_F(FileLogLocks, doNotBlockInfoAndAnEmptySaveWhileTheFileIsLocked)
{
    other.run([&] { log.fileMutex.lock(); });
    EXPECT_TRUE(log.save());
    log.info("x");
    log.info("y", 1, 2);
    EXPECT_EQ(log.queue.size(), 2);
    other.run([&] { log.fileMutex.unlock(); });
}

TEST_F(FileLogLocks, makeASaveWaitForTheFileWithTheQueueUnlocked)
{
    log.info("taken");
    other.run([&] { log.fileMutex.lock(); });
    OtherThread saver;
    saver.begin([&] { EXPECT_TRUE(log.save()); });
    const auto queueIsTaken = [&] {
        if (::pthread_mutex_trylock(&queueHandle) != 0)
            return false;
        const bool empty = log.queue.isEmpty();
        ::pthread_mutex_unlock(&queueHandle);
        return empty;
    };
    EXPECT_TRUE(comesTrue(queueIsTaken));
    log.info("later");
    EXPECT_FALSE(exists("log"));
    other.run([&] { log.fileMutex.unlock(); });
    saver.finish();
    EXPECT_EQ(content("log"), "taken\n");
    EXPECT_EQ(log.queue.size(), 1);
}

TEST_F(FileLogLocks, lockOnlyTheFileWhileWriting)
{
    const QtMessages messages; // Qt warns about a pipe, which has no end to seek to
    const QByteArray pipe = path("log").toUtf8();
    ASSERT_EQ(::mkfifo(pipe.constData(), 0600), 0);
    log.info("x");
    other.begin([&] { log.save(); }); // opening blocks until there is a reader
    EXPECT_TRUE(comesTrue([&] { return !isFree(fileHandle); }));
    EXPECT_TRUE(isFree(queueHandle));
    EXPECT_FALSE(isFree(fileHandle));
    const int reader = ::open(pipe.constData(), O_RDONLY | O_NONBLOCK);
    other.finish();
    ::close(reader);
}
