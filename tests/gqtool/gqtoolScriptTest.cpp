// gqtool station --script FILE: what goes out, byte for byte, and what a client makes of it.

#include "stationClients.h"

// --- Greetings ----------------------------------------------------------------------------------------------------

TEST(GqtoolScript, omitsAGreeting)
{
    ScriptedStation station("greeting every silent");
    PlainClient client(station);
    client.send(setState7);
    EXPECT_NEXT(client, state7);
    EXPECT_EQ(station.callShortly({"systemState"}).errors,
              "gqtool: request 'systemState' to " + station.endpoint +
                  " failed with 0: silent: no greeting in time (try gqtool probe " + station.endpoint + ")\n");
}

TEST(GqtoolScript, changesTheGreetingsThatItNames)
{
    ScriptedStation station("greeting 1 wrong-end\n"
                            "greeting 2 close-after 5\n"
                            "greeting 3 close-after 0\n"
                            "greeting 4 error -7\n"
                            "greeting 5 together\n"
                            "greeting 6 split 3\n");
    EXPECT_NEXT(PlainClient(station), "68 04000000 0000 00 00 00 01000000 0000 17"_hex);
    PlainClient cut(station);
    EXPECT_NEXT(cut, "68 04000000"_hex);
    EXPECT_TRUE(cut.isAtEnd());
    EXPECT_TRUE(PlainClient(station).isAtEnd());
    EXPECT_NEXT(PlainClient(station), errorMinus7);
    EXPECT_NEXT(PlainClient(station), greeting + greeting);
    EXPECT_NEXT(PlainClient(station), greeting);
    EXPECT_NEXT(PlainClient(station), greeting);
}

TEST(GqtoolScript, makesAClientFailOnEachBadGreeting)
{
    ScriptedStation station("greeting 1 wrong-end\n"
                            "greeting 2 close-after 5\n"
                            "greeting 3 error -7\n"
                            "greeting 4 split 3\n");
    for (const char* result : {"0: bad-frame: ", "0: bad-frame: ", "-7: error-frame: "}) {
        const QString errors = station.call({"systemState"}).errors;
        EXPECT_TRUE(errors.contains(QString("failed with ") + result)) << errors.toStdString();
    }
    EXPECT_EQ(station.call({"systemState"}).output, "1\n"); // a greeting in two parts is one
}

TEST(GqtoolScript, letsAClientConnectIfTheWholeGreetingArrivesInTime)
{
    ScriptedStation station("greeting 1 late 20\n"
                            "greeting 2 split 9\n"
                            "greeting 3 pieces 3\n"
                            "greeting 4 together\n"
                            "greeting 5 error 5\n" // a code above 1 counts as a greeting
                            "greeting 6 close-after 17\n");
    for (int greetings = 1; greetings <= 5; ++greetings)
        EXPECT_EQ(station.callShortly({"systemState"}).output, "1\n") << greetings;
    EXPECT_TRUE(station.callShortly({"systemState"}).errors.contains(" failed with -1: ")); // sent
}

// --- Replies ------------------------------------------------------------------------------------------------------

TEST(GqtoolScript, changesOnlyTheRepliesThatItNames)
{
    ScriptedStation station("reply 2 wrong-end");
    PlainClient client(station);
    for (int i = 0; i < 3; ++i)
        client.send(setState7);
    EXPECT_NEXT(client, greeting + state7 + state7WithWrongEnd + state7);
}

TEST(GqtoolScript, countsOverAllConnectionsAndDatagrams)
{
    ScriptedStation station("reply 3 wrong-end");
    PlainClient first(station);
    first.send(setState7);
    EXPECT_NEXT(first, greeting + state7);
    DatagramClient second(station);
    second.send(setState7);
    EXPECT_EQ(second.next(), hex(datagram7));
    PlainClient third(station);
    third.send(setState7);
    EXPECT_NEXT(third, greeting + state7WithWrongEnd);
}

TEST(GqtoolScript, addsUpLinesAndTheLastOneCounts)
{
    ScriptedStation station("reply every error -9\n"
                            "reply 2 wrong-end\n"
                            "reply 2 error -7\n"
                            "reply 3 none\n");
    PlainClient client(station);
    for (int i = 0; i < 3; ++i)
        client.send(setState7);
    EXPECT_NEXT(client, greeting + "68 04000000 0000 00 00 ff f7ffffff 0000 16"_hex +
                            "68 04000000 0000 00 00 ff f9ffffff 0000 17"_hex + state7);
}

TEST(GqtoolScript, overridesTheOptions)
{
    ScriptedStation station("reply 1 none", {"--wrong-end"});
    PlainClient client(station);
    client.send(setState7);
    client.send(setState7);
    EXPECT_NEXT(client, greeting + state7 + state7WithWrongEnd);
}

TEST(GqtoolScript, delaysReplies)
{
    ScriptedStation station("reply 1 late 200\ngreeting 1 late 200");
    const Clock::time_point start = Clock::now();
    PlainClient client(station);
    EXPECT_NEXT(client, greeting);
    EXPECT_GE(msSince(start), 200);
    client.send(setState7);
    EXPECT_NEXT(client, state7);
    EXPECT_GE(msSince(start), 400);
}

TEST(GqtoolScript, splitsAReplyAfterAByte)
{
    ScriptedStation station("reply every split 9");
    PlainClient client(station);
    client.send(setState7);
    EXPECT_NEXT(client, greeting + state7);
    EXPECT_EQ(station.call({"setState", "7"}).output, "7\n");

    DatagramClient datagrams(station); // whose pieces stay apart
    datagrams.send(setState7);
    EXPECT_EQ(datagrams.next(), hex(datagram7.left(9)));
    EXPECT_EQ(datagrams.next(), hex(datagram7.mid(9)));
    const Outcome outcome = station.callByUdp({"setState", "7"});
    EXPECT_TRUE(
        outcome.errors.contains(" failed with 0: bad-frame: a datagram without a complete frame, after 9 of the "
                                "10 bytes of a header (try gqtool probe --udp "))
        << outcome.errors.toStdString();
}

TEST(GqtoolScript, splitsTheRestOfAReplyIntoPieces)
{
    ScriptedStation station("reply every split 9\nreply every pieces 40");
    DatagramClient client(station);
    client.send(setState7);
    EXPECT_EQ(client.next(), hex(datagram7.left(9)));
    EXPECT_EQ(client.next(), hex(datagram7.mid(9, 40)));
    EXPECT_EQ(client.next(), hex(datagram7.mid(49)));
}

TEST(GqtoolScript, sendsAReplyOfOneFrameTwice)
{
    ScriptedStation station("reply 1 together\nreply 3 together");
    PlainClient client(station);
    client.send(setState7);
    client.send(askState);
    EXPECT_NEXT(client, greeting + state7 + state7 + "68 04000000 0000 00 00 01 07000000 0000 16"_hex);

    DatagramClient datagrams(station);
    datagrams.send(setState7);
    EXPECT_EQ(datagrams.next(), hex(datagram7 + datagram7));
}

TEST(GqtoolScript, sendsTheFramesOfAListInOneWrite)
{
    ScriptedStation station("reply every together", {"--gap", "60000"});
    DatagramClient client(station);
    client.send("68 04000000 0000 00 00 20 65000000 0000 16"_hex); // 101 integers, 100 of them in the first frame
    const std::string both = client.next();
    EXPECT_EQ(both.substr(0, 41), "68 94 01 00 00 00 00 00 00 20 64 00 00 00");
    EXPECT_EQ(both.substr(size_t(3) * 417, 41), "68 33 00 00 00 00 00 00 00 20 01 00 00 00");

    // A client loses the second frame, and waits for it.
    const Outcome outcome = station.callShortly({"ints", "101"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output.count('\n'), 100);
    EXPECT_TRUE(outcome.errors.contains(
        " failed with 0: no-reply: no complete reply in time, after 100 of 101 elements (try gqtool probe "))
        << outcome.errors.toStdString();
}

TEST(GqtoolScript, staysSilentAndExecutesNothing)
{
    ScriptedStation station("reply 1 silent");
    PlainClient client(station);
    client.send(setState7);
    client.send(askState);
    EXPECT_NEXT(client, greeting + state1);
}

TEST(GqtoolScript, closesAfterAByte)
{
    ScriptedStation station("reply 1 close-after 12\nreply 2 close-after 0\nreply 3 close-after 1000");
    PlainClient cut(station);
    cut.send(setState7);
    EXPECT_NEXT(cut, greeting + state7.left(12));
    EXPECT_TRUE(cut.isAtEnd());
    PlainClient closed(station);
    closed.send(setState8); // not carried out
    EXPECT_NEXT(closed, greeting);
    EXPECT_TRUE(closed.isAtEnd());
    PlainClient whole(station);
    whole.send(askState);
    EXPECT_NEXT(whole, greeting + "68 04000000 0000 00 00 01 07000000 0000 16"_hex);
    EXPECT_TRUE(whole.isAtEnd());
}

TEST(GqtoolScript, cutsADatagramInsteadOfClosing)
{
    ScriptedStation station("reply 1 close-after 12\nreply 2 close-after 0");
    DatagramClient client(station);
    client.send(setState7);
    EXPECT_EQ(client.next(), hex(datagram7.left(12)));
    client.send(setState7);
    client.send(setState7);
    EXPECT_EQ(client.next(), hex(datagram7));
}

TEST(GqtoolScript, refusesARequestWithoutExecutingIt)
{
    ScriptedStation station("reply 1 error -7");
    PlainClient client(station);
    client.send(setState8);
    client.send(askState);
    EXPECT_NEXT(client, greeting + errorMinus7 + state1);
}

TEST(GqtoolScript, makesTheClientReportEachFault)
{
    const struct {
        const char* fault;
        const char* message; // at once, or after the time-out
        bool waits = false;
    } faults[] = {
        {"silent", "failed with 0: no-reply: no complete reply in time", true},
        {"late 2000", "failed with 0: no-reply: no complete reply in time", true},
        {"wrong-end", "failed with 0: bad-frame: a frame that ends in 0x17 instead of 0x16"},
        {"close-after 0", "failed with -1: closed: the server closed, or the connection broke"},
        {"close-after 12", "failed with -1: bad-frame: the server closed, or the connection broke, after 12 of the 17 "
                           "bytes of the frame"},
        {"error -7", "failed with -7: error-frame: the server's own code, from an error frame"},
    };
    for (const auto& fault : faults) {
        SCOPED_TRACE(fault.fault);
        ScriptedStation station(QByteArray("reply every ") + fault.fault);
        const Outcome outcome = fault.waits ? station.callShortly({"systemState"}) : station.call({"systemState"});
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(outcome.output, "");
        const QString start = "gqtool: request 'systemState' to " + station.endpoint + ' ' + fault.message;
        EXPECT_TRUE(outcome.errors.startsWith(start)) << outcome.errors.toStdString();
    }
}

// --- What the station says ----------------------------------------------------------------------------------------

TEST(GqtoolScript, printsWhatHappenedToAReply)
{
    ScriptedStation station("reply 1 close-after 12\nreply 2 close-after 0\nreply 3 silent\ngreeting 4 close-after 3");
    for (const char* outcome : {": closed after 12 bytes", ": closed", ": not answered"}) {
        PlainClient client(station);
        client.send(setState7);
        station.nextLine(); // connected
        const QString line = station.nextLine();
        EXPECT_TRUE(line.endsWith(QString(" command 0x06, 17 bytes") + outcome)) << line.toStdString();
    }
    PlainClient client(station);
    QString line;
    while (!line.contains("closed after"))
        line = station.nextLine();
    EXPECT_TRUE(line.endsWith(" closed after 3 bytes of its greeting")) << line.toStdString();
}

// --- Scripts ------------------------------------------------------------------------------------------------------

TEST(GqtoolScript, skipsCommentsAndSpace)
{
    ScriptedStation station("# a comment\r\n\r\n \t reply\tevery   error  -0x7 # and another\r\n#\n");
    PlainClient client(station);
    client.send(setState7);
    EXPECT_NEXT(client, greeting + errorMinus7);
}

TEST(GqtoolScript, isRefusedWithLineAndReasonBeforeTheStationListens)
{
    const struct {
        const char* line;
        const char* reason;
    } lines[] = {
        {"reply", "a line must be 'greeting|reply|command COMMAND SELECTOR FAULT [VALUE]'"},
        {"reply every", "a line must be 'greeting|reply|command COMMAND SELECTOR FAULT [VALUE]'"},
        {"answer every silent", "a line must begin with greeting, reply or command, got 'answer'"},
        {"reply 0 silent",
         "SELECTOR must be a number from 1, a range such as 3-7, every, every/10 or a chance such as 2%, got '0'"},
        {"reply -1 silent",
         "SELECTOR must be a number from 1, a range such as 3-7, every, every/10 or a chance such as 2%, got '-1'"},
        {"reply all silent",
         "SELECTOR must be a number from 1, a range such as 3-7, every, every/10 or a chance such as 2%, got 'all'"},
        {"reply 7-3 silent",
         "SELECTOR must be a number from 1, a range such as 3-7, every, every/10 or a chance such as 2%, got '7-3'"},
        {"reply every/0 silent", "SELECTOR must be a number from 1, a range such as 3-7, every, every/10 or a chance "
                                 "such as 2%, got 'every/0'"},
        {"reply 101% silent",
         "SELECTOR must be a number from 1, a range such as 3-7, every, every/10 or a chance such as 2%, got '101%'"},
        {"command 256 every silent", "COMMAND must be an integer from 0 to 255, got '256'"},
        {"command 0x35 silent", "a line must be 'greeting|reply|command COMMAND SELECTOR FAULT [VALUE]'"},
        {"reply every down 0", "down must be an integer from 1 to 2147483647, got '0'"},
        {"reply every lat 5", "FAULT must be one of late, split, pieces, together, wrong-end, silent, close-after, "
                              "error, down, none, got 'lat'; did you mean 'late'?"},
        {"reply every late", "late takes one VALUE"},
        {"reply every late 5 6", "late takes one VALUE"},
        {"reply every silent 5", "silent takes no VALUE"},
        {"reply every late x", "late must be an integer from 0 to 2147483647, got 'x'"},
        {"reply every late -1", "late must be an integer from 0 to 2147483647, got '-1'"},
        {"reply every split 0", "split must be an integer from 1 to 2147483647, got '0'"},
        {"reply every close-after 2147483648", "close-after must be an integer from 0 to 2147483647, got '2147483648'"},
        {"reply every error x", "error must be a 4-byte integer, got 'x'"},
    };
    for (const auto& bad : lines) {
        SCOPED_TRACE(bad.line);
        const ScriptFile script(QByteArray("# first\nreply 1 silent\n") + bad.line + "\nreply 2 silent\n");
        const Outcome outcome = run({"station", "--script", script.path});
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(outcome.errors, QString("gqtool: %1: line 3: %2\n").arg(script.path, bad.reason));
    }
}

TEST(GqtoolScript, isRefusedWithAllItsErrorsUpTo20)
{
    const ScriptFile two("reply 1 silent\nreply 2\nreply 3 silent\nanswer 4 silent\n");
    EXPECT_EQ(run({"station", "--script", two.path}).errors,
              QString("gqtool: %1: line 2: a line must be 'greeting|reply|command COMMAND SELECTOR FAULT [VALUE]'\n"
                      "gqtool: %1: line 4: a line must begin with greeting, reply or command, got 'answer'\n")
                  .arg(two.path));
    const ScriptFile many(QByteArray("reply\n").repeated(22));
    const QStringList errors = run({"station", "--script", many.path}).errors.split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(errors.size(), 21);
    EXPECT_TRUE(errors[19].contains(": line 20: "));
    EXPECT_EQ(errors[20], "gqtool: 2 more errors");
}

TEST(GqtoolScript, isRefusedIfItCannotBeRead)
{
    const QTemporaryDir folder;
    for (const QString& path : {folder.filePath("missing"), folder.path()}) {
        const Outcome outcome = run({"station", "--script", path});
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(outcome.output, "");
        EXPECT_TRUE(outcome.errors.startsWith(QString("gqtool: cannot read %1: ").arg(path)))
            << outcome.errors.toStdString();
    }
}

TEST(GqtoolScript, acceptsTheExample)
{
    RunningStation station({"--script", GQLIB_EXAMPLES "/stationFaults.txt"});
    const Outcome outcome = station.call({"--timeout", "1000", "--repeat", "10", "systemState"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(
        outcome.output.section('\n', 0, 5),
        "requests    10\n"
        "failures    4\n"
        "            1 failed with -1: bad-frame: the server closed, or the connection broke, after 13 of the 17 bytes "
        "of the frame\n"
        "            1 failed with -7: error-frame: the server's own code, from an error frame\n"
        "            1 failed with 0: bad-frame: a frame that ends in 0x17 instead of 0x16\n"
        "            1 failed with 0: silent: no greeting in time");
}
