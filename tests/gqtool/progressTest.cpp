// The progress line, on standard error made a terminal.

#include "shared/progress.h"
#include "support/plainSockets.h"
#include "support/terminal.h"

#include <gtest/gtest.h>

#include <poll.h>
#include <unistd.h>

TEST(Progress, showsALineAndClearsItAtItsEnd)
{
    Terminal terminal;
    const Replacement standardError(STDERR_FILENO, terminal.device);
    {
        Progress progress;
        progress.show("1 of 2");
        EXPECT_EQ(terminal.shown(), clearLine + "1 of 2");
    }
    EXPECT_EQ(terminal.shown(), clearLine);
}

TEST(Progress, overwritesItsLine)
{
    Terminal terminal;
    const Replacement standardError(STDERR_FILENO, terminal.device);
    Progress first;
    first.show("half");
    Progress second; // has not shown anything yet, and so does not skip
    second.show("whole");
    EXPECT_EQ(terminal.shown(), clearLine + "half" + clearLine + "whole");
}

TEST(Progress, skipsFastChanges)
{
    Terminal terminal;
    const Replacement standardError(STDERR_FILENO, terminal.device);
    Progress progress;
    for (int i = 0; i < 100; ++i)
        progress.show(QString::number(i));
    EXPECT_LT(terminal.shown().size(), 100 * clearLine.size());
}

TEST(Progress, cutsALineThatWouldWrap)
{
    for (const unsigned short width : {0, 20}) {
        Terminal terminal(width);
        const Replacement standardError(STDERR_FILENO, terminal.device);
        Progress progress;
        progress.show(QString(200, 'x'));
        EXPECT_EQ(terminal.shown(), clearLine + std::string(width == 0 ? 79 : 19, 'x'));
    }
}

// A Chinese character takes two columns.
TEST(Progress, cutsALineByItsColumns)
{
    Terminal terminal(10);
    const Replacement standardError(STDERR_FILENO, terminal.device);
    Progress progress;
    progress.show("1 \u4e2d\u6587\u4e2d\u6587");
    EXPECT_EQ(terminal.shown(), clearLine + "1 \u4e2d\u6587\u4e2d");
}

// 😀 is two units of UTF-16.
TEST(Progress, cutsWholeCharacters)
{
    Terminal terminal(4);
    const Replacement standardError(STDERR_FILENO, terminal.device);
    Progress progress;
    progress.show("12\U0001f600");
    EXPECT_EQ(terminal.shown(), clearLine + "12");
}

TEST(Progress, replacesWhatATerminalObeys)
{
    Terminal terminal(40);
    const Replacement standardError(STDERR_FILENO, terminal.device);
    Progress progress;
    progress.show("a\x1b]0;b\a\u202ec");
    EXPECT_EQ(terminal.shown(), clearLine + "a\ufffd]0;b\ufffd\ufffdc");
}

TEST(Progress, isClearedOnceBeforeOtherLines)
{
    Terminal terminal;
    const Replacement standardError(STDERR_FILENO, terminal.device);
    Progress progress;
    clearProgress();
    EXPECT_EQ(terminal.shown(), "");
    progress.show("half");
    clearProgress();
    clearProgress();
    EXPECT_EQ(terminal.shown(), clearLine + "half" + clearLine);
}

TEST(Progress, isSilentIfStandardErrorIsNotATerminal)
{
    Pipe pipe;
    const Replacement standardError(STDERR_FILENO, pipe.writeEnd);
    {
        Progress progress;
        progress.show("half");
    }
    EXPECT_FALSE(becomes(pipe.readEnd, POLLIN, 0));
}
