// Each allocation of the log fails. After each failure both locks are free, the file is closed, and the next calls queue
// and save as usual.

#include "support/failingAllocations.h"
#include "support/logFolder.h"
#include "support/threads.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

static const QString longText(20000, 'x'); // more than a QFile buffers

class LogAllocation : public LogFolder {
protected:
    // A log without times and with two queued records.
    std::unique_ptr<OpenFileLog> makeLog() const
    {
        auto log = std::make_unique<OpenFileLog>(false);
        log->init(path("log"));
        log->info(longText, 1, 0);
        log->info("水", 2, 0);
        return log;
    }

    // Both locks are free, and a further record is saved.
    void expectUsable(OpenFileLog& log) const
    {
        const AllocationsUntouched untouched;
        EXPECT_TRUE(isFreeForOthers(lockOf(log.queueMutex)));
        EXPECT_TRUE(isFreeForOthers(lockOf(log.fileMutex)));
        EXPECT_FALSE(log.file.isOpen());
        log.save(); // what is still queued
        const std::string before = content("log");
        log.info("next", 3, 0);
        EXPECT_TRUE(log.save());
        EXPECT_EQ(content("log"), before + "next\n");
    }

    static pthread_mutex_t& lockOf(gqdb::CMutex& mutex)
    {
        struct Lock : gqdb::CMutex {
            static pthread_mutex_t CMutex::*place() { return &Lock::handle; }
        };
        return mutex.*Lock::place();
    }

    void removeFiles() const
    {
        for (const char* name : {"log", "log.bak"})
            ::unlink(path(name).toUtf8().constData());
    }

    // Saves with each allocation failing, and expects some of the lines, each whole or cut, in the file.
    void failInSave(int savedBefore, bool showTime)
    {
        const std::string whole = longText.toStdString() + "\n水\n";
        failEachAllocation([&] {
            removeFiles();
            const std::unique_ptr<OpenFileLog> log = makeLog();
            log->savedCount = savedBefore;
            log->withTime = showTime;
            bool saved = false;
            const bool done = attempt([&] { saved = log->save(); });
            {
                const AllocationsUntouched untouched;
                EXPECT_TRUE(log->queue.isEmpty());
                const std::string lines = exists("log") ? content("log") : content("log.bak");
                EXPECT_TRUE(showTime || whole.compare(0, lines.size(), lines) == 0);
                EXPECT_TRUE(failedAllocations() > 0 || (saved && lines.size() >= whole.size()));
                EXPECT_LE(log->savedCount, savedBefore + 2);
                EXPECT_TRUE(done || log->savedCount >= savedBefore); // the next save() renames
            }
            log->withTime = false;
            log->savedCount = 0;
            expectUsable(*log);
        });
    }
};

TEST_F(LogAllocation, makesNoLogOrAWholeOne)
{
    failEachAllocation([&] {
        std::unique_ptr<OpenFileLog> log;
        const bool done = attempt([&] { log = std::make_unique<OpenFileLog>(); });
        EXPECT_EQ(log != nullptr, done);
    });
}

TEST_F(LogAllocation, keepsTheFileOrTakesTheNewOne)
{
    const QString other = path("log");
    failEachAllocation([&] {
        OpenFileLog log(false);
        log.init(path("before"));
        log.savedCount = 7;
        const bool done = attempt([&] { EXPECT_TRUE(log.init(other)); });
        EXPECT_TRUE(done || log.savedCount == 7);
        EXPECT_EQ(log.file.fileName(), done ? other : path("before"));
        log.init(other);
        expectUsable(log);
    });
}

TEST_F(LogAllocation, queuesTheRecordOrLeavesTheQueue)
{
    for (const int queued : {0, 1, 4, 8, 64}) {
        failEachAllocation([&] {
            OpenFileLog log(false);
            log.init(path("log"));
            for (int i = 0; i < queued; ++i)
                log.info("before", 1, 0);
            const bool done = attempt([&] { log.info("text", 2, 5); });
            EXPECT_EQ(log.queue.size(), done ? queued + 1 : queued);
            EXPECT_TRUE(!done || log.queue.last().text == "text");
            expectUsable(log);
        });
    }
    failEachAllocation([&] {
        OpenFileLog log(false);
        log.init(path("log"));
        const bool done = attempt([&] { log.info("text"); });
        EXPECT_EQ(log.queue.size(), done ? 1 : 0);
        expectUsable(log);
    });
}

TEST_F(LogAllocation, savesSomeLinesAndClosesTheFile)
{
    failInSave(0, false);
    failInSave(0, true);
}

TEST_F(LogAllocation, savesSomeLinesAndKeepsAFileUnderOneOfItsNames)
{
    failInSave(29999, false);
}

TEST_F(LogAllocation, removesTheFileOrLeavesIt)
{
    failEachAllocation([&] {
        OpenFileLog log(false);
        log.init(path("log"));
        log.info("text", 1, 0);
        log.save();
        bool removed = false;
        const bool done = attempt([&] { removed = log.clear(); });
        EXPECT_TRUE(!done || removed != exists("log"));
        EXPECT_TRUE(failedAllocations() > 0 || removed);
        expectUsable(log);
    });
}
