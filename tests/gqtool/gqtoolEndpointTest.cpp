// HOST:PORT on the command lines of call, probe and trace, and the addresses that station and trace listen on.

#include "support/gqtoolProgram.h"
#include "support/scriptedServer.h"

#include <QJsonDocument>
#include <QJsonObject>

// --- The server ---------------------------------------------------------------------------------------------------

TEST(GqtoolEndpoint, refusesWhatIsNoHostAndPort)
{
    const struct {
        const char* endpoint;
        const char* error;
    } cases[] = {
        {"127.0.0.1", "HOST:PORT is required, got '127.0.0.1'"},
        {":5000", "HOST:PORT is required, got ':5000'"},
        {"", "HOST:PORT is required, got ''"},
        {"127.0.0.1:70000", "PORT must be an integer from 1 to 65535, got '70000'"},
        {"127.0.0.1:0", "PORT must be an integer from 1 to 65535, got '0'"},
        {"localhost:-1", "PORT must be an integer from 1 to 65535, got '-1'"},
        {"localhost:http", "PORT must be an integer from 1 to 65535, got 'http'"},
        {"300.1.1.1:5000", "HOST must be a name or four numbers from 0 to 255, got '300.1.1.1'"},
        {"1.2.3:5000", "HOST must be a name or four numbers from 0 to 255, got '1.2.3'"},
        {"0x7f.1:5000", "HOST must be a name or four numbers from 0 to 255, got '0x7f.1'"},
        {"[::1]:5000", "HOST must be a name or a dotted IPv4 address, got '[::1]'"},
        {"http://host:5000", "HOST must be a name or a dotted IPv4 address, got 'http://host'"},
    };
    for (const auto& example : cases) {
        for (const QStringList& command : {QStringList{"probe", example.endpoint},
                                           {"call", example.endpoint, "systemState"},
                                           {"trace", "--listen", "0", example.endpoint}}) {
            SCOPED_TRACE(command.join(' ').toStdString());
            const Outcome outcome = run(command);
            EXPECT_EQ(outcome.exitCode, 2);
            EXPECT_EQ(outcome.output, "");
            EXPECT_TRUE(outcome.errors.contains(QString(": %1\n").arg(example.error))) << outcome.errors.toStdString();
        }
    }
}

TEST(GqtoolCall, failsOnANameThatHasNoAddress)
{
    const Outcome outcome = run({"call", "nosuchhost.invalid:5000", "systemState"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_TRUE(outcome.errors.contains("failed with -1: unresolved: cannot resolve 'nosuchhost.invalid': "))
        << outcome.errors.toStdString();
    const Outcome json = run({"call", "--json", "nosuchhost.invalid:5000", "systemState"});
    EXPECT_EQ(QJsonDocument::fromJson(json.output.toUtf8())["cause"].toString(), "unresolved");
    EXPECT_EQ(run({"call", "--repeat", "3", "nosuchhost.invalid:5000", "systemState"}).exitCode, 1);
}

TEST(GqtoolCall, takesANameAndSaysTheCauseInItsMessage)
{
    RunningStation station;
    const QString byName = "localhost:" + station.endpoint.section(':', 1);
    EXPECT_EQ(run({"call", byName, "systemState"}).output, "1\n");
    const ReservedPort port;
    EXPECT_TRUE(run({"call", QString("127.0.0.1:%1").arg(port.number()), "systemState"})
                    .errors.contains("failed with -1: refused: "));
}

TEST(GqtoolTrace, takesTheStationByName)
{
    RunningStation station;
    const QString port = station.endpoint.section(':', 1);
    RunningProgram trace(GQTOOL, {"trace", "--json", "--listen", "0", "localhost:" + port});
    const QJsonObject first = QJsonDocument::fromJson(trace.nextLine().toUtf8()).object();
    EXPECT_EQ(run({"call", first["address"].toString(), "systemState"}).output, "1\n");

    const Outcome unknown = run({"trace", "--listen", "0", "nosuchhost.invalid:5000"});
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_TRUE(unknown.errors.contains(": cannot resolve 'nosuchhost.invalid': ")) << unknown.errors.toStdString();
}

// --- Where a station listens --------------------------------------------------------------------------------------

static QString listeningAddress(const QStringList& options)
{
    RunningProgram station(GQTOOL, QStringList{"station", "--port", "0"} + options);
    return station.nextLine().section(' ', 2).section(':', 0, 0);
}

TEST(GqtoolStation, listensOnLoopbackAloneForItsAddress)
{
    EXPECT_EQ(listeningAddress({}), "127.0.0.1");
    EXPECT_EQ(listeningAddress({"--address", "127.0.0.1"}), "127.0.0.1");
    EXPECT_EQ(listeningAddress({"--udp", "--address", "127.0.0.1"}), "127.0.0.1");
    EXPECT_EQ(listeningAddress({"--address", "0.0.0.0"}), "0.0.0.0");
}

TEST(GqtoolStation, saysWhyItCannotListen)
{
    RunningStation station;
    const QString port = station.endpoint.section(':', 1);
    for (const QStringList& command :
         {QStringList{"station", "--port", port}, {"trace", "--listen", port, "127.0.0.1:1"}}) {
        const Outcome outcome = run(command);
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_TRUE(outcome.errors.endsWith(station.endpoint + ": Address already in use\n"))
            << outcome.errors.toStdString();
    }
}
