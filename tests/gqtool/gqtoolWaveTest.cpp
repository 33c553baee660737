#include "shared/waveDrawing.h"

#include "support/gqtoolProgram.h"
#include "support/hex.h"
#include "support/inputFile.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QXmlStreamReader>

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

static Outcome waveOf(const QByteArray& bytes, const QStringList& options = {})
{
    const InputFile file(bytes);
    return run(QStringList{"wave", "--raw", "--file", file.path} + options);
}

static Outcome goldenWave(const QString& name, const QStringList& options = {})
{
    return run(QStringList{"wave", "--file", GQLIB_GOLDEN "/waves/" + name + ".hex"} + options);
}

// A head with the limits 0, 0 and nothing of the program's own.
static QByteArray headOf(unsigned char flags, const QByteArray& sampleCount, const QByteArray& markCount)
{
    return QByteArray(1, '\0') + QByteArray(1, char(flags)) + // 0 headByte, 1 waveFlags
           QByteArray(30, '\0') + QByteArray(16, '\0') +      // 2 headFill1, 32 limitHigh, 40 limitLow
           sampleCount + markCount +                          // 48, 52
           QByteArray(40, '\0');                              // 56 headFill2
}

static const QByteArray none = "00000000"_hex;

static QByteArray imageOf(const std::vector<float>& samples)
{
    return QByteArray(reinterpret_cast<const char*>(samples.data()), int(samples.size() * sizeof(float)));
}

// --- Good waves ---------------------------------------------------------------------------------------------------

TEST(GqtoolWave, printsHeadMarksAndStatistics)
{
    const Outcome outcome = goldenWave("raw");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.output.toStdString(),
              "size         236 bytes\n"
              "headByte     0x5a\n"
              "waveFlags    0x01: raw\n"
              "headFill1    a0a1a2a3a4a5a6a7a8a9aaabacadaeafb0b1b2b3b4b5b6b7b8b9babbbcbd\n"
              "limitHigh    0.5, the scale\n"
              "limitLow     1, the offset\n"
              "sampleCount  64\n"
              "markCount    3\n"
              "headFill2    c0c1c2c3c4c5c6c7c8c9cacbcccdcecfd0d1d2d3d4d5d6d7d8d9dadbdcdddedfe0e1e2e3e4e5e6e7\n"
              "marks        1, -2, 305419896\n"
              "samples      64\n"
              "minimum      -16383\n"
              "maximum      15976.5\n"
              "mean         -714.75\n");
}

TEST(GqtoolWave, explainsTheLimitsOfRawSamplesOnly)
{
    const QString output = waveOf(headOf(0, "01000000"_hex, none) + "0000803f"_hex).output;
    EXPECT_TRUE(output.contains("\nwaveFlags    0x00: plain\n")) << output.toStdString();
    EXPECT_TRUE(output.contains("\nlimitHigh    0\nlimitLow     0\n")) << output.toStdString();
}

// The statistics of the golden waves were worked out by a script that reads them without the library.
TEST(GqtoolWave, readsEveryForm)
{
    struct Expected {
        const char* name;
        const char* form;
        bool compressed;
        int samples;
        double minimum;
        double maximum;
        double mean;
    };
    for (const Expected& expected : {Expected{"floats", "plain", false, 40, -6, 6.5, 0.23125},
                                     Expected{"floatsPacked", "plain", true, 40, -6, 6.5, 0.23125},
                                     Expected{"quantised", "quantised", false, 64, -10, 9.750973, -0.4367132559},
                                     Expected{"quantisedPacked", "quantised", true, 64, -10, 9.750973, -0.4367132559},
                                     Expected{"raw", "raw", false, 64, -16383, 15976.5, -714.75},
                                     Expected{"rawPacked", "raw", true, 64, -16383, 15976.5, -714.75}}) {
        SCOPED_TRACE(expected.name);
        const Outcome outcome = goldenWave(expected.name, {"--json"});
        EXPECT_EQ(outcome.exitCode, 0);
        const QJsonObject json = QJsonDocument::fromJson(outcome.output.toUtf8()).object();
        EXPECT_EQ(json["form"].toString(), expected.form);
        EXPECT_EQ(json["compressed"].toBool(), expected.compressed);
        EXPECT_EQ(json["samples"].toInt(), expected.samples);
        EXPECT_EQ(json["minimum"].toDouble(), expected.minimum);
        EXPECT_EQ(json["maximum"].toDouble(), expected.maximum);
        EXPECT_NEAR(json["mean"].toDouble(), expected.mean, 1e-9);
    }
}

TEST(GqtoolWave, printsOneJsonObject)
{
    EXPECT_EQ(waveOf(headOf(0, "02000000"_hex, none) + "cdcccc3d 000000c0"_hex, {"--json"}).output.toStdString(),
              R"({"compressed":false,"form":"plain","headByte":0,"headFill1":")" + std::string(60, '0') +
                  R"(","headFill2":")" + std::string(80, '0') +
                  R"(","limitHigh":0,"limitLow":0,"markCount":0,"marks":[],"maximum":0.1,"mean":-0.9499999992549419,)"
                  R"("minimum":-2,"notFinite":0,"sampleCount":2,"samples":2,"size":104,"waveFlags":0})"
                  "\n");
}

TEST(GqtoolWave, sumsInDoublePrecision)
{
    // 2^24 and 1023 ones: as a float the sum would stay at 2^24. (16777216 + 1023) / 1024 = 16384.9990234375
    std::vector<float> samples(1024, 1);
    samples[0] = 16777216;
    EXPECT_TRUE(
        waveOf(headOf(0, "00040000"_hex, none) + imageOf(samples)).output.contains("mean         16384.9990234375\n"));
}

TEST(GqtoolWave, countsSamplesThatAreNotFinite)
{
    const QByteArray wave = headOf(0, "05000000"_hex, none) + // NaN, 1, infinity, 3, -infinity
                            "0000c07f 0000803f 0000807f 00004040 000080ff"_hex;
    Outcome outcome = waveOf(wave);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_TRUE(outcome.output.endsWith("samples      5\n"
                                        "not finite   3, NaN or infinite; not included below\n"
                                        "minimum      1\n"
                                        "maximum      3\n"
                                        "mean         2\n"))
        << outcome.output.toStdString();
    EXPECT_EQ(waveOf(wave, {"--csv", "-"}).output, "sample,value\n0,nan\n1,1\n2,inf\n3,3\n4,-inf\n");

    outcome = waveOf(headOf(0, "01000000"_hex, none) + "0000c07f"_hex, {"--json"});
    EXPECT_TRUE(outcome.output.contains("\"notFinite\":1"));
    EXPECT_FALSE(outcome.output.contains("minimum"));
}

TEST(GqtoolWave, readsAWaveWithoutSamples)
{
    const Outcome outcome = waveOf(headOf(0, none, none));
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_TRUE(outcome.output.endsWith("samples      0\n"));
}

TEST(GqtoolWave, reportsAWrongSampleCount)
{
    EXPECT_TRUE(waveOf(headOf(0, "09000000"_hex, none) + "0000803f"_hex)
                    .output.contains("samples      1, but sampleCount is 9\n"));
}

// --- Files --------------------------------------------------------------------------------------------------------

TEST(GqtoolWave, writesATable)
{
    const QByteArray wave = headOf(0, "03000000"_hex, none) + "cdcccc3d 000000c0 0000c84b"_hex; // 0.1, -2, 26214400
    EXPECT_EQ(waveOf(wave, {"--csv", "-"}).output, "sample,value\n0,0.1\n1,-2\n2,26214400\n");

    const QTemporaryDir folder;
    const QString path = folder.filePath("wave.csv");
    EXPECT_TRUE(waveOf(wave, {"--csv", path}).output.startsWith("size "));
    EXPECT_EQ(contentOf(path), "sample,value\n0,0.1\n1,-2\n2,26214400\n");
}

TEST(GqtoolWave, writesALongTable)
{
    QByteArray expected = "sample,value\n";
    for (int i = 0; i < 10000; ++i) // 78903 bytes
        expected += QByteArray::number(i) + (i % 2 == 0 ? ",0\n" : ",0.1\n");
    const QByteArray wave = headOf(0, "10270000"_hex, none) + QByteArray("00000000 cdcccc3d"_hex).repeated(5000);
    EXPECT_EQ(waveOf(wave, {"--csv", "-"}).output, expected);
}

TEST(GqtoolWave, printsOnlyTheDataOnStandardOutput)
{
    const QByteArray wave = headOf(0, none, none);
    EXPECT_TRUE(waveOf(wave, {"--svg", "-"}).output.startsWith("<svg "));
    EXPECT_EQ(waveOf(wave, {"--svg", "-", "--csv", "-"}).exitCode, 2);
    EXPECT_EQ(waveOf(wave, {"--svg", "-", "--json"}).exitCode, 2);
}

TEST(GqtoolWave, reportsWhatCannotBeWritten)
{
    const QByteArray wave = headOf(0, none, none) + "0000803f"_hex;
    Outcome outcome = waveOf(wave, {"--csv", "/nowhere/wave.csv"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "gqtool: cannot write to /nowhere/wave.csv: No such file or directory\n");
    outcome = waveOf(wave, {"--svg", "/nowhere/wave.svg"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "gqtool: cannot write to /nowhere/wave.svg: No such file or directory\n");
    outcome = waveOf(wave, {"--svg", ""});
    EXPECT_EQ(outcome.exitCode, 1);
    for (const QString& line : outcome.errors.trimmed().split('\n')) // Qt warns too
        EXPECT_TRUE(line.startsWith("gqtool: ")) << line.toStdString();
    outcome = waveOf(wave, {"--svg", "/dev/full"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "gqtool: cannot write to /dev/full: No space left on device\n");
}

// --- Refusals -----------------------------------------------------------------------------------------------------

static void expectRefusal(const QByteArray& wave, const QString& reason)
{
    const InputFile file(wave);
    const Outcome outcome = run({"wave", "--raw", "--file", file.path});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors.toStdString(), ("gqtool: " + file.path + ": refused: " + reason + "\n").toStdString());
    const Outcome json = waveOf(wave, {"--json"});
    EXPECT_EQ(json.exitCode, 1);
    EXPECT_EQ(QJsonDocument::fromJson(json.output.toUtf8()).object()["refused"].toString().toStdString(),
              reason.toStdString());
}

TEST(GqtoolWaveRefused, withoutAHead)
{
    expectRefusal(QByteArray(), "the head needs 96 bytes, got 0");
    expectRefusal(headOf(0, none, none).chopped(1), "the head needs 96 bytes, got 95");
}

// The file has no blocks on the disk.
TEST(GqtoolWaveRefused, aboveItsLimitInLittleMemory)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "The sanitizer needs more address space than any limit leaves";
#endif
    const QTemporaryDir folder;
    const QString path = folder.filePath("wave");
    for (const long long size : {100000000LL, 48LL << 20}) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write("\0\1", 2) == 2); // raw samples
        ASSERT_TRUE(file.resize(size));
        file.close();
        const Outcome outcome =
            runProgram("sh", {"-c", "ulimit -v 400000; exec \"$0\" wave --raw --file \"$1\"", GQTOOL, path});
        if (size > 48 << 20) {
            EXPECT_EQ(outcome.exitCode, 1);
            EXPECT_EQ(outcome.errors, "gqtool: cannot read " + path + ": more than 50331648 bytes\n");
        } else {
            EXPECT_EQ(outcome.errors, "");
            EXPECT_TRUE(outcome.output.contains("samples      25165776, but sampleCount is 0\n"));
        }
    }
}

TEST(GqtoolWaveRefused, withMarksAndTooFewBytes)
{
    const QByteArray oneMark = headOf(0, "17000000"_hex, "01000000"_hex) + "05000000"_hex;
    expectRefusal(
        oneMark + QByteArray(92, '\0'),
        "a wave with marks needs at least 96 bytes of samples: with markCount 1, 100 bytes after the head, got 96");
    EXPECT_EQ(waveOf(oneMark + QByteArray(96, '\0')).exitCode, 0);
    expectRefusal(headOf(0, none, "ffffffff"_hex) + QByteArray(200, '\0'),
                  "a wave with marks needs at least 96 bytes of samples: with markCount 4294967295, 17179869276 bytes "
                  "after the head, got 200");
}

// zlib streams of a little text, as Python's zlib makes them.
static const QByteArray packedZeros = "789c63606060000000040001"_hex; // 4 zero bytes: one sample

TEST(GqtoolWaveRefused, withABlockThatIsNoStream)
{
    const Outcome outcome = waveOf(headOf(4, none, none) + packedZeros);
    EXPECT_TRUE(outcome.output.endsWith(
        "samples      1, but sampleCount is 0\nminimum      0\nmaximum      0\nmean         0\n"))
        << outcome.output.toStdString();
    expectRefusal(headOf(4, none, none), "the compressed block of 0 bytes cannot be unpacked: the zlib stream ends "
                                         "early, after 0 unpacked bytes");
    expectRefusal(headOf(4, none, none) + packedZeros.chopped(1),
                  "the compressed block of 11 bytes cannot be unpacked: the zlib stream ends early, after 4 unpacked "
                  "bytes");
    expectRefusal(headOf(4, none, none) + "00112233"_hex,
                  "the compressed block of 4 bytes cannot be unpacked: the zlib stream is invalid at its byte 2: "
                  "incorrect header check");
    expectRefusal(headOf(4, none, none) + packedZeros.chopped(1) + "02"_hex,
                  "the compressed block of 12 bytes cannot be unpacked: the zlib stream is invalid at its byte 12: "
                  "incorrect data check");
}

TEST(GqtoolWaveRefused, withABlockThatUnpacksToTooMuch)
{
    // A stream of stored blocks of zeros. The reader stops before the end of the stream, so it needs none.
    const auto streamOf = [](int size) {
        QByteArray stream = "7801"_hex;
        for (int done = 0; done < size; done += 50000)
            stream += "00 50c3 af3c"_hex + QByteArray(50000, '\0'); // not the last, length, its complement
        return stream;
    };
    expectRefusal(headOf(4, none, none) + streamOf(5050000),
                  "the compressed block of 5050507 bytes cannot be unpacked: the samples unpack to more than 5000000 "
                  "bytes");
    EXPECT_TRUE(
        waveOf(headOf(4, none, none) + streamOf(5000000)).errors.contains("ends early, after 5000000 unpacked bytes"));
}

TEST(GqtoolWaveRefused, stillPrintsTheHead)
{
    const Outcome outcome = waveOf(headOf(6, "05000000"_hex, none) + "00"_hex);
    EXPECT_TRUE(outcome.output.contains("waveFlags    0x06: quantised, compressed\n"));
    EXPECT_TRUE(outcome.output.contains("sampleCount  5\n"));
    EXPECT_FALSE(outcome.output.contains("samples  "));
}

// --- The picture --------------------------------------------------------------------------------------------------

// The upper ends of the strokes: the plot is from 40, its highest value, to 320, its lowest.
static std::vector<double> upperEnds(const QByteArray& svg)
{
    std::vector<double> ends;
    QRegularExpressionMatchIterator found = QRegularExpression("[ML][0-9.]+ [0-9.]+V([0-9.]+)").globalMatch(svg);
    while (found.hasNext())
        ends.push_back(found.next().captured(1).toDouble());
    return ends;
}

// The labels at the left (value axis), below (samples) or above the plot (marks), as "TEXT@PLACE".
static QString labels(const QByteArray& svg, const QString& where)
{
    QStringList found;
    QXmlStreamReader xml(svg);
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement || xml.name() != QLatin1String("text"))
            continue;
        const QString x = xml.attributes().value("x").toString();
        const QString y = xml.attributes().value("y").toString();
        const QString text = xml.readElementText();
        if (where == "left" && x == "79")
            found.append(text + "@" + y);
        if (where == "below" && y == "339")
            found.append(text + "@" + x);
        if (where == "above" && y == "36")
            found.append(text + "@" + x);
    }
    EXPECT_FALSE(xml.hasError()) << xml.errorString().toStdString();
    return found.join(' ');
}

TEST(WaveSvg, showsASpikeOfOneSampleInAMillion)
{
    for (const size_t place : {size_t(0), size_t(333333), size_t(999999)}) {
        SCOPED_TRACE(place);
        std::vector<float> samples(1000000, 0);
        samples[place] = 1;
        const QByteArray svg = waveSvg(samples);
        const std::vector<double> ends = upperEnds(svg);
        ASSERT_EQ(ends.size(), 1000u);
        EXPECT_EQ(ends[place / 1000], 40);
        EXPECT_EQ(std::count(ends.begin(), ends.end(), 320), 999);
        EXPECT_LT(svg.size(), 30000);
    }
}

TEST(WaveSvg, drawsASpikeOfAStoredWave)
{
    std::vector<float> samples(1000000, 0);
    samples[123456] = -7;
    const QTemporaryDir folder;
    const QString path = folder.filePath("wave.svg");
    EXPECT_EQ(waveOf(headOf(0, "40420f00"_hex, none) + imageOf(samples), {"--svg", path}).exitCode, 0);
    const QByteArray svg = contentOf(path);
    EXPECT_EQ(labels(svg, "left"), "-8@320.0 -6@250.0 -4@180.0 -2@110.0 0@40.0");
    EXPECT_EQ(svg.count(" 285.0V40.0"), 1); // down to -7 in its column, and back to 0
    EXPECT_EQ(svg.count(" 40.0V40.0"), 999);
    EXPECT_LT(svg.size(), 30000);
}

TEST(WaveSvg, drawsFewSamplesOneByOne)
{
    const std::vector<double> expected = {320, 180, 40};
    EXPECT_EQ(upperEnds(waveSvg({-1, 0, 1})), expected);
    EXPECT_EQ(upperEnds(waveSvg({2})), std::vector<double>{180});
    EXPECT_TRUE(upperEnds(waveSvg({})).empty());
}

TEST(WaveSvg, hasAGapWithoutFiniteSamples)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    const QByteArray svg = waveSvg({1, nan, 2, infinity, -infinity, 3, 3});
    EXPECT_EQ(upperEnds(svg), (std::vector<double>{320, 180, 40, 40}));
    EXPECT_EQ(svg.count("\"M") + svg.count("V320.0M") + svg.count("V180.0M"), 3);
    EXPECT_TRUE(upperEnds(waveSvg({nan})).empty());
    EXPECT_FALSE(waveSvg({nan}).contains("nan"));
    EXPECT_TRUE(waveSvg({nan}).contains(">no finite samples<"));
    EXPECT_TRUE(waveSvg({}).contains(">no samples<"));
}

TEST(WaveSvg, hasAValueAxisBetweenRoundNumbers)
{
    EXPECT_EQ(labels(waveSvg({-1, 1}), "left"), "-1@320.0 -0.5@250.0 0@180.0 0.5@110.0 1@40.0");
    EXPECT_EQ(labels(waveSvg({3, 97}), "left"), "0@320.0 20@264.0 40@208.0 60@152.0 80@96.0 100@40.0");
    EXPECT_EQ(labels(waveSvg({0, 0.6F}), "left"),
              "0@320.0 0.2@250.0 0.4@180.0 0.6@110.0 0.8@40.0"); // a float above 0.6
    EXPECT_EQ(labels(waveSvg({1000000, 1000001}), "left"),
              "1000000@320.0 1000000.2@264.0 1000000.4@208.0 1000000.6@152.0 1000000.8@96.0 1000001@40.0");
    EXPECT_EQ(labels(waveSvg({-3e38F, 3e38F}), "left"), "-4e+38@320.0 -2e+38@250.0 0@180.0 2e+38@110.0 4e+38@40.0");
}

TEST(WaveSvg, hasADarkerLineAtZero)
{
    const QByteArray svg = waveSvg({-1, 1});
    EXPECT_EQ(svg.count(" stroke=\"lightgray\"/>"), 4);
    EXPECT_TRUE(svg.contains("y1=\"180.0\" x2=\"1085\" y2=\"180.0\" stroke=\"gray\"/>"));
}

TEST(WaveSvg, labelsEqualSamplesOnce)
{
    EXPECT_EQ(labels(waveSvg({0.1F, 0.1F, 0.1F}), "left"), "0.1@180.0");
    EXPECT_EQ(labels(waveSvg({-2}), "left"), "-2@180.0");
}

TEST(WaveSvg, hasASampleAxisWithRoundNumbers)
{
    EXPECT_EQ(labels(waveSvg({7}), "below"), "0@585.0");
    EXPECT_EQ(labels(waveSvg({1, 2, 3, 4}), "below"), "0@210.0 1@460.0 2@710.0 3@960.0");
    EXPECT_EQ(labels(waveSvg(std::vector<float>(40, 1)), "below"),
              "0@97.5 5@222.5 10@347.5 15@472.5 20@597.5 25@722.5 30@847.5 35@972.5");
    WaveCaptions captions;
    captions.first = 93;
    EXPECT_EQ(labels(waveSvg(std::vector<float>(20, 1), captions), "below"),
              "94@160.0 96@260.0 98@360.0 100@460.0 102@560.0 104@660.0 106@760.0 108@860.0 110@960.0 112@1060.0");
}

TEST(WaveSvg, drawsMarksThatAreNumbersOfSamples)
{
    WaveCaptions captions;
    captions.first = 100;
    captions.marks = {103, 100, 99, 104, -1, 103};
    const QByteArray svg = waveSvg({1, 2, 3, 4}, captions);
    EXPECT_EQ(labels(svg, "above"), "100@210.0 103@960.0");
    EXPECT_EQ(svg.count("stroke-dasharray"), 2);
}

TEST(WaveSvg, leavesOutLabelsOfMarksThatWouldOverlap)
{
    WaveCaptions captions;
    for (int mark = 0; mark < 100000; ++mark)
        captions.marks.push_back(mark);
    const QByteArray svg = waveSvg(std::vector<float>(100000, 1), captions);
    EXPECT_LE(svg.count("stroke-dasharray"), 1000);
    EXPECT_LE(labels(svg, "above").count('@'), 25);
    EXPECT_GE(labels(svg, "above").count('@'), 20);
}

TEST(WaveSvg, hasATitle)
{
    WaveCaptions captions;
    captions.title = QString("a<b & \"c\"\x01");
    const QByteArray svg = waveSvg({1}, captions);
    EXPECT_TRUE(svg.contains("<title>a&lt;b &amp; &quot;c&quot;?</title>"));
    EXPECT_TRUE(svg.contains(">a&lt;b &amp; &quot;c&quot;?</text>"));
    EXPECT_FALSE(waveSvg({1}).contains("<title>"));
}

TEST(WaveSvg, scalesInADocument)
{
    EXPECT_TRUE(waveSvg({1}).startsWith("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"1100\" height=\"380\" "
                                        "viewBox=\"0 0 1100 380\" "));
}

// --- A part of the wave -------------------------------------------------------------------------------------------

static const QByteArray fourSamples =
    headOf(0, "04000000"_hex, none) + "0000803f 00000040 00004040 00008040"_hex; // 1 to 4

TEST(GqtoolWavePart, isWrittenAndDrawn)
{
    EXPECT_EQ(waveOf(fourSamples, {"--csv", "-", "--from", "1", "--to", "2"}).output, "sample,value\n1,2\n2,3\n");
    EXPECT_EQ(waveOf(fourSamples, {"--csv", "-", "--from", "3"}).output, "sample,value\n3,4\n");
    EXPECT_EQ(waveOf(fourSamples, {"--csv", "-", "--to", "0"}).output, "sample,value\n0,1\n");
    const QByteArray svg = waveOf(fourSamples, {"--svg", "-", "--from", "1", "--to", "2"}).output.toUtf8();
    EXPECT_EQ(labels(svg, "below"), "1@335.0 2@835.0");
    EXPECT_EQ(labels(svg, "left"), "2@320.0 2.2@264.0 2.4@208.0 2.6@152.0 2.8@96.0 3@40.0");
    EXPECT_TRUE(svg.contains(": samples 1 to 2 of 4</title>"));
    EXPECT_TRUE(waveOf(fourSamples, {"--svg", "-"}).output.contains(": 4 samples</title>"));
}

TEST(GqtoolWavePart, mustBeInTheWave)
{
    Outcome outcome = waveOf(fourSamples, {"--csv", "-", "--from", "4"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, "gqtool: --from must be at most 3, the last sample, got 4\n");
    outcome = waveOf(fourSamples, {"--csv", "-", "--to", "4"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "gqtool: --to must be at most 3, the last sample, got 4\n");
    outcome = waveOf(headOf(0, none, none), {"--csv", "-", "--from", "0"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "gqtool: --from and --to require samples, the wave has none\n");
    outcome = waveOf(fourSamples, {"--csv", "-", "--from", "2", "--to", "1"});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_TRUE(outcome.errors.startsWith("gqtool: --from must be at most --to, got 2 and 1\n"));
    outcome = waveOf(fourSamples, {"--from", "2"});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_TRUE(outcome.errors.startsWith("gqtool: --from and --to require --csv or --svg\n"));
}
