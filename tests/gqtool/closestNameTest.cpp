// The name that a misspelt word probably means.

#include "gqtool/closestName.h"

#include <gtest/gtest.h>

static const QStringList commands = {"station", "call", "probe", "trace", "wave", "setState"};

TEST(ClosestName, returnsTheNameOneEditAway)
{
    EXPECT_EQ(closestName("wafe", commands), "wave");       // replaced
    EXPECT_EQ(closestName("wavee", commands), "wave");      // inserted
    EXPECT_EQ(closestName("wve", commands), "wave");        // removed
    EXPECT_EQ(closestName("staiton", commands), "station"); // swapped
    EXPECT_EQ(closestName("awve", commands), "wave");       // swapped, at the start
}

TEST(ClosestName, countsASwapOfNeighboursAsOneEdit)
{
    EXPECT_EQ(closestName("ba", {"ab"}), "ab"); // one edit is allowed, and two replacements would be two
    EXPECT_EQ(closestName("xy", {"ab"}), "");
}

TEST(ClosestName, allowsAThirdOfTheLettersRoundedUp)
{
    EXPECT_EQ(closestName("stXtXoX", commands), "station"); // 3 of 7
    EXPECT_EQ(closestName("sXtXoXX", commands), "");        // 5 of 7
    EXPECT_EQ(closestName("XXation", {"station"}), "station");
    EXPECT_EQ(closestName("abc", {"abX"}), "abX"); // 1 of 3
    EXPECT_EQ(closestName("abc", {"aXX"}), "");
}

TEST(ClosestName, prefersTheNameWithFewerEdits)
{
    EXPECT_EQ(closestName("reques", {"repeats", "request"}), "request");
    EXPECT_EQ(closestName("reques", {"request", "repeats"}), "request");
}

TEST(ClosestName, prefersTheNameOfTheSameLengthAmongEquallyCloseOnes)
{
    EXPECT_EQ(closestName("intz", {"int", "ints"}), "ints");
    EXPECT_EQ(closestName("intz", {"ints", "int"}), "ints");
    EXPECT_EQ(closestName("intz", {"inXX", "int"}), "int"); // fewer edits count for more
}

TEST(ClosestName, returnsTheFirstOfEquallyCloseNames)
{
    EXPECT_EQ(closestName("arg", {"arg1", "arg2"}), "arg1");
}

TEST(ClosestName, ignoresCase)
{
    EXPECT_EQ(closestName("SETSTATE", commands), "setState");
}

TEST(ClosestName, returnsNothingForAnotherWord)
{
    EXPECT_EQ(closestName("nonsense", commands), "");
    EXPECT_EQ(closestName("", commands), "");
    EXPECT_EQ(closestName("w", commands), "");
    EXPECT_EQ(closestName("wave", {}), "");
}

TEST(ClosestName, becomesTheEndOfAnErrorMessage)
{
    EXPECT_EQ(didYouMean("wave"), "; did you mean 'wave'?");
    EXPECT_EQ(didYouMean(""), "");
}
