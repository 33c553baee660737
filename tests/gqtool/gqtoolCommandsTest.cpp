// gqtool station --commands FILE: replies of a user's own server, byte for byte.

#include "stationClients.h"

#include <sys/stat.h>

struct CommandsStation : ScriptFile, RunningStation {
    explicit CommandsStation(const QByteArray& text, const QStringList& options = {"--gap", "0"})
        : ScriptFile(text, "commands.json"), RunningStation(QStringList{"--commands", path} + options)
    {
    }
};

static QByteArray frame(const QByteArray& length, const QByteArray& command, const QByteArray& payload)
{
    return QByteArray::fromHex("68" + length + "0500 00 00" + command + payload + "0000 16"); // sequence 5
}

static QByteArray request(const QByteArray& command, const QByteArray& payload)
{
    const QByteArray size(1, static_cast<char>(QByteArray::fromHex(payload).size()));
    return frame(size.toHex() + "000000", command, payload);
}

// Sends requests to a station with these entries, and expects these replies.
static void expectReplies(const QByteArray& entries, const std::vector<std::pair<QByteArray, QByteArray>>& exchanges)
{
    const CommandsStation station("{\"commands\": [" + entries + "]}");
    PlainClient client(station);
    EXPECT_NEXT(client, greeting);
    for (const auto& [sent, reply] : exchanges) {
        client.send(sent);
        EXPECT_NEXT(client, reply);
    }
}

static const QByteArray unknown = frame("04000000", "ff", "f6ffffff"); // error -10

TEST(GqtoolCommands, sendsARecordAsAByteList)
{
    // 18 bytes: value 7, stamp1 10, stamp2 11 ... in the fields of an IntData, and before them their number
    expectReplies(R"({"command": "0x35", "reply": {"as": "intData", "value":
                      {"value": 7, "stamp1": 10, "stamp2": 11, "flag1": 1, "flag2": 2}}})",
                  {{request("35", ""), frame("12000000", "35", "0e000000 07000000 0a000000 0b000000 01 02")}});
}

TEST(GqtoolCommands, sendsEachForm)
{
    expectReplies(R"({"command": 64, "reply": {"int": -2}},
                     {"command": 65, "reply": {"ints": [1, 2]}},
                     {"command": 66, "reply": {"bytes": "0a 0b"}},
                     {"command": 67, "reply": {"strings": ["a", "bc"]}},
                     {"command": 68, "reply": {"payload": "c0ffee"}},
                     {"command": 69, "reply": "echo"},
                     {"command": 80, "error": -7})",
                  {{request("40", ""), frame("04000000", "40", "feffffff")},
                   {request("41", ""), frame("0c000000", "41", "02000000 01000000 02000000")},
                   {request("42", ""), frame("06000000", "42", "02000000 0a0b")},
                   {request("43", ""), frame("0f000000", "43", "02000000 0300 0100 61 0400 0200 6263")},
                   {request("44", ""), frame("03000000", "44", "c0ffee")},
                   {request("45", "010203"), frame("03000000", "45", "010203")},
                   {request("50", ""), frame("04000000", "ff", "f9ffffff")}});
}

TEST(GqtoolCommands, sendsAnArrayAsSeveralFrames)
{
    expectReplies(
        R"({"command": 65, "reply": [{"ints": [1]}, "echo"]})",
        {{request("41", "09"), frame("08000000", "41", "01000000 01000000") + frame("01000000", "41", "09")}});
}

TEST(GqtoolCommands, sendsTheBytesOfAFileNextToIt)
{
    const CommandsStation station(R"({"commands": [{"command": 70, "reply": {"file": "commands.json"}}]})");
    PlainClient client(station);
    EXPECT_NEXT(client, greeting);
    client.send(request("46", ""));
    EXPECT_NEXT(client,
                frame("43000000", "46",
                      QByteArray(R"({"commands": [{"command": 70, "reply": {"file": "commands.json"}}]})").toHex()));
}

TEST(GqtoolCommands, answersWithTheFirstEntryThatFits)
{
    expectReplies(R"({"command": 64, "payload": "07000000", "reply": {"int": 1}},
                     {"command": 64, "payload": "", "reply": {"int": 2}},
                     {"command": 64, "reply": {"int": 3}},
                     {"command": 64, "payload": "08000000", "reply": {"int": 4}})",
                  {{request("40", "07000000"), frame("04000000", "40", "01000000")},
                   {request("40", ""), frame("04000000", "40", "02000000")},
                   {request("40", "08000000"), frame("04000000", "40", "03000000")}});
}

TEST(GqtoolCommands, keepsOnlyTheReadyMadeCommandsBesidesThoseOfTheFile)
{
    expectReplies(R"({"command": 1, "payload": "09000000", "reply": {"int": 77}})",
                  {{request("06", "05000000"), request("06", "05000000")},
                   {request("01", "00000000"), frame("04000000", "01", "05000000")},
                   {request("01", "09000000"), frame("04000000", "01", "4d000000")},
                   {request("03", "00000000"), frame("04000000", "03", "01000000")},
                   {request("01", "00000000"), frame("04000000", "01", "01000000")},
                   {request("20", "01000000"), unknown},
                   {request("35", "00000000"), unknown}});
}

TEST(GqtoolCommands, ignoresTheZerosThatFillUpADatagram)
{
    const CommandsStation station(R"({"commands": [{"command": 64, "payload": "07000000", "reply": {"int": 42}}]})",
                                  {"--udp"});
    const auto callWith = [&](const QString& value) {
        return run({"call", "--udp", "--command", "64", station.endpoint, value});
    };
    EXPECT_EQ(callWith("7").output, "42\n");
    EXPECT_TRUE(callWith("8").errors.contains("failed with -10")) << callWith("8").errors.toStdString();
}

// --- The file -----------------------------------------------------------------------------------------------------

TEST(GqtoolCommands, refusesABadFileWithLineAndPathOfEachError)
{
    const ScriptFile file("{\"commands\": [\n"
                          "  {\"command\": \"0x35\",\n"
                          "   \"reply\": {\"as\": \"noForm\", \"value\": []}},\n"
                          "  {\"command\": 256, \"payload\": \"7\", \"reply\": {\"int\": 1.5}},\n"
                          "  {\"command\": 65, \"reply\": [{\"ints\": [1,\n"
                          "      \"2\"]}, {\"ints\": [3], \"more\": 1}]},\n"
                          "  {\"command\": 66, \"reply\": {\"as\": \"intData\", \"value\": {\"value\": \"x\",\n"
                          "      \"stamp1\": 0, \"stamp2\": 0, \"flag1\": 0, \"flag2\": 0}}},\n"
                          "  {\"command\": 67, \"reply\": {\"int\": 1}, \"error\": 3},\n"
                          "  {\"command\": 68, \"reply\": {\"file\": \"missing\"}, \"delay\": 5},\n"
                          "  5\n"
                          "]}\n",
                          "commands.json");
    const Outcome outcome = run({"station", "--commands", file.path});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, "");
    const char* const beginnings[] = {
        "line 3: commands[0].reply.as must be a form of 'gqtool decode --list', got \"noForm\"",
        "line 4: commands[1].command must be an integer from 0 to 254",
        "line 4: commands[1].payload: '7' must have an even number of hex digits",
        "line 4: commands[1].reply.int must be an integer from -2147483648 to 2147483647, got 1.5",
        "line 6: commands[2].reply[0].ints[1] must be an integer",
        "line 6: commands[2].reply[1].more is unknown; the members are ",
        "line 7: commands[3].reply.value.value must be an integer from -2147483648 to 2147483647, got \"x\"",
        "line 9: commands[4] must have either reply or error",
        "line 10: commands[5].delay is unknown; the members are command, payload, reply, error",
        "line 10: commands[5].reply.file: cannot read ",
        "line 11: commands[6] must be an object, got 5"};
    const QStringList lines = outcome.errors.split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 11) << outcome.errors.toStdString();
    for (int i = 0; i < 11; ++i)
        EXPECT_TRUE(lines[i].startsWith(QString("gqtool: %1: %2").arg(file.path, beginnings[i])))
            << lines[i].toStdString();
}

TEST(GqtoolCommands, refusesContentOfAnotherKind)
{
    const ScriptFile file("{\"commands\": [\n"
                          "  {\"command\": 64, \"payload\": 7, \"reply\": {\"bytes\": true}},\n"
                          "  {\"command\": 65, \"reply\": {\"ints\": 1}},\n"
                          "  {\"command\": 66, \"reply\": {\"strings\": \"a\"}},\n"
                          "  {\"command\": 67, \"reply\": {\"strings\": [null]}},\n"
                          "  {\"command\": 68, \"reply\": {\"file\": 5}},\n"
                          "  {\"command\": 69, \"reply\": []},\n"
                          "  {\"command\": 70, \"reply\": {\"as\": \"intData\"}},\n"
                          "  {\"command\": 71, \"reply\": {\"strings\": [\"" +
                              QByteArray(65534, 'x') + "\"]}}\n]}\n",
                          "commands.json");
    const Outcome outcome = run({"station", "--commands", file.path});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(QString(outcome.errors).remove("gqtool: " + file.path + ": ").toStdString(),
              "line 2: commands[0].payload must be a text of hex digits, two per byte, got 7\n"
              "line 2: commands[0].reply.bytes must be a text of hex digits, two per byte, got true\n"
              "line 3: commands[1].reply.ints must be an array of integers, got 1\n"
              "line 4: commands[2].reply.strings must be an array of texts, got \"a\"\n"
              "line 5: commands[3].reply.strings[0] must be a text, got null\n"
              "line 6: commands[4].reply.file must be the name of a file, got 5\n"
              "line 7: commands[5].reply must have at least one frame\n"
              "line 8: commands[6].reply.value is missing\n"
              "line 9: commands[7].reply.strings[0] must have at most 65533 bytes, got 65534\n"); // 2 length fields
}

TEST(GqtoolCommands, refusesTheCommandOfErrorFrames)
{
    const ScriptFile file(R"({"commands": [{"command": 255, "reply": "echo"}]})", "commands.json");
    EXPECT_EQ(
        run({"station", "--commands", file.path}).errors,
        "gqtool: " + file.path +
            ": line 1: commands[0].command must be an integer from 0 to 254 or a text such as \"0x35\", got 255\n");
}

TEST(GqtoolCommands, limitsTheListOfErrors)
{
    const ScriptFile file("{\"commands\": [5" + QByteArray(", 5").repeated(20) + "]}", "commands.json");
    const QStringList errors = run({"station", "--commands", file.path}).errors.split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(errors.size(), 21);
    EXPECT_EQ(errors[20], "gqtool: 1 more error");
}

TEST(GqtoolCommands, warnsOnceOfEachReadyMadeCommandThatItReplaces)
{
    CommandsStation station("{\"commands\": [{\"command\": 64, \"reply\": \"echo\"},\n"
                            "{\"command\": 2, \"payload\": \"\", \"reply\": {\"int\": 5}},\n"
                            "{\"command\": 2, \"reply\": {\"int\": 6}},\n"
                            "{\"command\": 6, \"reply\": {\"int\": 7}}]}");
    EXPECT_EQ(station.nextError(),
              "gqtool: " + station.path + ": line 2: commands[1].command replaces the ready-made command systemTime");
    EXPECT_EQ(station.nextError(),
              "gqtool: " + station.path + ": line 4: commands[3].command replaces the ready-made command setState");
    EXPECT_EQ(station.call({"systemTime"}).output, "6\n");
}

TEST(GqtoolCommands, acceptsTheExample)
{
    RunningStation station({"--commands", GQLIB_EXAMPLES "/plantCommands.json"});
    EXPECT_EQ(station.call({"ints", "3"}).output, "200\n210\n220\n");
    EXPECT_TRUE(station.call({"ints", "4"}).errors.contains(" failed with -11: error-frame: "));
    EXPECT_EQ(station.call({"--command", "66", "12"}).output, "12\n");
    EXPECT_TRUE(station.call({"--command", "80"}).errors.contains(" failed with -7: error-frame: "));
    const Outcome values = station.call({"--command", "0x35", "--reply", "bytes", "0"});
    EXPECT_TRUE(values.output.startsWith("01 00 00 00")) << values.output.toStdString(); // the count
}

// Reading a pipe or device might never end.
TEST(GqtoolCommands, repliesWithRegularFilesOnly)
{
    const QTemporaryDir folder;
    const QString pipe = folder.filePath("pipe");
    ASSERT_EQ(mkfifo(pipe.toUtf8().constData(), 0600), 0);
    const auto errorsOf = [](const QString& name) {
        const ScriptFile file(R"({"commands": [{"command": 70, "reply": {"file": ")" + name.toUtf8() + R"("}}]})",
                              "commands.json");
        return run({"station", "--commands", file.path}).errors.section(": ", 2).toStdString();
    };
    for (const QString& name : {pipe, QString("/dev/zero")})
        EXPECT_EQ(errorsOf(name),
                  ("line 1: commands[0].reply.file: cannot read " + name + ": not a regular file\n").toStdString());
    EXPECT_EQ(errorsOf("commands\\u0000.json"),
              "line 1: commands[0].reply.file must be the name of a file, got \"commands\\u0000.json\"\n");
}

TEST(GqtoolCommands, refusesDeepNestingWithItsLine)
{
    const ScriptFile file("{\"commands\":\n" + QByteArray(100000, '['), "commands.json");
    EXPECT_EQ(run({"station", "--commands", file.path}).errors,
              "gqtool: " + file.path + ": line 2: must nest at most 1000 arrays and objects\n");
}

TEST(GqtoolCommands, refusesWhatIsNoJsonWithLineAndColumn)
{
    const struct {
        const char* text;
        const char* message;
    } files[] = {{"{\"commands\": [\n1 2]}", ": line 2, column 3: syntax error while parsing array"},
                 {"{\"commands\": [],\n \"commands\": []}", ": line 2: commands is there already, in line 1"},
                 {"{\"a\": {\"b\": 1},\n \"a.b\": 1}", ": line 1: a is unknown"}, // nothing is there twice
                 {"{\"commands\":\n 1e999\n}", ": line 2: number overflow parsing '1e999'"},
                 {"[]", ": must be a JSON object, got []"},
                 {"{}", ": line 1: commands is missing"},
                 {"", ": line 1, column 1: "}};
    for (const auto& bad : files) {
        const ScriptFile file(bad.text, "commands.json");
        const Outcome outcome = run({"station", "--commands", file.path});
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_TRUE(outcome.errors.startsWith("gqtool: " + file.path + bad.message)) << outcome.errors.toStdString();
    }
}

TEST(GqtoolCommands, readsTheFileAgainOnHangupAndKeepsTheOldOneIfItIsBad)
{
    CommandsStation station(R"({"commands": [{"command": 64, "reply": {"int": 1}}]})");
    const auto answerOf64 = [&] { return run({"call", "--command", "64", station.endpoint, "0"}).output; };
    const auto hangUp = [&](const QByteArray& text) {
        station.write(text);
        kill(station.pid(), SIGHUP);
        QString line;
        while (line != "no line" && !line.contains("commands"))
            line = station.nextLine();
        return line;
    };
    EXPECT_EQ(answerOf64(), "1\n");
    EXPECT_EQ(hangUp(R"({"commands": [{"command": 64, "reply": {"int": 2}}, {"command": 65, "error": 1}]})"),
              "commands read: 2");
    EXPECT_EQ(answerOf64(), "2\n");
    EXPECT_EQ(hangUp(R"({"commands": [{"command": 64, "reply": {"int": "3"}}]})"), "commands kept: 2");
    EXPECT_TRUE(station.nextError().contains("line 1: commands[0].reply.int must be an integer"));
    EXPECT_EQ(answerOf64(), "2\n");
}
