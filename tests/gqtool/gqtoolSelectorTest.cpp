// gqtool station --script FILE: which replies a line selects, and being down.

#include "stationClients.h"

// Requests the state `count` times. Returns a letter per reply: '.' for the state, 'x' for error -7.
static std::string outcomes(PlainClient& client, int count)
{
    std::string letters;
    for (int i = 0; i < count; ++i) {
        client.send(askState);
        const std::string reply = client.next(state1);
        letters += reply == hex(state1) ? '.' : reply == hex(errorMinus7) ? 'x' : '?';
    }
    return letters;
}

static std::string outcomesOf(const QByteArray& script, int count, const QStringList& options = {})
{
    const ScriptedStation station(script, options);
    PlainClient client(station);
    EXPECT_NEXT(client, greeting);
    return outcomes(client, count);
}

TEST(GqtoolSelector, selectsANumberARangeAndEveryTenth)
{
    EXPECT_EQ(outcomesOf("reply 3 error -7", 5), "..x..");
    EXPECT_EQ(outcomesOf("reply 3-5 error -7", 7), "..xxx..");
    EXPECT_EQ(outcomesOf("reply 2-2 error -7", 3), ".x.");
    EXPECT_EQ(outcomesOf("reply every/10 error -7", 21), ".........x.........x.");
    EXPECT_EQ(outcomesOf("reply every/1 error -7", 2), "xx");
}

TEST(GqtoolSelector, countsTheRequestsOfACommandOverAllLinks)
{
    ScriptedStation station("command 0x01 2-3 error -7\ncommand 6 every/2 silent");
    PlainClient first(station);
    PlainClient second(station);
    EXPECT_NEXT(first, greeting);
    EXPECT_NEXT(second, greeting);
    first.send(setState7);
    EXPECT_NEXT(first, state7);         // not counted for command 1
    EXPECT_EQ(outcomes(first, 1), "?"); // the state is 7 now
    EXPECT_EQ(outcomes(second, 2), "xx");
    EXPECT_EQ(outcomes(first, 1), "?");
    second.send(setState8); // the second with that command: no reply, and the state stays
    second.send(askState);
    EXPECT_NEXT(second, "68 04000000 0000 00 00 01 07000000 0000 16"_hex);
}

TEST(GqtoolSelector, repeatsItsChancesWithTheSameSeed)
{
    const std::string first = outcomesOf("reply 20% error -7", 200, {"--seed", "5"});
    const auto faults = std::count(first.begin(), first.end(), 'x');
    EXPECT_GT(faults, 10);
    EXPECT_LT(faults, 90);
    EXPECT_EQ(outcomesOf("reply 20% error -7", 200, {"--seed", "5"}), first);
    EXPECT_NE(outcomesOf("reply 20% error -7", 200, {"--seed", "6"}), first);
    EXPECT_EQ(outcomesOf("reply 100% error -7", 5), "xxxxx");
}

TEST(GqtoolSelector, selectsGreetingsToo)
{
    ScriptedStation station("greeting every/2 error -7");
    EXPECT_NEXT(PlainClient(station), greeting);
    EXPECT_NEXT(PlainClient(station), errorMinus7);
    EXPECT_NEXT(PlainClient(station), greeting);
}

// --- Being down ---------------------------------------------------------------------------------------------------

static QString lineWith(RunningStation& station, const QString& text)
{
    QString line;
    while (line != "no line" && !line.contains(text))
        line = station.nextLine();
    return line;
}

TEST(GqtoolSelector, closesEveryLinkAndRefusesNewOnesWhileDown)
{
    ScriptedStation station("reply 2 down 1000");
    PlainClient first(station);
    PlainClient second(station);
    DatagramClient datagrams(station);
    EXPECT_NEXT(first, greeting);
    EXPECT_NEXT(second, greeting);
    EXPECT_EQ(outcomes(second, 1), ".");
    first.send(setState7);
    EXPECT_TRUE(first.isAtEnd());
    EXPECT_TRUE(second.isAtEnd());
    EXPECT_LT(connected("127.0.0.1", station.port()), 0);
    datagrams.send(askState); // dropped
    EXPECT_TRUE(lineWith(station, "down for").endsWith("down for 1000 ms"));
    EXPECT_EQ(lineWith(station, "up"), "up again");
    PlainClient third(station);
    EXPECT_NEXT(third, greeting);
    EXPECT_EQ(outcomes(third, 1), "."); // the request was not carried out
    EXPECT_FALSE(becomes(datagrams.socket, POLLIN, 0));
}

// While the station is down, its port can be taken, since nothing listens on it.
TEST(GqtoolSelector, staysDownWhileAnotherProgramHasThePort)
{
    ScriptedStation station("reply 1 down 1000");
    PlainClient client(station);
    EXPECT_NEXT(client, greeting);
    client.send(setState7);
    EXPECT_TRUE(lineWith(station, "down for").endsWith("down for 1000 ms"));
    {
        const Descriptor other(::socket(AF_INET, SOCK_STREAM, 0));
        const int on = 1;
        setsockopt(other, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<unsigned short>(station.port()));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        ASSERT_EQ(bind(other, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        ASSERT_EQ(listen(other, 1), 0);
        EXPECT_EQ(station.nextError(),
                  "gqtool: cannot listen on " + station.endpoint + " again: Address already in use");
    }
    EXPECT_EQ(lineWith(station, "up"), "up again");
    PlainClient next(station);
    EXPECT_NEXT(next, greeting);
}

TEST(GqtoolSelector, dropsALateReplyOfAnotherLinkWhenItGoesDown)
{
    ScriptedStation station("reply 1 late 200\nreply 2 down 1");
    PlainClient late(station);
    PlainClient other(station);
    EXPECT_NEXT(late, greeting);
    EXPECT_NEXT(other, greeting);
    late.send(setState7);
    EXPECT_TRUE(lineWith(station, "connected").contains("connected"));
    while (!becomes(late.connection, POLLIN, 20)) // until the first request is counted
        other.send(askState);
    EXPECT_TRUE(late.isAtEnd());
    EXPECT_EQ(lineWith(station, "up"), "up again");
    PlainClient next(station);
    EXPECT_NEXT(next, greeting);
    EXPECT_EQ(outcomes(next, 1), ".");
}
