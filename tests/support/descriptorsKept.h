#pragma once

#include "support/plainSockets.h"

#include <gtest/gtest.h>

#include <set>

// Fixture for tests that must not leave a descriptor open.
class DescriptorsKept : public testing::Test {
protected:
    ~DescriptorsKept() override { EXPECT_TRUE(openedSince(atFirst).empty()); }

private:
    const std::set<int> atFirst = openDescriptors();
};
