// gqtool as a program: command lines, what it prints, exit codes. Station and call meet on loopback.

#include "stationClients.h"
#include "support/gqtoolProgram.h"
#include "support/inputFile.h"
#include "support/terminal.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <ctime>
#include <gtest/gtest.h>

// --- The program --------------------------------------------------------------------------------------------------

TEST(Gqtool, printsItsVersion)
{
    const Outcome outcome = run({"--version"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "gqtool " GQLIB_VERSION "\n");
}

TEST(Gqtool, listsItsCommandsInTheHelp)
{
    const Outcome outcome = run({"--help"});
    EXPECT_EQ(outcome.exitCode, 0);
    for (const char* command : {"station", "call", "probe", "time"})
        EXPECT_TRUE(outcome.output.contains(QString("\n  %1 ").arg(command))) << command;
}

TEST(Gqtool, hasAHelpForEachCommand)
{
    for (const char* command : {"station", "call", "probe", "time"}) {
        const Outcome outcome = run({command, "--help"});
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_TRUE(outcome.output.startsWith(QString("Usage: gqtool %1").arg(command)))
            << outcome.output.toStdString();
    }
}

TEST(Gqtool, exitsWith2OnWrongUsage)
{
    for (const QStringList& arguments : {QStringList{},
                                         {"nonsense"},
                                         {"--nonsense"},
                                         {"station", "--nonsense"},
                                         {"station", "surplus"},
                                         {"station", "--port", "65536"},
                                         {"station", "--late", "-1"},
                                         {"station", "--gap", "-1"},
                                         {"station", "--pieces", "x"},
                                         {"station", "--greeting", "x"},
                                         {"call"},
                                         {"call", "127.0.0.1:1"},
                                         {"call", "127.0.0.1", "systemTime"},
                                         {"call", ":1", "systemTime"},
                                         {"call", "local host:1", "systemTime"},
                                         {"station", "--address", "localhost"},
                                         {"call", "127.0.0.1:0", "systemTime"},
                                         {"call", "127.0.0.1:1", "nonsense"},
                                         {"call", "127.0.0.1:1", "setState"},
                                         {"call", "127.0.0.1:1", "setState", "1", "2"},
                                         {"call", "127.0.0.1:1", "setState", "x"},
                                         {"call", "--timeout", "0", "127.0.0.1:1", "systemTime"}}) {
        SCOPED_TRACE(arguments.join(' ').toStdString());
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_EQ(outcome.output, "");
        EXPECT_TRUE(outcome.errors.startsWith("gqtool: "));
    }
}

static std::string usageMessage(const QStringList& arguments)
{
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.output, "");
    return outcome.errors.toStdString();
}

TEST(GqtoolCall, namesTheArgumentsOfItsCommand)
{
    const struct {
        QStringList words;
        const char* message;
    } cases[] = {
        {{"setState"}, "setState requires VALUE"},
        {{"setState", "1", "2"}, "setState takes only VALUE, got '1 2'"},
        {{"setTime", "1"}, "setTime requires FIRST SECOND"},
        {{"setTime", "1", "2", "3"}, "setTime takes only FIRST SECOND, got '1 2 3'"},
        {{"clear", "1"}, "clear takes no arguments"},
    };
    for (const auto& example : cases)
        EXPECT_EQ(usageMessage(QStringList{"call", "127.0.0.1:1"} + example.words),
                  std::string("gqtool: ") + example.message + "\ngqtool: see 'gqtool call --help'\n");
}

TEST(Gqtool, suggestsACommand)
{
    EXPECT_EQ(usageMessage({"staton"}), "gqtool: unknown command 'staton'; did you mean 'station'?\n"
                                        "gqtool: see 'gqtool --help'\n");
    EXPECT_EQ(usageMessage({"nonsense"}), "gqtool: unknown command 'nonsense'\n"
                                          "gqtool: see 'gqtool --help'\n");
    EXPECT_EQ(usageMessage({"--versoin"}), "gqtool: unknown option '--versoin'; did you mean '--version'?\n"
                                           "gqtool: see 'gqtool --help'\n");
    EXPECT_EQ(usageMessage({"--hlp"}), "gqtool: unknown option '--hlp'; did you mean '--help'?\n"
                                       "gqtool: see 'gqtool --help'\n");
    EXPECT_EQ(usageMessage({"call", "127.0.0.1:1", "setStat", "-5"}),
              "gqtool: unknown COMMAND 'setStat'; did you mean 'setState'?\n"
              "gqtool: see 'gqtool call --help'\n");
}

TEST(Gqtool, describesACommandForHelp)
{
    EXPECT_EQ(run({"help"}).output, run({"--help"}).output);
    EXPECT_EQ(run({"help", "sum"}).output, run({"sum", "--help"}).output);
    EXPECT_EQ(run({"help", "sum"}).exitCode, 0);
    EXPECT_EQ(usageMessage({"help", "staton"}), "gqtool: unknown command 'staton'; did you mean 'station'?\n"
                                                "gqtool: see 'gqtool --help'\n");
}

TEST(Gqtool, suggestsAValueOfAnOption)
{
    const struct {
        QStringList arguments;
        const char* end;
    } cases[] = {
        {{"decode", "--as", "pointRealData_", "00"}, "got 'pointRealData_'; did you mean 'pointRealDatas'?\n"},
        {{"decode", "--as", "frame", "00"}, "got 'frame'; did you mean 'frames'?\n"},
        {{"decode", "--as", "frames", "--payload", "string", "00"}, "got 'string'; did you mean 'strings'?\n"},
        {{"call", "127.0.0.1:1", "--command", "1", "--reply", "byte"}, "got 'byte'; did you mean 'bytes'?\n"},
        {{"sum", "--check", "crc-high", "00"}, "got 'crc-high'\n"},
        {{"sum", "--check", "crc-highfirst", "00"}, "got 'crc-highfirst'; did you mean 'crc-high-first'?\n"},
        {{"decode", "--as", "boolData", "--encoding", "GBKK", "00"}, "got 'GBKK'; did you mean 'GBK'?\n"},
        {{"time", "1", "--zone", "Asia/Shangai"}, "got 'Asia/Shangai'; did you mean 'Asia/Shanghai'?\n"},
    };
    for (const auto& example : cases) {
        const std::string message = usageMessage(example.arguments);
        EXPECT_NE(message.find(example.end), std::string::npos) << message;
    }
}

TEST(Gqtool, suggestsAFormInAFile)
{
    const InputFile json(R"({"as": "boolDat", "value": {}})");
    EXPECT_EQ(run({"encode", json.path}).errors,
              "gqtool: " + json.path +
                  ": as must be a form of 'gqtool decode --list', got \"boolDat\"; did you mean 'boolData'?\n");
    const InputFile commands(R"({"commands": [{"command": 64, "reply": {"as": "boolDat", "value": {}}}]})");
    EXPECT_TRUE(run({"station", "--commands", commands.path}).errors.contains("; did you mean 'boolData'?\n"));
    const InputFile script("reply every silend\n");
    EXPECT_TRUE(run({"station", "--script", script.path}).errors.contains("; did you mean 'silent'?\n"));
}

TEST(Gqtool, suggestsAnOption)
{
    const std::string see = "gqtool: see 'gqtool call --help'\n";
    const std::string timeout = "gqtool: unknown option '--tiemout'; did you mean '--timeout'?\n" + see;
    EXPECT_EQ(usageMessage({"call", "--tiemout", "5", "127.0.0.1:1", "systemState"}), timeout);
    EXPECT_EQ(usageMessage({"call", "--tiemout=5", "127.0.0.1:1", "systemState"}), timeout);
    EXPECT_EQ(usageMessage({"call", "--tiemout"}), timeout); // not: HOST:PORT is required
    EXPECT_EQ(usageMessage({"call", "-json"}), "gqtool: unknown option '-json'; did you mean '--json'?\n" + see);
    EXPECT_EQ(usageMessage({"call", "--nonsense"}), "gqtool: unknown option '--nonsense'\n" + see);
}

TEST(Gqtool, refusesAValueThatIsMissingOrTooMuch)
{
    const std::string see = "gqtool: see 'gqtool call --help'\n";
    EXPECT_EQ(usageMessage({"call", "127.0.0.1:1", "systemState", "--timeout"}),
              "gqtool: --timeout requires MS\n" + see);
    EXPECT_EQ(usageMessage({"call", "127.0.0.1:1", "--json=5", "systemState"}),
              "gqtool: --json takes no value\n" + see);
    EXPECT_EQ(usageMessage({"call", "127.0.0.1:1", "systemState", "--timeout="}),
              "gqtool: --timeout must be an integer from 1 to 2147483647, got ''\n" + see);
    EXPECT_EQ(usageMessage({"encode", "first", "second"}), "gqtool: unexpected argument 'second'\n"
                                                           "gqtool: see 'gqtool encode --help'\n");
}

TEST(Gqtool, takesTheLastOfSeveralValues)
{
    EXPECT_EQ(usageMessage({"call", "--timeout", "1", "--timeout=x", "127.0.0.1:1", "systemState"}),
              "gqtool: --timeout must be an integer from 1 to 2147483647, got 'x'\n"
              "gqtool: see 'gqtool call --help'\n");
    EXPECT_EQ(run({"time", "1", "--json", "--json", "--base", "1", "--base", "86400", "--zone=UTC"}).output,
              run({"time", "1", "--json", "--base=86400", "--zone", "UTC"}).output);
}

TEST(Gqtool, takesWordsAfterTwoDashesAsArguments)
{
    EXPECT_EQ(run({"sum", "--", "01"}).exitCode, 0);
    EXPECT_TRUE(run({"sum", "--", "--raw"}).errors.startsWith("gqtool: BYTES: line 1, column 3: "));
}

TEST(Gqtool, takesWordsInBracketsUnchanged)
{
    EXPECT_TRUE(run({"sum", "[01,02]"}).errors.startsWith("gqtool: BYTES: line 1, column 1: "));
}

TEST(Gqtool, reportsThatMemoryIsShort)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "AddressSanitizer needs more address space than any limit leaves";
#endif
    const InputFile bytes(1000000000);
    const Outcome outcome =
        runProgram("sh", {"-c", "ulimit -v 500000; exec \"$0\" sum --raw --file \"$1\"", GQTOOL, bytes.path});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors.toStdString(), "gqtool: not enough memory\n");
}

TEST(Gqtool, wrapsTheOptionsOfTheHelp)
{
    const QString help = run({"call", "--help"}).output;
    EXPECT_TRUE(help.startsWith("Usage: gqtool call [OPTIONS] HOST:PORT [COMMAND] [INTEGER...]\n\nSends a request "));
    EXPECT_TRUE(help.contains("\n  --count NUMBER      expect a list of NUMBER elements; 0 takes one frame as\n"
                              "                      the whole reply (default: 0)\n"));
    EXPECT_TRUE(help.endsWith("\n  -h, --help          show this help\n"));
    for (const QString& line : help.mid(help.indexOf("\nArguments:")).split('\n'))
        EXPECT_LE(line.size(), 79) << line.toStdString();
}

TEST(GqtoolCall, listsItsCommandsAndForms)
{
    const QString help = run({"call", "--help"}).output;
    EXPECT_TRUE(help.contains("\n\nCommands:\n"
                              "  systemState             get the station's state\n"
                              "  systemTime              get its clock, in seconds since 1970\n"
                              "  clear                   reset it\n"
                              "  setTime FIRST SECOND    set its clock to FIRST; SECOND is not used\n"
                              "  setState VALUE          set its state\n"
                              "  ints COUNT              get integers, one per line\n"
                              "  bytes COUNT             get bytes, in hexadecimal\n"
                              "  strings COUNT           get texts, one per line\n"
                              "  error CODE              get an error frame\n"
                              "\n"))
        << help.toStdString();
    EXPECT_TRUE(help.contains("\n\nForms:\n"
                              "  int      an integer\n"
                              "  ints     a list of integers\n"
                              "  bytes    a list of bytes\n"
                              "  strings  a list of texts\n"
                              "\n"))
        << help.toStdString();
}

// The completion for bash reads the options and the names of their values from the help.
TEST(Gqtool, namesTheValuesOfOptionsInCapitals)
{
    const int descriptionColumn = 22;
    const QRegularExpression option("^  (-[a-z], )?--[a-z0-9-]+( [A-Z]+)? *$");
    for (const char* command : {"station", "call", "probe", "decode", "encode", "sum", "time", "trace", "wave"}) {
        SCOPED_TRACE(command);
        int options = 0;
        for (const QString& line : run({command, "--help"}).output.section("\nOptions:\n", 1).split('\n')) {
            if (!line.startsWith("  -"))
                continue;
            EXPECT_TRUE(option.match(line.left(descriptionColumn)).hasMatch()) << line.toStdString();
            ++options;
        }
        EXPECT_GE(options, 4);
    }
    EXPECT_TRUE(run({"sum", "--help"}).output.contains("\n  --file FILE         read the bytes from FILE; "));
}

// --- Calls to a station that behaves ------------------------------------------------------------------------------

TEST(GqtoolCall, printsOnlyTheReplyOnStandardOutput)
{
    RunningStation station;
    const Outcome outcome = station.call({"systemState"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "1\n");
    EXPECT_EQ(outcome.errors, "");
}

TEST(GqtoolCall, readsTheStationsClock)
{
    RunningStation station;
    const long long before = std::time(nullptr);
    const long long seconds = station.call({"systemTime"}).output.toLongLong();
    EXPECT_GE(seconds, before);
    EXPECT_LE(seconds, std::time(nullptr));
}

TEST(GqtoolCall, setsClockAndStateAndClearsThem)
{
    RunningStation station;
    EXPECT_EQ(station.call({"setTime", "1000000000", "0"}).output, "1\n");
    const long long seconds = station.call({"systemTime"}).output.toLongLong();
    EXPECT_GE(seconds, 1000000000);
    EXPECT_LE(seconds, 1000000060);

    EXPECT_EQ(station.call({"setState", "-5"}).output, "-5\n");
    EXPECT_EQ(station.call({"systemState"}).output, "-5\n");

    EXPECT_EQ(station.call({"clear"}).output, "1\n");
    EXPECT_EQ(station.call({"systemState"}).output, "1\n");
    EXPECT_GE(station.call({"systemTime"}).output.toLongLong(), 1700000000);
}

TEST(GqtoolCall, gathersListsFromSeveralFrames)
{
    RunningStation station({"--gap", "300"});
    const QStringList ints = station.call({"ints", "250"}).output.split('\n');
    EXPECT_EQ(ints.size(), 251); // the last one is empty
    EXPECT_EQ(ints.mid(0, 3).join(' '), "200 210 220");
    EXPECT_EQ(ints[249], "690");

    const QStringList bytes = station.call({"bytes", "4100"}).output.split('\n');
    EXPECT_EQ(bytes[0], "00 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f");
    EXPECT_EQ(bytes[256], "00 01 02 03");

    const QStringList texts = station.call({"strings", "13"}).output.split('\n');
    EXPECT_EQ(texts.size(), 14);
    EXPECT_EQ(texts[0], "unit 1 temperature 1");
    EXPECT_EQ(texts[12], "unit 2 temperature 1");
}

TEST(GqtoolCall, replacesControlCharactersOnATerminalOnly)
{
    // ESC [ 2 J clears the screen, and so does U+009B 2 J. From U+202E on, text runs from right to left.
    const ScriptFile file(R"({"commands": [{"command": 34, "reply": {"strings": [)"
                          R"("\u001b[2J\ta\u009b2J\u007f", "\u2029\u202a\u202e\u202f\u2065\u2066\u2069\u206a"]}}]})",
                          "commands.json");
    RunningStation station({"--commands", file.path});
    EXPECT_EQ(station.call({"strings", "2"}).output,
              QString("\x1b[2J\ta") + QChar(0x9b) + "2J\x7f\n\u2029\u202a\u202e\u202f\u2065\u2066\u2069\u206a\n");

    Terminal terminal;
    QProcess process;
    process.setProcessEnvironment(englishEnvironment());
    process.setStandardOutputFile(terminal.name());
    process.start(GQTOOL, {"call", station.endpoint, "strings", "2"});
    ASSERT_TRUE(process.waitForFinished(waitMs));
    EXPECT_EQ(terminal.shown(), "\ufffd[2J\ta\ufffd2J\ufffd\r\n"
                                "\u2029\ufffd\ufffd\u202f\u2065\ufffd\ufffd\u206a\r\n");
}

TEST(GqtoolCall, printsTheCodeOfAnErrorFrame)
{
    RunningStation station;
    const Outcome outcome = station.call({"error", "-7"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, "gqtool: request 'error' to " + station.endpoint +
                                  " failed with -7: error-frame: the server's own code, from an error frame\n");
}

TEST(GqtoolCall, isRefusedACountThatIsTooLarge)
{
    RunningStation station;
    for (const char* count : {"0", "-1", "1001"}) {
        const Outcome outcome = station.call({"ints", count});
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_TRUE(outcome.errors.contains(" failed with -11:")) << outcome.errors.toStdString();
    }
    const Outcome none = station.call({"--command", "0x20"});
    EXPECT_EQ(none.exitCode, 1);
    EXPECT_TRUE(none.errors.contains(" failed with -11:")) << none.errors.toStdString();
}

TEST(GqtoolCall, failsWithoutAServer)
{
    QString endpoint;
    {
        RunningStation station;
        endpoint = station.endpoint;
    }
    const Outcome outcome = run({"call", endpoint, "systemState"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.errors.contains(" failed with -1:")) << outcome.errors.toStdString();
}

// --- Stations that misbehave --------------------------------------------------------------------------------------

TEST(GqtoolStation, reportsEachConnectionAndRequest)
{
    RunningStation station;
    station.call({"setTime", "1", "2"});
    const QString connected = station.nextLine();
    EXPECT_TRUE(connected.endsWith(" connected")) << connected.toStdString();
    const QString peer = connected.split(' ')[0];
    EXPECT_EQ(station.nextLine(), peer + " command 0x05, 21 bytes: answered with 17 bytes");
    EXPECT_EQ(station.nextLine(), peer + " gone");
}

TEST(GqtoolStation, refusesAPortThatIsTaken)
{
    RunningStation station;
    const Outcome outcome = run({"station", "--port", station.endpoint.split(':')[1]});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "gqtool: cannot listen on " + station.endpoint + ": Address already in use\n");
}

TEST(GqtoolStation, sendsRepliesInPieces)
{
    RunningStation station({"--pieces", "1"});
    EXPECT_EQ(station.call({"strings", "1"}).output, "unit 1 temperature 1\n");
}

TEST(GqtoolStation, delaysReplies)
{
    RunningStation inTime({"--late", "10"});
    EXPECT_EQ(inTime.call({"systemState"}).exitCode, 0);
    RunningStation tooLate({"--late", "2000"});
    EXPECT_TRUE(tooLate.callWithoutReply().errors.contains(" failed with 0:"));
}

TEST(GqtoolStation, staysSilent)
{
    RunningStation station({"--silent"});
    EXPECT_TRUE(station.callWithoutReply().errors.contains(" failed with 0:"));
    station.nextLine();
    EXPECT_TRUE(station.nextLine().endsWith(": not answered"));
}

TEST(GqtoolStation, endsFramesWithAWrongByte)
{
    RunningStation station({"--wrong-end"});
    EXPECT_TRUE(station.call({"systemState"}).errors.contains(" failed with 0:"));
}

TEST(GqtoolStation, closesInsteadOfReplying)
{
    RunningStation station({"--close"});
    EXPECT_TRUE(station.call({"systemState"}).errors.contains(" failed with -1:"));
}

TEST(GqtoolStation, greetsWithTheGivenNumber)
{
    RunningStation other({"--greeting", "99"});
    EXPECT_EQ(other.call({"systemState"}).output, "1\n");
    RunningStation refused({"--greeting", "-1"});
    EXPECT_TRUE(refused.call({"systemState"}).errors.contains(" failed with 0:"));
    RunningStation mute({"--no-greeting"});
    EXPECT_TRUE(mute.callWithoutReply().errors.contains(" failed with 0:"));
}
