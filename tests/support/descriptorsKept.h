#pragma once

#include "support/plainSockets.h"

#include <gtest/gtest.h>

#include <set>

// For tests behind which no descriptor may be left over.
class DescriptorsKept : public testing::Test {
protected:
    ~DescriptorsKept() override { EXPECT_TRUE(openedSince(atFirst).empty()); }

private:
    const std::set<int> atFirst = openDescriptors();
};
