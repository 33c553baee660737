// gqtool in Chinese.

#include "shared/text.h"
#include "support/gqtoolProgram.h"
#include "support/inputFile.h"
#include "support/textCatalogue.h"

#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>

static const QStringList subCommands = {"station", "call", "probe", "decode", "encode", "sum", "time", "trace", "wave"};

using Variables = std::vector<std::pair<const char*, const char*>>;

// An environment with these variables, and no others that choose a language.
static QProcessEnvironment environmentWith(const Variables& variables)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG", "LANGUAGE"})
        environment.remove(name);
    for (const auto& [name, value] : variables)
        environment.insert(name, value);
    return environment;
}

static Outcome runWith(const Variables& variables, const QStringList& arguments)
{
    return runProgram(GQTOOL, arguments, environmentWith(variables));
}

static Outcome runInChinese(const QStringList& arguments)
{
    return run(QStringList{"--lang", "zh"} + arguments);
}

// --- The choice ---------------------------------------------------------------------------------------------------

struct Choice {
    Variables variables;
    bool isChinese;
};

TEST(GqtoolLanguage, followsTheLocaleAsGettextDoes)
{
    const Choice choices[] = {
        {{}, false},
        {{{"LANG", "zh_CN.UTF-8"}}, true},
        {{{"LANG", "zh_CN.utf8"}}, true},
        {{{"LANG", "zh_SG"}}, true},
        {{{"LANG", "zh_CN.UTF-8@pinyin"}}, true},
        {{{"LANG", "zh_CN.GBK"}}, false}, // output is UTF-8
        {{{"LANG", "de_DE.UTF-8"}}, false},
        {{{"LANG", "en_GB.UTF-8"}, {"LC_MESSAGES", "zh_CN.UTF-8"}}, true},
        {{{"LANG", "zh_CN.UTF-8"}, {"LC_MESSAGES", "en_GB.UTF-8"}}, false},
        {{{"LC_ALL", "C"}, {"LANG", "zh_CN.UTF-8"}}, false},
        {{{"LC_ALL", "zh_CN.UTF-8"}, {"LC_MESSAGES", "C"}}, true},
        {{{"LC_ALL", ""}, {"LANG", "zh_CN.UTF-8"}}, true},
        {{{"LANG", "en_US.UTF-8"}, {"LANGUAGE", "zh_CN:en"}}, true},
        {{{"LANG", "zh_CN.UTF-8"}, {"LANGUAGE", "en:zh_CN"}}, false},
        {{{"LANG", "zh_CN.UTF-8"}, {"LANGUAGE", "fr:de"}}, true},
        {{{"LANG", "C"}, {"LANGUAGE", "zh"}}, false},
        {{{"LANG", "C.UTF-8"}, {"LANGUAGE", "zh"}}, false},
        {{{"LANG", "POSIX"}, {"LANGUAGE", "zh"}}, false},
    };
    for (const Choice& choice : choices) {
        std::string shown;
        for (const auto& [name, value] : choice.variables)
            shown += std::string(name) + '=' + value + ' ';
        EXPECT_EQ(runWith(choice.variables, {"sum"}).errors.startsWith("gqtool: 必须"), choice.isChinese) << shown;
    }
}

TEST(GqtoolLanguage, isThatOfTheOptionBeforeOrAfterTheCommand)
{
    const QString wanted = run({"--lang", "zh", "sum", "01"}).output;
    EXPECT_TRUE(wanted.startsWith("1 字节：01\n")) << wanted.toStdString();
    EXPECT_EQ(run({"--lang=zh", "sum", "01"}).output, wanted);
    EXPECT_EQ(run({"sum", "--lang", "zh", "01"}).output, wanted);
    EXPECT_EQ(run({"sum", "01", "--lang=zh"}).output, wanted);
    EXPECT_EQ(run({"--lang", "en", "sum", "01", "--lang", "zh"}).output, wanted); // the last one counts
    const QString english = run({"sum", "01"}).output;
    EXPECT_EQ(run({"--lang", "zh", "sum", "01", "--lang", "en"}).output, english);
    EXPECT_EQ(runWith({{"LANG", "zh_CN.UTF-8"}}, {"sum", "01", "--lang", "en"}).output, english);
}

TEST(GqtoolLanguage, refusesAnUnknownOne)
{
    for (const QStringList& words : {QStringList{"--lang", "fr", "sum", "01"}, QStringList{"--lang=fr", "--help"}}) {
        const Outcome outcome = run(words);
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(outcome.errors, "gqtool: --lang must be en or zh, got 'fr'\ngqtool: see 'gqtool --help'\n");
    }
    const Outcome after = run({"sum", "--lang", "fr", "01"});
    EXPECT_EQ(after.exitCode, 2);
    EXPECT_EQ(after.errors, "gqtool: --lang must be en or zh, got 'fr'\ngqtool: see 'gqtool sum --help'\n");
    EXPECT_EQ(run({"--lang"}).errors, "gqtool: --lang requires LANG\ngqtool: see 'gqtool --help'\n");
    EXPECT_EQ(run({"sum", "--lang"}).errors, "gqtool: --lang requires LANG\ngqtool: see 'gqtool sum --help'\n");
    EXPECT_EQ(runWith({{"LANG", "zh_CN.UTF-8"}}, {"--lang", "fr", "sum"}).errors,
              "gqtool: --lang 必须是 en 或 zh，实际为 'fr'\ngqtool: 见 'gqtool --help'\n");
}

// --- Texts --------------------------------------------------------------------------------------------------------

TEST(GqtoolLanguage, isThatOfEachHelp)
{
    for (const QString& command : QStringList{""} + subCommands) {
        const QStringList words = command.isEmpty() ? QStringList{"--help"} : QStringList{command, "--help"};
        const Outcome help = runInChinese(words);
        EXPECT_EQ(help.exitCode, 0);
        EXPECT_EQ(help.errors, "");
        EXPECT_TRUE(help.output.startsWith("用法：gqtool")) << help.output.toStdString();
        EXPECT_EQ(runWith({{"LANG", "zh_CN.UTF-8"}}, words).output, help.output);
    }
}

TEST(GqtoolLanguage, keepsTheColumnsOfOptions)
{
    for (const QString& command : subCommands) {
        const QString help = runInChinese({command, "--help"}).output;
        const QString options = help.mid(help.indexOf("\n选项：\n") + 5);
        for (const QString& line : options.split('\n', Qt::SkipEmptyParts)) {
            EXPECT_LE(columnsOf(line), 79) << line.toStdString();
            EXPECT_TRUE(line.size() <= 22 || line[21] == ' ') << line.toStdString();
        }
    }
}

// Neither a mark that ends a clause begins a line, nor is a line left for a character or two.
TEST(GqtoolLanguage, breaksLinesOfHelpWhereReadersExpectIt)
{
    const QString closing = QString::fromUtf8("，。；：、）”！？");
    const int leastColumns = 6; // the headings
    for (const QString& command : QStringList{""} + subCommands) {
        for (const QString& line :
             runInChinese((command + " --help").split(' ', Qt::SkipEmptyParts)).output.split('\n')) {
            const QString text = line.trimmed();
            if (text.isEmpty())
                continue;
            EXPECT_FALSE(closing.contains(text[0])) << line.toStdString();
            EXPECT_GE(columnsOf(text), leastColumns) << line.toStdString();
        }
    }
}

TEST(GqtoolLanguage, breaksLinesOfHelpBetweenChineseAndLatin)
{
    const QString help = runInChinese({"decode", "--help"}).output;
    EXPECT_TRUE(help.contains("\n  --command COMMAND   与 --csv 和帧同用时，写入对 COMMAND 的应答中的记录，\n"
                              "                      COMMAND 是命令表中的名称或编号\n"))
        << help.toStdString();
}

TEST(GqtoolLanguage, isThatOfErrors)
{
    EXPECT_EQ(runInChinese({}).errors, "gqtool: 没有给出命令\ngqtool: 见 'gqtool --help'\n");
    EXPECT_EQ(runInChinese({"decoed"}).errors,
              "gqtool: 未知的命令 'decoed'；是否指 'decode'？\ngqtool: 见 'gqtool --help'\n");
    EXPECT_EQ(runInChinese({"sum", "--jsn"}).errors,
              "gqtool: 未知的选项 '--jsn'；是否指 '--json'？\ngqtool: 见 'gqtool sum --help'\n");
    EXPECT_EQ(runInChinese({"call"}).errors, "gqtool: 必须给出 HOST:PORT\ngqtool: 见 'gqtool call --help'\n");
    EXPECT_EQ(runInChinese({"call", "127.0.0.1:1", "--hex", "00"}).errors,
              "gqtool: --hex 需要 --command\ngqtool: 见 'gqtool call --help'\n");
    EXPECT_EQ(runInChinese({"decode", "--json", "--csv", "-"}).errors,
              "gqtool: --json 不能与 --csv 同时使用\ngqtool: 见 'gqtool decode --help'\n");
    EXPECT_EQ(runInChinese({"station", "--port", "70000"}).errors,
              "gqtool: --port 必须是 0 到 65535 的整数，实际为 '70000'\ngqtool: 见 'gqtool station --help'\n");
    EXPECT_EQ(runInChinese({"decode", "--as", "boolData", "--file", "/nowhere"}).errors,
              "gqtool: 无法读取 /nowhere：没有该文件或目录\n");
    EXPECT_EQ(runInChinese({"sum", "0g"}).errors, "gqtool: BYTES：第 1 行第 2 列：'g' 不是十六进制数字\n");
    const InputFile wrong(R"({"as": "intRealDatas", "value": [{"pointId": -1}]})");
    EXPECT_TRUE(runInChinese({"encode", wrong.path})
                    .errors.contains("：value[0].pointId 必须是 0 到 4294967295 的整数，实际为 -1\n"));
}

// A place that programs read, FILE:LINE, is as in English.
TEST(GqtoolLanguage, punctuatesErrorsInFullWidth)
{
    const QString empty = runProgram("sh", {"-c", "\"$0\" --lang zh encode </dev/null", GQTOOL}).errors;
    EXPECT_TRUE(empty.startsWith("gqtool: 标准输入：第 1 行第 ")) << empty.toStdString();
    const InputFile commands("[]");
    EXPECT_EQ(runInChinese({"station", "--commands", commands.path}).errors,
              "gqtool: " + commands.path + "：必须是 JSON 对象，实际为 []\n");
    EXPECT_EQ(
        runInChinese({"decode", "--as", "frames", "--payload", "words", "00"}).errors,
        "gqtool: --payload 必须是 int、ints、bytes、strings 之一，实际为 'words'\ngqtool: 见 'gqtool decode --help'\n");
    EXPECT_EQ(runInChinese({"call", "127.0.0.1:1", "--command", "5", "--hex", "0g"}).errors,
              "gqtool: --hex：第 1 行第 2 列：'g' 不是十六进制数字\ngqtool: 见 'gqtool call --help'\n");
    const InputFile map("0x35 9values int int\n");
    EXPECT_EQ(runInChinese({"call", "--map", map.path, "127.0.0.1:1", "values"}).errors,
              "gqtool: " + map.path +
                  "：第 1 行：NAME 必须以字母开头，其后为字母、数字、'_'、'.' 或 '-'，实际为 '9values'\n");
}

TEST(GqtoolLanguage, isThatOfErrorsInJson)
{
    const struct {
        const char* text;
        const char* message;
    } documents[] = {
        {"{\"as\": \"intDatas\",\n 1}", "第 2 行第 2 列：JSON 语法错误，正在解析对象的键，应为：字符串，实际为：数值"},
        {"{\"as\" 1", "第 1 行第 7 列：JSON 语法错误，正在解析键后的冒号，应为：':'，实际为：数值"},
        {"{\"as\": \"intDatas\" true", "第 1 行第 22 列：JSON 语法错误，正在解析对象，应为：'}'，实际为：true"},
        {"{\"as\": [1", "第 1 行第 10 列：JSON 语法错误，正在解析数组，应为：']'，实际为：输入结束"},
        {"{\"as\": ]", "第 1 行第 8 列：JSON 语法错误，正在解析值，应为：值，实际为：']'"},
        {"{\"as\": nul", "第 1 行第 11 列：JSON 语法错误，正在解析值，字面值无效，最后读到：'\"as\": nul'"},
        {"{\"as\": \"intDatas\" x",
         "第 1 行第 19 列：JSON 语法错误，正在解析对象，字面值无效，最后读到：'\"intDatas\" x'，应为：'}'"},
        {"{\"as\": \"a\tb\"}", "第 1 行第 10 列：JSON 语法错误，正在解析值，字符串无效，控制字符 U+0009 (HT) "
                               "应转义为 \\u0009 或 \\t，最后读到：'\"a<U+0009>'"},
        {"{\"as\": 1e999}", "数值 '1e999' 超出范围"},
    };
    for (const auto& document : documents) {
        const InputFile file(document.text);
        const Outcome outcome = runInChinese({"encode", file.path});
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(outcome.errors, "gqtool: " + file.path + "：" + document.message + '\n');
    }
    const InputFile commands("{\"commands\": [\n1 2]}");
    EXPECT_EQ(runInChinese({"station", "--commands", commands.path}).errors,
              "gqtool: " + commands.path + "：第 2 行第 3 列：JSON 语法错误，正在解析数组，应为：']'，实际为：数值\n");
    const InputFile number("{\"commands\":\n 1e999\n}");
    EXPECT_EQ(runInChinese({"station", "--commands", number.path}).errors,
              "gqtool: " + number.path + "：第 2 行：数值 '1e999' 超出范围\n");
}

TEST(GqtoolLanguage, isThatOfADecoding)
{
    const Outcome decoded = runInChinese({"decode", "--as", "boolData", "01 10270000 fa000000"});
    EXPECT_EQ(decoded.exitCode, 1);
    EXPECT_TRUE(decoded.output.endsWith("库的读取结果：-5（字节数不足）\n")) << decoded.output.toStdString();
    EXPECT_TRUE(decoded.errors.contains("字节 9：flag1 需要 1 字节，但只剩 0 字节\n")) << decoded.errors.toStdString();
}

TEST(GqtoolLanguage, isThatOfACheckedSum)
{
    EXPECT_EQ(runInChinese({"sum", "--check", "crc", "01 03 00 00 00 0a c5 cd"}).output,
              "校验正确：c5 cd（CRC-16，低字节在前）\n");
    EXPECT_EQ(runInChinese({"sum", "--check", "sum", "01 02 04"}).output, "校验错误：末尾为 04（字节和），应为 03\n");
}

TEST(GqtoolLanguage, isThatOfTimeCodes)
{
    const QString list = runInChinese({"time", "--list", "--base", "0", "--zone", "UTC"}).output;
    EXPECT_TRUE(list.startsWith("基准时间  1970-01-01 00:00:00+00:00 (0)\n1：当日起点\n")) << list.toStdString();
    EXPECT_TRUE(list.contains("\n3 到 33：N 天之前当天的起点（N = 时间码 - 2）\n")) << list.toStdString();
    const QString code = runInChinese({"time", "2", "--base", "0", "--zone", "UTC"}).output;
    EXPECT_TRUE(code.startsWith("时间码   2\n基准时间 1970-01-01 00:00:00+00:00 (0)\n")) << code.toStdString();
    EXPECT_TRUE(code.contains("\n文本     当日终点\n")) << code.toStdString();
}

TEST(GqtoolLanguage, isThatOfRepeatedCalls)
{
    const RunningStation station;
    const Outcome outcome = runInChinese({"call", station.endpoint, "--repeat", "2", "error", "-7"});
    EXPECT_TRUE(
        outcome.output.startsWith("请求数      2\n"
                                  "失败数      2\n"
                                  "            2 次失败，结果 -7（error-frame）：服务器自身的错误码，来自错误帧\n"
                                  "每秒请求数  "))
        << outcome.output.toStdString();
}

TEST(GqtoolLanguage, isThatOfAProbe)
{
    const RunningStation silent({"--no-greeting"});
    const Outcome probe = runInChinese({"probe", "--timeout", "200", silent.endpoint});
    EXPECT_EQ(probe.exitCode, 1);
    EXPECT_TRUE(probe.output.contains(QRegularExpression("^resolve +[0-9.]+ ms  正常    127", {})))
        << probe.output.toStdString();
    EXPECT_TRUE(probe.output.contains("失败    200 毫秒内没有问候帧；对请求的应答为 1\n"))
        << probe.output.toStdString();
    EXPECT_TRUE(probe.output.contains("silent：服务器接受连接，但不发送问候帧\n服务器能应答请求，"));
}

TEST(GqtoolLanguage, isThatOfTheStationAndItsLog)
{
    const QTemporaryDir folder;
    const QString log = folder.filePath("log");
    RunningProgram station(GQTOOL, {"station", "--lang", "zh", "--log", log});
    const QString first = station.nextLine();
    ASSERT_TRUE(first.startsWith("正在监听 127.0.0.1:")) << first.toStdString();
    EXPECT_EQ(runInChinese({"call", first.section(' ', 1), "systemState"}).output, "1\n");
    EXPECT_TRUE(station.nextLine().endsWith(" 已连接"));
    EXPECT_TRUE(station.nextLine().endsWith(" 命令 0x01，17 字节：已应答 17 字节"));
    station.end();
    EXPECT_TRUE(QString::fromUtf8(contentOf(log)).contains(" 命令 0x01，17 字节：已应答 17 字节"));
}

TEST(GqtoolLanguage, alignsTheLabelsOfTablesByColumns)
{
    EXPECT_EQ(runInChinese({"sum", "01"}).output, "1 字节：01\n"
                                                  "CRC-16，低字节在前       7e 80\n"
                                                  "CRC-16，高字节在前       80 7e\n"
                                                  "字节和                   01\n");
}

// --- What programs read -------------------------------------------------------------------------------------------

TEST(GqtoolLanguage, leavesJsonAsItIs)
{
    const InputFile map("0x35 values int bytes:pointRealDatas\n");
    const QStringList lines[] = {
        {"decode", "--list", "--json"},
        {"decode", "--as", "boolData", "--json", "01 10270000 fa000000"},
        {"decode", "--as", "wave", "--json", "00"},
        {"decode", "--as", "frames", "--payload", "strings", "--json", "68 04000000 0100 00 00 20 05000000 0000 17"},
        {"wave", "--json", "00"},
        {"sum", "--json", "01"},
        {"sum", "--json", "--check", "sum", "01 02"},
        {"time", "--list", "--json", "--base", "0"},
        {"time", "155", "--json", "--base", "0"},
        {"call", "--json", "localhost.invalid:1", "systemState"},
        {"call", "--json", "127.0.0.1:1", "systemState"},
    };
    for (const QStringList& line : lines) {
        const Outcome english = run(line);
        const Outcome chinese = runInChinese(line);
        EXPECT_EQ(chinese.output, english.output) << line.join(' ').toStdString();
        EXPECT_EQ(chinese.exitCode, english.exitCode) << line.join(' ').toStdString();
        EXPECT_NE(english.output, "") << line.join(' ').toStdString();
    }
    const QStringList probe = {"probe", "--json", "127.0.0.1:1"};
    const QRegularExpression times("\"ms\":[0-9.e-]+");
    EXPECT_EQ(runInChinese(probe).output.remove(times), run(probe).output.remove(times));
}

TEST(GqtoolLanguage, leavesTheFieldNamesOfATable)
{
    const QStringList line = {"decode", "--as", "boolDatas", "--csv", "-", "00000000"};
    EXPECT_EQ(runInChinese(line).output, run(line).output);
}

// --- Translations -------------------------------------------------------------------------------------------------

// A copy of gqtool, which looks for translations relative to its own folder.
class CopiedTool {
public:
    CopiedTool()
    {
        QDir(folder.path()).mkpath("bin");
        QDir(folder.path()).mkpath("share/gqLib/translations");
        EXPECT_TRUE(QFile::copy(GQTOOL, program()));
        const QString emulated = GQTOOL ".elf"; // which GQTOOL runs if it is a script of scripts/emulated
        EXPECT_TRUE(!QFile::exists(emulated) || QFile::copy(emulated, program() + ".elf"));
    }

    QString program() const { return folder.filePath("bin/gqtool"); }
    QString translations() const { return folder.filePath("share/gqLib/translations"); }
    Outcome run(const QStringList& words) const { return runProgram(program(), QStringList{"--lang", "zh"} + words); }

private:
    QTemporaryDir folder;
};

TEST(GqtoolLanguage, isEnglishWithoutTheInstalledTranslations)
{
    const CopiedTool tool;
    for (const QStringList& words : {QStringList{"--help"}, QStringList{"sum", "01"}, QStringList{"sum", "0"}}) {
        const Outcome outcome = tool.run(words);
        const Outcome english = run(words);
        EXPECT_EQ(outcome.output, english.output);
        EXPECT_EQ(outcome.errors, english.errors);
    }
}

// Makes a catalogue whose translations have no Latin letters but those of placeholders.
static void writeWithoutLetters(const QString& path)
{
    static const QRegularExpression letter("[A-Za-z]");
    QByteArray xml = "<!DOCTYPE TS>\n<TS version=\"2.1\" language=\"zh_CN\"><context><name>Text</name>\n";
    for (const CatalogueText& text : readCatalogue(GQTOOL_CATALOGUES "/gqtool_zh.ts"))
        xml += QString("<message><source>%1</source><translation>%2</translation></message>\n")
                   .arg(text.source.toHtmlEscaped(),
                        QString(text.source).replace(letter, QString::fromUtf8("文")).toHtmlEscaped())
                   .toUtf8();
    writeTo(path, xml + "</context></TS>\n");
}

// Whatever is still in English was not marked for translation, or is a name.
TEST(GqtoolLanguage, leavesOnlyNamesInEnglish)
{
    const CopiedTool tool;
    const QString source = tool.translations() + "/gqtool_zh.ts";
    writeWithoutLetters(source);
    ASSERT_EQ(runProgram(LRELEASE, {source, "-qm", tool.translations() + "/gqtool_zh.qm"}).exitCode, 0);

    const RunningStation station;
    const InputFile script("reply every nonsense\n");
    const InputFile json(R"({"as": "intDatas", "value": [{"pointId": "x"}], "more": 1})");
    const InputFile commands(R"({"commands": [{"command": 300, "reply": {}}, {"error": "x"}]})");
    const QStringList lines[] = {{"sum", "01"},
                                 {"sum", "--check", "sum", "01 02"},
                                 {"sum", "0x0"},
                                 {"sum"},
                                 {"time", "1", "--base", "0"},
                                 {"time", "--list", "--base", "0"},
                                 {"time", "x"},
                                 {"wave", "00"},
                                 {"decode", "--as", "boolData", "01"},
                                 {"decode", "--as", "frames", "00 68"},
                                 {"decode", "--as", "nonsense"},
                                 {"decode", "--as", "oneSecQuery", "00000000 00000000 00000000 0000 00"},
                                 {"encode", json.path},
                                 {"station", "--script", script.path},
                                 {"station", "--commands", commands.path},
                                 {"call", station.endpoint, "systemStat"},
                                 {"call", station.endpoint, "error", "-3"},
                                 {"call", station.endpoint, "--repeat", "2", "systemState"},
                                 {"call", "127.0.0.1:1", "systemState"},
                                 {"probe", station.endpoint},
                                 {"probe", "127.0.0.1:1"},
                                 {"trace", "127.0.0.1:1"}};
    QStringList texts;
    for (const QStringList& line : lines) {
        const Outcome outcome = tool.run(line);
        texts += (outcome.output + outcome.errors).split('\n');
    }
    for (const QString& command : QStringList{"--help"} + subCommands)
        texts += tool.run({command, "--help"}).output.split('\n');

    // Options, values in capitals, names with digits or a capital inside, names of this table, and what the lines above contain.
    static const QRegularExpression names(
        "--[a-z-]+|error-frame|-h\\b|\\b[A-Z][A-Z:]+\\b|\\b[a-z]*[A-Z0-9]\\w*\\b|/tmp/\\S+|\\S+\\.\\S+"
        "|\\b(gqtool|station|call|probe|decode|encode|sum|time|trace|wave|frames|resolve|connect|greeting|systemState"
        "|object|property|variant|int|ints|bytes|strings|clear|error|late|split|pieces|together|wrong-end|silent|close-"
        "after"
        "|down|none|crc|crc-high-first|reply|command|commands|nonsense|value|more|hex|as|behind|direction|faults|fields"
        "|form|library|moreFaults|transport|count|start|length|sequence|arg|header|garbage|payload|check|end|kind|ms"
        "|healthy|refused|size|x|N|file|echo)\\b");
    static const QRegularExpression letters("[A-Za-z]+");
    for (const QString& text : texts) {
        const QString rest = QString(text).remove(names);
        EXPECT_FALSE(rest.contains(letters)) << text.toStdString() << "\n    " << rest.toStdString();
    }
}
