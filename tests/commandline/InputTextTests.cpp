#include "commandline/InputText.h"

#include <fstream>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

TEST(InputText, IsAllThatTheStreamHolds)
{
    for (const std::size_t size : {0U, 1U, 65535U, 65536U, 65537U, 200000U}) {
        std::istringstream input(std::string(size, 'x'));
        EXPECT_EQ(textUpTo(1000000, input), std::string(size, 'x'));
    }
}

TEST(InputText, IsOneByteMoreThanAllowedWhereThereIsTooMuch)
{
    for (const std::size_t most : {0U, 10U, 65535U, 65536U, 100000U}) {
        std::istringstream input(std::string(200000, 'x'));
        const auto text = textUpTo(most, input);
        ASSERT_TRUE(text);
        EXPECT_EQ(text->size(), most + 1);
    }
}

TEST(InputText, IsNoneOfAFileThatIsNotThereOrCannotBeRead)
{
    std::ifstream missing("/nowhere/at/all");
    EXPECT_EQ(textUpTo(10, missing), std::nullopt);
    std::ifstream folder("/");
    EXPECT_EQ(textUpTo(10, folder), std::nullopt);
}

} // namespace
} // namespace velotrine
