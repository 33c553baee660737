// longLog LINES
//
// Writes a log of many lines on a small disk, which is full from time to time, and checks every line of every file that
// the log moves aside: lines are lost or cut only while the disk is full, and no line occurs twice or out of order.
// Prints what it found. Exits with 77 if it may not mount a disk.

#include "support/smallDisk.h"

#include "gqFileLog.h"

#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include <unistd.h>

static const long long batchLines = 1000;
static const long long fileLines = 30000;  // after which the log is moved aside
static const long long faultLines = 70000; // the disk becomes full once in so many lines

static std::string lineOf(long long number)
{
    return std::to_string(number) + ' ' + std::string(static_cast<size_t>(number % 97), 'x') + " end";
}

// The disk is full while the last 3000 of `faultLines` are saved.
static bool isFullAt(long long number)
{
    return number % faultLines >= faultLines - 3 * batchLines;
}

class LineCheck {
public:
    // Checks the lines of a file, which are the next ones.
    void read(const std::string& path)
    {
        std::ifstream file(path);
        for (std::string line; std::getline(file, line);)
            take(line);
        if (file.bad() || !file.eof())
            fail("cannot read " + path);
    }

    // All lines below `end` have been saved.
    void finish(long long end) { skipTo(end); }

    long long whole = 0;
    long long cut = 0;
    long long lost = 0;

private:
    [[noreturn]] static void fail(const std::string& message)
    {
        std::fprintf(stderr, "longLog: %s\n", message.c_str());
        std::exit(1);
    }

    // A line that is cut has no line end: the next one follows it, or it ends the file.
    void take(const std::string& line)
    {
        const size_t start = lineStart(line);
        if (start > 0)
            takeCut(line.substr(0, start));
        if (start == line.size())
            return;
        skipTo(std::atoll(line.c_str() + start));
        ++whole;
        ++next;
    }

    // The line after the last whole one, since the disk has become full within it.
    void takeCut(const std::string& part)
    {
        if (!isFullAt(next) || lineOf(next).compare(0, part.size(), part) != 0)
            fail("'" + part + "' must be line " + std::to_string(next));
        ++cut;
        ++next;
    }

    // The start of the whole line at the end; the size if there is none.
    static size_t lineStart(const std::string& line)
    {
        for (size_t start = 0; start < line.size(); ++start) {
            const bool isDigit = line[start] >= '0' && line[start] <= '9';
            if (isDigit && line.compare(start, std::string::npos, lineOf(std::atoll(line.c_str() + start))) == 0)
                return start;
        }
        return line.size();
    }

    void skipTo(long long number)
    {
        if (number < next)
            fail("line " + std::to_string(number) + " occurs again or late");
        for (; next < number; ++next) {
            if (!isFullAt(next))
                fail("line " + std::to_string(next) + " is lost, although the disk had space");
            ++lost;
        }
    }

    long long next = 0;
};

class SmallLog {
public:
    explicit SmallLog(const QString& folder) : path(folder + "/log"), filler((folder + "/filler").toStdString())
    {
        log.init(path);
    }

    void write(long long lines)
    {
        for (long long number = 0; number < lines; number += batchLines) {
            setFull(isFullAt(number));
            for (long long i = number; i < number + batchLines; ++i)
                log.info(QString::fromStdString(lineOf(i)));
            if (!log.save())
                ++failedSaves;
            if ((number + batchLines) % fileLines == 0) {
                check.read((path + ".bak").toStdString());
                ++files;
            }
        }
        setFull(false);
        if (lines % fileLines != 0)
            check.read(path.toStdString());
        check.finish(lines);
    }

    LineCheck check;
    long long files = 0;
    long long fullTimes = 0;
    long long failedSaves = 0;

private:
    void setFull(bool wanted)
    {
        if (wanted && !isFull) {
            std::ofstream(filler, std::ios::binary) << std::string(16 << 20, 'f');
            ++fullTimes;
        } else if (!wanted && isFull) {
            unlink(filler.c_str());
        }
        isFull = wanted;
    }

    const QString path;
    const std::string filler;
    CGqFileLog log{false};
    bool isFull = false;
};

int main(int argc, char* argv[])
{
    const long long lines = argc == 2 ? std::atoll(argv[1]) / batchLines * batchLines : 0;
    if (lines == 0) {
        std::fprintf(stderr, "usage: longLog LINES, at least %lld\n", batchLines);
        return 2;
    }
    const QTemporaryDir folder;
    const SmallDisk disk(folder.path().toStdString(), "size=12m");
    if (!disk.exists()) {
        std::puts("skipped: may not mount a disk here");
        return 77;
    }
    SmallLog log(folder.path());
    log.write(lines);
    const LineCheck& found = log.check;
    std::printf("%lld lines: %lld whole, %lld cut and %lld lost while the disk was full (%lld times); "
                "%lld files moved aside, %lld saves failed\n",
                lines, found.whole, found.cut, found.lost, log.fullTimes, log.files, log.failedSaves);
    const bool isTried = lines < 2 * faultLines || (found.lost > 0 && found.cut > 0);
    return found.whole + found.cut + found.lost == lines && log.failedSaves == 0 && isTried ? 0 : 1;
}
