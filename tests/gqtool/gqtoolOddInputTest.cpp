// gqtool under odd input: numbers with leading zeros, addresses that are none.

#include <QProcess>
#include <QStringList>

#include <gtest/gtest.h>

static const int waitMs = 20000;

static QString firstLine(QProcess& tool)
{
    while (!tool.canReadLine()) {
        if (!tool.waitForReadyRead(waitMs))
            return "no line, exit code " + QString::number(tool.exitCode());
    }
    return QString::fromUtf8(tool.readLine()).trimmed();
}

static void end(QProcess& tool)
{
    tool.terminate();
    tool.waitForFinished(waitMs);
}

TEST(GqtoolCall, takesLeadingZerosForADecimalNumber)
{
    QProcess station;
    station.start(GQTOOL, {"station"});
    const QString endpoint = firstLine(station).mid(QString("listening on ").size());
    QProcess call;
    call.start(GQTOOL, {"call", endpoint, "setState", "010"});
    EXPECT_TRUE(call.waitForFinished(waitMs));
    EXPECT_EQ(call.readAllStandardOutput().toStdString(), "10\n");
    end(station);
}

TEST(GqtoolCall, takesLeadingZerosForADecimalPort)
{
    QProcess call;
    call.start(GQTOOL, {"call", "127.0.0.1:00008", "systemState"}); // a port like any other, where nobody listens
    EXPECT_TRUE(call.waitForFinished(waitMs));
    EXPECT_EQ(call.exitCode(), 1) << call.readAllStandardError().toStdString();
}

TEST(GqtoolStation, refusesAnAddressThatIsNone)
{
    for (const char* address : {"nonsense", "localhost", "300.1.1.1"}) {
        SCOPED_TRACE(address);
        QProcess station;
        station.start(GQTOOL, {"station", "--address", address});
        EXPECT_FALSE(station.waitForReadyRead(waitMs)) << station.readLine().toStdString(); // ends without a line
        EXPECT_NE(station.exitCode(), 0);
        end(station);
    }
}
