// gqtool station --udp and gqtool call --udp, which meet on loopback.

#include "support/gqtoolProgram.h"
#include "support/plainSockets.h"

#include <cstdlib>
#include <ctime>
#include <thread>
#include <vector>

#include <netinet/in.h>
#include <sched.h>
#include <sys/socket.h>

TEST(GqtoolUdp, readsAndSetsTheState)
{
    RunningStation station({"--udp"});
    EXPECT_EQ(station.callByUdp({"systemState"}).output, "1\n");
    EXPECT_EQ(station.callByUdp({"setState", "-7"}).output, "-7\n");
    EXPECT_EQ(station.callByUdp({"systemState"}).output, "-7\n");
    EXPECT_EQ(station.call({"systemState"}).output, "-7\n"); // both reach the same station
    EXPECT_EQ(station.callByUdp({"clear"}).output, "1\n");
    EXPECT_EQ(station.callByUdp({"systemState"}).output, "1\n");
}

TEST(GqtoolUdp, setsTheClockByACountedList)
{
    RunningStation station({"--udp"});
    EXPECT_EQ(station.callByUdp({"setTime", "1000000000", "5"}).output, "1\n");
    const long long seconds = station.callByUdp({"systemTime"}).output.toLongLong();
    EXPECT_GE(seconds, 1000000000);
    EXPECT_LE(seconds, 1000000000 + 20);
}

TEST(GqtoolUdp, distinguishesAReplyOfZeroFromSilence)
{
    RunningStation station({"--udp"});
    const Outcome zero = station.callByUdp({"setState", "0"});
    EXPECT_EQ(zero.exitCode, 0);
    EXPECT_EQ(zero.output, "0\n");

    RunningStation silent({"--udp", "--silent"});
    const Outcome outcome = run({"call", "--udp", "--timeout", "100", silent.endpoint, "systemState"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_TRUE(outcome.errors.contains(" failed with 0: ")) << outcome.errors.toStdString();
}

TEST(GqtoolUdp, gathersListsFromSeveralDatagrams)
{
    RunningStation station({"--udp", "--gap", "0"});
    const QStringList ints = station.callByUdp({"ints", "250"}).output.split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(ints.size(), 250);
    EXPECT_EQ(ints[0], "200");
    EXPECT_EQ(ints[1], "210");
    EXPECT_EQ(ints[249], "690");
    EXPECT_EQ(station.callByUdp({"bytes", "3"}).output, "00 01 02\n");
    EXPECT_EQ(station.callByUdp({"strings", "2"}).output, "unit 1 temperature 1\nunit 1 temperature 2\n");
}

TEST(GqtoolUdp, printsTheStationsErrorCode)
{
    RunningStation station({"--udp"});
    const Outcome outcome = station.callByUdp({"error", "-9"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.errors.contains(" failed with -9: ")) << outcome.errors.toStdString();
}

TEST(GqtoolUdp, refusesAWrongEnd)
{
    RunningStation station({"--udp", "--wrong-end"});
    EXPECT_EQ(run({"call", "--udp", "--timeout", "300", station.endpoint, "systemState"}).exitCode, 1);
}

TEST(GqtoolUdp, failsIfNothingListens)
{
    QString endpoint;
    {
        RunningStation station({"--udp"});
        endpoint = station.endpoint;
    }
    const Outcome outcome = run({"call", "--udp", endpoint, "systemState"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.errors.contains(" failed with -1: ")) << outcome.errors.toStdString();
}

TEST(GqtoolUdp, isNotServedUnlessAsked)
{
    RunningStation station;
    EXPECT_EQ(run({"call", "--udp", "--timeout", "300", station.endpoint, "systemState"}).exitCode, 1);
}

// The system chooses among eight ports of TCP, six of which others have for UDP.
TEST(GqtoolUdp, findsAPortThatIsFreeForBothTransports)
{
    bool isAllowed = false;
    std::thread([&] { // in a network namespace
        isAllowed = ::unshare(CLONE_NEWNET) == 0 &&
                    std::system("ip link set lo up && "
                                "echo 40000 40007 >/proc/sys/net/ipv4/ip_local_port_range") == 0;
        if (!isAllowed)
            return;
        std::vector<Descriptor> others;
        for (const uint16_t port : {40000, 40001, 40004, 40005, 40006, 40007}) {
            others.emplace_back(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
            sockaddr_in address = {};
            address.sin_family = AF_INET;
            address.sin_port = htons(port);
            EXPECT_EQ(::bind(others.back(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        }
        for (int i = 0; i < 5; ++i) {
            const int port = RunningStation({"--udp"}).port();
            EXPECT_TRUE(port == 40002 || port == 40003) << port;
        }
    })
        .join();
    if (!isAllowed)
        GTEST_SKIP() << "needs the right to make a network namespace, and the program ip";
}
