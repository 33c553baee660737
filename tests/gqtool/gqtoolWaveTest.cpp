#include "shared/waveDrawing.h"

#include "support/gqtoolProgram.h"
#include "support/hex.h"
#include "support/inputFile.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

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

static QByteArray contentOf(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
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
    const Outcome outcome = waveOf(wave);
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors.toStdString(), ("gqtool: refused: " + reason + "\n").toStdString());
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

// The upper ends of the strokes: 5 is the largest sample, 295 the smallest.
static std::vector<double> upperEnds(const QByteArray& svg)
{
    std::vector<double> ends;
    QRegularExpressionMatchIterator found = QRegularExpression("[ML][0-9.]+ [0-9.]+V([0-9.]+)").globalMatch(svg);
    while (found.hasNext())
        ends.push_back(found.next().captured(1).toDouble());
    return ends;
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
        EXPECT_EQ(ends[place / 1000], 5);
        EXPECT_EQ(std::count(ends.begin(), ends.end(), 295), 999);
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
    EXPECT_EQ(svg.count(" 295.0V5.0"), 1); // down to -7 in its column, and back to 0
    EXPECT_EQ(svg.count(" 5.0V5.0"), 999);
    EXPECT_LT(svg.size(), 30000);
}

TEST(WaveSvg, drawsFewSamplesOneByOne)
{
    const std::vector<double> expected = {295, 150, 5};
    EXPECT_EQ(upperEnds(waveSvg({-1, 0, 1})), expected);
    EXPECT_EQ(upperEnds(waveSvg({2})), std::vector<double>{150});
    EXPECT_TRUE(upperEnds(waveSvg({})).empty());
}

TEST(WaveSvg, hasAGapWithoutFiniteSamples)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    const QByteArray svg = waveSvg({1, nan, 2, infinity, -infinity, 3, 3});
    EXPECT_EQ(upperEnds(svg), (std::vector<double>{295, 150, 5, 5}));
    EXPECT_EQ(svg.count("\"M") + svg.count("V295.0M") + svg.count("V150.0M"), 3);
    EXPECT_TRUE(upperEnds(waveSvg({nan})).empty());
    EXPECT_FALSE(waveSvg({nan}).contains("nan"));
}
