// gqtool station: many links, slow links, short payloads.

#include "gqtool/station/stationAnswers.h"

#include "stationClients.h"
#include "support/processState.h"

// A connection that was greeted, or none.
static std::unique_ptr<PlainClient> greeted(const RunningStation& station)
{
    auto client = std::make_unique<PlainClient>(station);
    return client->next(greeting) == hex(greeting) ? std::move(client) : nullptr;
}

TEST(GqtoolStation, servesAnyNumberOfConnectionsOneAfterTheOther)
{
    RunningStation station({"--quiet"});
    limitDescriptors(station.pid(), 64);
    [[maybe_unused]] int warm = 0;
    for (int i = 0; i < 5000; ++i) {
        const auto client = greeted(station);
        ASSERT_NE(client, nullptr) << i;
        client->send(setState7);
        ASSERT_EQ(client->next(state7), hex(state7)) << i;
        reset(client->connection); // leaves no port in TIME_WAIT
        if (i == 500)
            warm = memoryOf(station.pid());
    }
#ifndef __SANITIZE_ADDRESS__ // which keeps freed memory
    EXPECT_LE(memoryOf(station.pid()), warm + 1024);
#endif
    EXPECT_LT(descriptorsOf(station.pid()), 20);
}

TEST(GqtoolStation, reportsThatDescriptorsRunOutAndGoesOn)
{
    RunningStation station({"--quiet"});
    limitDescriptors(station.pid(), 24);
    std::vector<std::unique_ptr<PlainClient>> clients;
    for (int i = 0; i < 40; ++i)
        clients.push_back(std::make_unique<PlainClient>(station)); // the system queues those that are not accepted
    EXPECT_EQ(station.nextError(), "gqtool: cannot accept another client now: Too many open files");
    clients[0]->send(setState7);
    EXPECT_EQ(clients[0]->next(greeting + state7), hex(greeting + state7));
    std::vector<std::unique_ptr<PlainClient>> waiting;
    for (size_t i = 30; i < 40; ++i)
        waiting.push_back(std::move(clients[i]));
    clients.clear();
    for (const auto& client : waiting)
        EXPECT_EQ(client->next(greeting), hex(greeting));
}

// --- Requests -----------------------------------------------------------------------------------------------------

TEST(GqtoolStation, refusesAPayloadThatIsTooShort)
{
    RunningStation station;
    PlainClient client(station);
    EXPECT_NEXT(client, greeting);
    const QByteArray errorMinus11 = "68 04000000 0000 00 00 ff f5ffffff 0000 16"_hex;
    client.send("68 03000000 0000 00 00 06 070000 0000 16"_hex); // setState with 3 of 4 bytes
    EXPECT_NEXT(client, errorMinus11);
    client.send("68 07000000 0000 00 00 05 00ca9a3b 000000 0000 16"_hex); // setTime with 7 of 8 bytes
    EXPECT_NEXT(client, errorMinus11);
    client.send(askState);
    EXPECT_NEXT(client, state1);
}

TEST(StationAnswers, pausesBetweenTheFramesOfAReply)
{
    const std::vector<TimedFrame> reply = spaced({"a", "b", "c"}, 100);
    ASSERT_EQ(reply.size(), 3u);
    EXPECT_EQ(reply[0].pauseMs, 0);
    EXPECT_EQ(reply[1].pauseMs, 100);
    EXPECT_EQ(reply[2].pauseMs, 100);
}

// --- Slow links ---------------------------------------------------------------------------------------------------

static const QByteArray askBytes = "68 04000000 0000 00 00 21 a0860100 0000 16"_hex; // 100000 bytes, in 25 frames

// Makes a reply of 25 frames slow, and expects that another client is served meanwhile.
static void expectOthersServed(const QByteArray& script, const QStringList& options = {})
{
    SCOPED_TRACE(script.constData());
    ScriptedStation station(script, options);
    PlainClient slow(station);
    EXPECT_NEXT(slow, greeting);
    slow.send(askBytes);
    PlainClient other(station);
    EXPECT_NEXT(other, greeting);
    other.send(askState);
    EXPECT_NEXT(other, state1);
    EXPECT_TRUE(station.nextLine().contains("connected"));
    EXPECT_TRUE(station.nextLine().contains("connected"));
    EXPECT_TRUE(station.nextLine().contains("command 0x01, 17 bytes: answered with 17 bytes")); // and not the slow one
}

TEST(GqtoolStation, servesOthersWhileOneReplyIsLateSplitOrTrickles)
{
    expectOthersServed("command 0x21 every late 600000");
    expectOthersServed("command 0x21 every split 1", {"--gap", "600000"});
    expectOthersServed("command 0x21 every pieces 1"); // takes minutes
}

TEST(GqtoolStation, servesOthersWhileAClientDoesNotRead)
{
    RunningStation station({"--gap", "0"});
    PlainClient deaf(station);
    EXPECT_NEXT(deaf, greeting);
    for (int i = 0; i < 500; ++i)
        deaf.send(askBytes);
    PlainClient other(station);
    EXPECT_NEXT(other, greeting);
    other.send(setState7);
    EXPECT_NEXT(other, state7);
}

TEST(GqtoolStation, answersADatagramWhileTheReplyToAnotherAddressIsLate)
{
    ScriptedStation station("command 6 every late 600000");
    DatagramClient slow(station);
    slow.send(setState7);
    DatagramClient other(station);
    other.send(askState);
    EXPECT_EQ(other.next().substr(0, 2), "68");
}
