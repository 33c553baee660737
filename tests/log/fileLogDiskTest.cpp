// A log whose disk is full or missing: the result of a save, what is lost, and that the next save works again.

#include "support/logFolder.h"
#include "support/smallDisk.h"

#include "gqFileLog.h"

#include <QDir>

#include <gtest/gtest.h>

#include <string>

class FileLogDisk : public LogFolder {
protected:
    void SetUp() override
    {
        LogFolder::SetUp();
        log.init(path("log"));
    }

    bool saves(const QString& text)
    {
        log.info(text);
        return log.save();
    }

    // Fills the disk.
    void fill() const { write("filler", std::string(1 << 20, 'f')); }
    void makeRoom() const { ASSERT_TRUE(QFile::remove(path("filler"))); }

    std::string disk() const { return folder.path().toStdString(); }

    OpenFileLog log{false};
};

static const char noRights[] = "may not mount a disk here";

TEST_F(FileLogDisk, returnsTrueOnAFullDiskAndContinuesOnceThereIsSpace)
{
    const SmallDisk small(disk(), "size=64k");
    if (!small.exists())
        GTEST_SKIP() << noRights;
    EXPECT_TRUE(saves("before"));
    fill();
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(saves(QString(20000, QLatin1Char('x'))));
    EXPECT_TRUE(log.queue.isEmpty());
    EXPECT_EQ(log.savedCount, 4);

    // Only what fitted in the file's page. The truncated line has no line end.
    const std::string full = content("log");
    EXPECT_EQ(full, "before\n" + std::string(4096 - 7, 'x'));

    makeRoom();
    EXPECT_TRUE(saves("after"));
    EXPECT_EQ(content("log"), full + "after\n");
    EXPECT_EQ(log.savedCount, 5);
}

TEST_F(FileLogDisk, movesAsideOnAFullDisk)
{
    const SmallDisk small(disk(), "size=64k");
    if (!small.exists())
        GTEST_SKIP() << noRights;
    EXPECT_TRUE(saves("before"));
    fill();
    log.savedCount = 29999;
    EXPECT_TRUE(saves("full"));
    EXPECT_FALSE(exists("log"));
    EXPECT_EQ(log.savedCount, 0);
    EXPECT_TRUE(saves("lost")); // to a new file, which has no page
    EXPECT_EQ(content("log"), "");
    makeRoom();
    EXPECT_TRUE(saves("after"));
    EXPECT_EQ(content("log"), "after\n");
    EXPECT_EQ(content("log.bak"), "before\nfull\n");
}

TEST_F(FileLogDisk, failsIfNoFileCanBeCreatedAndContinuesOnceItCan)
{
    const SmallDisk small(disk(), "nr_inodes=2");
    if (!small.exists())
        GTEST_SKIP() << noRights;
    write("filler", "");
    EXPECT_FALSE(saves("lost"));
    EXPECT_TRUE(log.queue.isEmpty());
    EXPECT_EQ(log.savedCount, 0);
    makeRoom();
    EXPECT_TRUE(saves("after"));
    EXPECT_EQ(content("log"), "after\n");
}

TEST_F(FileLogDisk, failsWhileTheDiskIsReadOnly)
{
    SmallDisk small(disk(), "size=64k");
    if (!small.exists())
        GTEST_SKIP() << noRights;
    EXPECT_TRUE(saves("before"));
    ASSERT_TRUE(small.makeReadOnly(true));
    EXPECT_FALSE(saves("lost"));
    EXPECT_EQ(log.savedCount, 1);
    ASSERT_TRUE(small.makeReadOnly(false));
    EXPECT_TRUE(saves("after"));
    EXPECT_EQ(content("log"), "before\nafter\n");
}

TEST_F(FileLogDisk, failsWhileTheFolderIsMissing)
{
    ASSERT_TRUE(QDir(folder.path()).mkdir("logs"));
    log.init(path("logs/log"));
    EXPECT_TRUE(saves("before"));
    ASSERT_TRUE(QDir(path("logs")).removeRecursively());
    EXPECT_FALSE(saves("lost"));
    EXPECT_TRUE(log.queue.isEmpty());
    EXPECT_EQ(log.savedCount, 1);
    ASSERT_TRUE(QDir(folder.path()).mkdir("logs"));
    EXPECT_TRUE(saves("after"));
    EXPECT_EQ(content("logs/log"), "after\n");
    EXPECT_EQ(log.savedCount, 2);
}
