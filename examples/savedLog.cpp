// Two threads write to a log. A third one saves it ten times a second.
//   savedLog FILE LINES

#include <gqLib/gqFileLog.h>
#include <gqLib/gqLibUnix.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>

//! [saver]
// Saves the lines that other threads queue, until end() is called.
class Saver : public gqdb::CThread {
public:
    explicit Saver(CGqFileLog& savedLog) : log(savedLog) {}

    void run() override
    {
        while (!ending) {
            if (!log.save())
                lost = true;
            gqdb::sleep(100);
        }
    }

    // Ends the thread. Lines that are still queued then are left to the caller. Returns false if lines were lost.
    bool end()
    {
        ending = true;
        while (isRunning()) // there is no join
            gqdb::sleep(1);
        return !lost;
    }

private:
    CGqFileLog& log;
    std::atomic<bool> ending{false};
    std::atomic<bool> lost{false};
};
//! [saver]

class Writer : public gqdb::CThread {
public:
    Writer(CGqFileLog& writtenLog, const char* name, int lines) : log(writtenLog), writer(name), count(lines) {}

    void run() override
    {
        for (int i = 1; i <= count; ++i)
            log.info(QString("%1 %2").arg(writer).arg(i));
    }

private:
    CGqFileLog& log;
    const char* writer;
    int count;
};

int main(int argc, char* argv[])
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: savedLog FILE LINES\n");
        return 2;
    }
    //! [main]
    CGqFileLog log;
    log.init(argv[1]); // once, before any thread uses the log
    Saver saver(log);
    saver.start();

    Writer first(log, "first", std::atoi(argv[2]));
    Writer second(log, "second", std::atoi(argv[2]));
    first.start();
    second.start();
    while (first.isRunning() || second.isRunning())
        gqdb::sleep(1);

    const bool saved = saver.end() && log.save(); // the last lines, which the destructor would discard
    //! [main]
    if (!saved)
        std::fprintf(stderr, "savedLog: cannot write %s\n", argv[1]);
    return saved ? 0 : 1;
}
