// The records that the simulated station answers with.

#include "support/gqtoolProgram.h"
#include "support/inputFile.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>
#include <string>
#include <vector>

static QJsonObject jsonOf(const QStringList& arguments)
{
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors.toStdString();
    return QJsonDocument::fromJson(outcome.output.toUtf8()).object();
}

// The reply to a command, a list of bytes, as hex text.
static QByteArray replyHex(const QString& command)
{
    RunningStation station;
    const Outcome outcome = station.call({"--command", command, "--reply", "bytes", "0"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors.toStdString();
    return outcome.output.toLatin1();
}

// The same as records.
static QJsonValue reply(const QString& command, const QString& form)
{
    const InputFile bytes(replyHex(command));
    return jsonOf({"decode", "--json", "--as", form, "--file", bytes.path})["value"];
}

// The fields that are neither zero nor empty, in the order of their names.
static std::string shown(const QJsonObject& record)
{
    QStringList fields;
    for (const QString& name : record.keys()) {
        const QString value = record[name].toVariant().toString();
        if (value != "0" && !value.isEmpty())
            fields.append(name + ' ' + value);
    }
    return fields.join(", ").toStdString();
}

using Texts = std::vector<std::string>;

static Texts shown(const QJsonValue& list)
{
    Texts texts;
    for (const QJsonValue& record : list.toArray())
        texts.push_back(shown(record.toObject()));
    return texts;
}

// --- The front-end processor --------------------------------------------------------------------------------------

TEST(GqtoolSimulated, hasANodeWithTwoLines)
{
    EXPECT_EQ(shown(reply("0x40", "nodeHeads")), Texts{"nodeId 1, text1 FEP1, text2 锅炉房, text5 10.0.1.11, "
                                                       "text6 10.0.2.11, word3 3, word4 10, word5 600"});
    EXPECT_EQ(shown(reply("0x41", "commItems")),
              (Texts{"commId 1, text1 COM1, text2 Modbus RTU, text3 /dev/ttyS1, text4 8N, word1 9600",
                     "commId 2, text1 NET1, text2 Modbus TCP, text3 10.0.3.5, text4 TC, word1 502"}));
}

TEST(GqtoolSimulated, hasSignalsOfFourKinds)
{
    EXPECT_EQ(shown(reply("0x42", "ycItems")), Texts{"coef1 0.25, coef2 -50, itemId 1, text1 BOILER1.TEMP, "
                                                     "text2 live steam temperature, text3 °C, word1 1, word2 -1"});
    EXPECT_EQ(shown(reply("0x43", "yxItems")),
              Texts{"itemId 2, text1 GEN1.BREAKER, text2 generator breaker closed, word1 2, word2 -1"});
    EXPECT_EQ(shown(reply("0x44", "ydItems")),
              Texts{"float1 0.5, itemId 3, text1 GEN1.ENERGY, text2 energy delivered, text3 MWh, word1 2"});
    EXPECT_EQ(shown(reply("0x45", "ybItems")),
              (Texts{"itemId 4, text1 FEED.PUMPS, text2 feed pumps running, word1 1",
                     "itemId 5, text1 TRAFO1.TAP, text2 tap changer's step, word1 2"}));
}

// --- The point database -------------------------------------------------------------------------------------------

TEST(GqtoolSimulated, definesPointsOfFourKinds)
{
    EXPECT_EQ(shown(reply("0x31", "floatPoints")),
              (Texts{"float1 0.05, pointId 1000, switch1 1, text1 BOILER1.TEMP, text2 live steam temperature, text3 °C",
                     "float1 0.05, pointId 1001, switch1 1, text1 BOILER1.PRESS, text2 live steam pressure, text3 bar",
                     "float1 0.05, pointId 1002, switch1 1, text1 TURB1.SPEED, text2 turbine speed, text3 1/min"}));
    EXPECT_EQ(shown(reply("0x32", "intPoints")),
              Texts{"pointId 2000, switch1 1, text1 FEED.PUMPS, text2 feed pumps running"});
    EXPECT_EQ(shown(reply("0x33", "boolPoints")),
              Texts{"pointId 3000, switch1 1, text1 GEN1.BREAKER, text2 generator breaker closed"});
    EXPECT_EQ(shown(reply("0x34", "blobPoints")),
              Texts{"pointId 4000, switch1 1, text1 GEN1.TRANSIENT, text2 generator voltage, recorded"});
    EXPECT_EQ(shown(reply("0x30", "pointInfos")),
              (Texts{"code1 1, pointId 1000, text1 BOILER1.TEMP, text2 live steam temperature",
                     "code1 1, pointId 1001, text1 BOILER1.PRESS, text2 live steam pressure",
                     "code1 1, pointId 1002, text1 TURB1.SPEED, text2 turbine speed",
                     "code1 2, pointId 2000, text1 FEED.PUMPS, text2 feed pumps running",
                     "code1 3, pointId 3000, text1 GEN1.BREAKER, text2 generator breaker closed",
                     "code1 4, pointId 4000, text1 GEN1.TRANSIENT, text2 generator voltage, recorded"}));
}

TEST(GqtoolSimulated, hasValuesThatFollowTheClock)
{
    const qint64 before = QDateTime::currentMSecsSinceEpoch();
    const QJsonArray values = reply("0x35", "pointRealDatas").toArray();
    const qint64 after = QDateTime::currentMSecsSinceEpoch();
    ASSERT_EQ(values.size(), 5);

    Texts points;
    std::vector<double> numbers;
    for (const QJsonValue& value : values) {
        QJsonObject point = value.toObject();
        const qint64 time = point.take("stamp1").toInt() * 1000LL + point.take("stamp2").toInt();
        EXPECT_GE(time, before);
        EXPECT_LE(time, after);
        numbers.push_back(point.take("value").toDouble());
        points.push_back(shown(point));
    }
    EXPECT_EQ(points, (Texts{"pointId 1000, pointKind 1", "pointId 1001, pointKind 1", "pointId 1002, pointKind 1",
                             "pointId 2000, pointKind 2", "pointId 3000, pointKind 3"}));

    const double sine = (numbers[0] - 538) / 4;
    const double cosine = (numbers[1] - 166.5) / 1.5;
    EXPECT_NEAR(sine * sine + cosine * cosine, 1, 1e-9); // of the same angle
    EXPECT_NEAR((numbers[2] - 3000) / 2, 3 * sine - 4 * sine * sine * sine, 1e-9);
    if (std::abs(sine) > 1e-9) {
        EXPECT_EQ(numbers[3], sine > 0 ? 2 : 3);
    }
    EXPECT_EQ(numbers[4], 1);
}

TEST(GqtoolSimulated, hasEventsOfTheLastMinutes)
{
    const qint64 before = QDateTime::currentSecsSinceEpoch();
    const QJsonArray events = reply("0x37", "eventInfos").toArray();
    const qint64 after = QDateTime::currentSecsSinceEpoch();

    const std::vector<qint64> ages = {95, 61, 60};
    ASSERT_EQ(size_t(events.size()), ages.size());
    Texts texts;
    for (size_t i = 0; i < ages.size(); ++i) {
        QJsonObject event = events[int(i)].toObject();
        const qint64 time = event.take("word1").toInt();
        EXPECT_GE(time, before - ages[i]);
        EXPECT_LE(time, after - ages[i]);
        texts.push_back(shown(event));
    }
    EXPECT_EQ(texts, (Texts{"text1 temperature above its first limit, text2 station, value 541.9, word3 1000",
                            "text1 transient recorded, text2 station, word3 4000",
                            "text1 breaker closed again, text2 station, value 1, word3 3000"}));
}

TEST(GqtoolSimulated, hasAnObjectWithAPropertyOfEachKind)
{
    const QJsonObject object = reply("0x38", "objectBlob").toObject();
    EXPECT_EQ(shown(object), "text1 GEN1, text2 generator 1, text3 maker poles power revised cooling");
    Texts properties;
    for (const QJsonValue& property : object["properties"].toArray())
        properties.push_back(shown(property.toObject()) + ": " + shown(property["value"].toObject()));
    EXPECT_EQ(
        properties,
        (Texts{": kind 10, textValue works no. 4711", "word1 1: intValue 2", "word1 2: doubleValue 350.5, kind 6",
               "formatText yyyy-MM-dd, word1 3: intValue 1700000000, kind 11", "word1 4: floatValue 0.25, kind 5"}));
}

// The voltage has 50 Hz and 2,000 samples a second: sample 10 is the first maximum.
TEST(GqtoolSimulated, hasAWaveOfAShortCircuit)
{
    const InputFile bytes(replyHex("0x36"));
    const QString table = run({"wave", "--csv", "-", "--file", bytes.path}).output;
    const QStringList lines = table.split('\n');
    const auto sample = [&](int number) {
        for (const QString& line : lines) {
            if (line.startsWith(QString("%1,").arg(number)))
                return line.section(',', 1).toDouble();
        }
        ADD_FAILURE() << "no sample " << number;
        return 0.0;
    };
    EXPECT_TRUE(table.trimmed().section('\n', -1).startsWith("1999,"));

    const double step = (378.6101 + 378.65) / 65535; // between two values of a quantised sample
    EXPECT_NEAR(sample(0), 0, step);
    EXPECT_NEAR(sample(10), 326, step);
    EXPECT_NEAR(sample(30), -326, step);
    EXPECT_NEAR(sample(390), -326, step);   // the fault is at sample 400
    EXPECT_NEAR(sample(410), 74.204, step); // 1 - 0.8 exp(-0.005 / 0.15) cos(0.06) of it
    EXPECT_NEAR(sample(1999), -51.192, step);
    EXPECT_EQ(run({"wave", "--file", bytes.path}).output.section('\n', 2, 2),
              "waveFlags    0x06: quantised, compressed");
}
