#include "support/logFolder.h"

#include <algorithm>
#include <atomic>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

static constexpr int writerCount = 8;
static constexpr int linesPerWriter = 3125;
static constexpr int rounds = 4; // of 25,000 lines each, too few for a move aside

using Numbers = std::vector<int>;

class FileLogThreads : public LogFolder {
protected:
    // Eight threads write lines "writer number", with numbers from 0, while others save.
    void writeWhileSaving(int saverCount)
    {
        OpenFileLog log(false);
        ASSERT_TRUE(log.init(path("log")));

        std::atomic<bool> written = false;
        std::vector<std::thread> savers;
        for (int i = 0; i < saverCount; ++i) {
            savers.emplace_back([&] {
                while (!written)
                    EXPECT_TRUE(log.save());
            });
        }
        std::vector<std::thread> writers;
        for (int writer = 0; writer < writerCount; ++writer) {
            writers.emplace_back([&log, writer] {
                for (int number = 0; number < linesPerWriter; ++number)
                    log.info(QString("%1 %2").arg(writer).arg(number));
            });
        }

        for (std::thread& writer : writers)
            writer.join();
        written = true;
        for (std::thread& saver : savers)
            saver.join();
        EXPECT_TRUE(log.save());
        EXPECT_EQ(log.savedCount, writerCount * linesPerWriter);
    }

    // Returns the numbers of each writer in the order of the file, and removes the file.
    std::vector<Numbers> takeNumbers()
    {
        std::vector<Numbers> numbers(writerCount);
        std::istringstream file(content("log"));
        std::string line;
        while (std::getline(file, line)) {
            std::istringstream words(line);
            int writer = 0;
            int number = 0;
            EXPECT_TRUE(words >> writer >> number && words.eof()) << line;
            numbers.at(size_t(writer)).push_back(number);
        }
        EXPECT_TRUE(QFile::remove(path("log")));
        return numbers;
    }

    static Numbers allNumbers()
    {
        Numbers all;
        for (int number = 0; number < linesPerWriter; ++number)
            all.push_back(number);
        return all;
    }
};

TEST_F(FileLogThreads, writeEachLineOnceInOrderWithOneSavingThread)
{
    for (int round = 0; round < rounds; ++round) {
        writeWhileSaving(1);
        for (const Numbers& numbers : takeNumbers())
            EXPECT_EQ(numbers, allNumbers());
    }
}

// Batches of two saving threads may be in either order.
TEST_F(FileLogThreads, writeEachLineOnceWithTwoSavingThreads)
{
    for (int round = 0; round < rounds; ++round) {
        writeWhileSaving(2);
        for (Numbers& numbers : takeNumbers()) {
            std::sort(numbers.begin(), numbers.end());
            EXPECT_EQ(numbers, allNumbers());
        }
    }
}
