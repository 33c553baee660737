// gqtool under odd input: numbers with leading zeros, addresses that are none.

#include "support/gqtoolProgram.h"
#include "support/inputFile.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

TEST(GqtoolCall, readsLeadingZerosAsDecimal)
{
    RunningStation station;
    EXPECT_EQ(station.call({"setState", "010"}).output, "10\n");
}

TEST(GqtoolCall, readsLeadingZerosOfAPortAsDecimal)
{
    const Outcome outcome = run({"call", "127.0.0.1:00008", "systemState"}); // nothing listens on port 8
    EXPECT_EQ(outcome.exitCode, 1) << outcome.errors.toStdString();
}

TEST(GqtoolStation, refusesAnInvalidAddress)
{
    for (const char* address : {"nonsense", "localhost", "300.1.1.1", "127.0.0.1 nonsense", "1.2.3", "127.0.0.010",
                                "0x7f.0.0.1", "2130706433", ""}) {
        for (const QStringList& command :
             {QStringList{"station"}, QStringList{"trace", "--listen", "0", "127.0.0.1:5000"}}) {
            SCOPED_TRACE((command[0] + ' ' + address).toStdString());
            const Outcome outcome = run(command + QStringList{"--address", address});
            EXPECT_EQ(outcome.exitCode, 2);
            EXPECT_EQ(outcome.output, "");
            const QString error = "ADDRESS must be dotted IPv4, four numbers from 0 to 255, got '%1'\n";
            EXPECT_TRUE(outcome.errors.contains(error.arg(address))) << outcome.errors.toStdString();
        }
    }
}

TEST(GqtoolStation, reportsThatItsScriptCannotBeRead)
{
    const Outcome outcome = run({"station", "--script", "/proc/self/mem"}); // opens, and fails to be read
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_TRUE(outcome.errors.startsWith("gqtool: cannot read /proc/self/mem: Input/output error\n"))
        << outcome.errors.toStdString();
}

TEST(GqtoolStation, refusesFilesWithoutAnEnd)
{
    const struct {
        const char* option;
        const char* error;
    } cases[] = {
        {"--script", "gqtool: cannot read /dev/zero: more than 1048576 bytes\n"},
        {"--commands", "gqtool: cannot read /dev/zero: more than 16777216 bytes\n"},
        {"--replay", "gqtool: /dev/zero: line 1: must be a JSON object of 'gqtool trace --record'\n"},
    };
    for (const auto& example : cases) {
        SCOPED_TRACE(example.option);
        const Outcome outcome = run({"station", example.option, "/dev/zero"});
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(outcome.errors.toStdString(), example.error);
    }
}

TEST(GqtoolStation, readsItsScriptAfterAZeroByte)
{
    const InputFile script(QByteArray("# \0\nnonsense\n", 13));
    const Outcome outcome = run({"station", "--script", script.path});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.errors.contains(": line 2: ")) << outcome.errors.toStdString();
}

TEST(GqtoolOddInput, printsFileNamesWithPlaceholdersUnchanged)
{
    const QTemporaryDir folder;
    const auto errorsOf = [&](const QString& option, const QByteArray& text) {
        writeTo(folder.filePath("%1%2%3"), text);
        return run({"station", option, folder.filePath("%1%2%3")}).errors.remove(folder.path()).toStdString();
    };
    EXPECT_EQ(errorsOf("--replay", "{\"x\": 1}\n"),
              "gqtool: /%1%2%3: line 1: from must be client or station, got null\n");
    EXPECT_EQ(errorsOf("--script", "nonsense\n").substr(0, 25), "gqtool: /%1%2%3: line 1: ");
    EXPECT_EQ(errorsOf("--commands", "{\"x\": 1}").substr(0, 25), "gqtool: /%1%2%3: line 1: ");
}

// For the JSON parser, a zero byte ends the text.
TEST(GqtoolOddInput, refusesAZeroByteInJson)
{
    const QByteArray document = run({"decode", "--as", "boolData", "--json", "0110270000fa00000002"}).output.toUtf8();
    const auto lastLine = document.count('\n') + 1;
    const InputFile good(document);
    EXPECT_EQ(run({"encode", good.path}).errors.toStdString(), "");
    for (const QByteArray& text : {document + '\0', document + QByteArray("\0rest", 5), '\0' + document}) {
        const InputFile file(text);
        const Outcome outcome = run({"encode", file.path});
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(outcome.errors.toStdString(),
                  ("gqtool: " + file.path + ": line " + QString::number(text.startsWith(document) ? lastLine : 1) +
                   ": must not contain a zero byte\n")
                      .toStdString());
    }
    const InputFile commands(QByteArray("{\"commands\":\n []}") + QByteArray("\0\n\0", 3));
    const Outcome outcome = run({"station", "--commands", commands.path});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors.toStdString(),
              ("gqtool: " + commands.path + ": line 2: must not contain a zero byte\n").toStdString());
}

// By default SIGXFSZ would end the program.
TEST(GqtoolOddInput, reportsAFileThatExceedsItsSizeLimit)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("table.csv");
    const QByteArray list = "a0860100" + QByteArray("0110270000fa00000002").repeated(100000);
    const InputFile input(list);
    const Outcome outcome =
        runProgram("sh", {"-c", "ulimit -f 1; exec \"$0\" decode --as boolDatas --csv \"$1\" --file \"$2\"", GQTOOL,
                          path, input.path});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors.toStdString(), ("gqtool: cannot write to " + path + ": File too large\n").toStdString());
}
