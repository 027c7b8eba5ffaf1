#include "engine/FatalError.h"

#include <csignal>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

TEST(FatalErrorDeathTest, NamesTheConditionOnStandardErrorAndAborts)
{
    EXPECT_EXIT(fatalError("the moon is down"), testing::KilledBySignal(SIGABRT),
                "^velotrine: fatal: the moon is down\n$");
}

} // namespace
} // namespace velotrine
