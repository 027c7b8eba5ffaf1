#include "tests/plugin/HostileHost.h"

#include <cstddef>
#include <random>
#include <string>
#include <string_view>

namespace velotrine {
namespace {

template <typename Plugin>
class HostileState : public testing::Test
{
protected:
    /// Of a plug-in none of whose values is its initial one.
    static std::string aState()
    {
        Plugin plugin;
        for (const auto& parameter : parameterTable())
            plugin.setValue(parameter.address,
                            static_cast<double>(0.25f * parameter.minValue + 0.75f * parameter.maxValue));
        EXPECT_TRUE(plugin.start(sampleRate, 512));
        playedBy(plugin, 32);
        return plugin.save();
    }

    /// True if the plug-in has taken the text. A refused one has changed nothing.
    static bool isTaken(PluginUnderTest& plugin, const std::string& text)
    {
        const auto before = plugin.save();
        const bool isTaken = plugin.load(text);
        if (!isTaken) {
            EXPECT_EQ(plugin.save(), before);
        }
        return isTaken;
    }
};

TYPED_TEST_SUITE(HostileState, EveryFormat, FormatNames);

TYPED_TEST(HostileState, IsTakenWholeOrNotAtAllIfItEndsEarly)
{
    const auto saved = this->aState();
    TypeParam plugin;
    const auto before = plugin.save();
    std::size_t refusals = 0;
    for (std::size_t size = 0; size < saved.size(); ++size)
        if (this->isTaken(plugin, saved.substr(0, size))) {
            // What is missing is what the format puts behind the instrument's own text.
            ASSERT_EQ(plugin.save(), saved) << size;
            ASSERT_TRUE(plugin.load(before));
        } else
            ++refusals;
    EXPECT_GT(refusals, saved.size() / 2);
    EXPECT_TRUE(aNewPieceOf(plugin) == pieceOfANewPlugin<TypeParam>());
}

TYPED_TEST(HostileState, HarmsNothingWithAnyBitFlipped)
{
    const auto saved = this->aState();
    TypeParam plugin;
    ASSERT_TRUE(plugin.start(sampleRate, 512));
    plugin.setTransport(rolling);
    int refusals = 0;
    for (std::size_t bit = 0; bit < saved.size() * 8; ++bit) {
        auto state = saved;
        state[bit / 8] = static_cast<char>(static_cast<unsigned char>(state[bit / 8]) ^ (1U << bit % 8));
        refusals += this->isTaken(plugin, state) ? 0 : 1;
        expectBoundedBlock(plugin, 64);
    }
    EXPECT_GT(refusals, 0);
    // Whatever was taken can be saved and taken again.
    TypeParam other;
    EXPECT_TRUE(other.load(plugin.save()));
    EXPECT_EQ(other.save(), plugin.save());
    EXPECT_TRUE(aNewPieceOf(plugin) == pieceOfANewPlugin<TypeParam>());
}

TYPED_TEST(HostileState, HarmsNothingIfItIsRandom)
{
    const auto saved = this->aState();
    TypeParam plugin;
    std::mt19937 random(1);
    const auto below = [&random](std::size_t count) { return random() % count; };
    ASSERT_TRUE(plugin.start(sampleRate, 512));
    plugin.setTransport(rolling);
    for (int i = 0; i < 10000; ++i) {
        std::string state = i % 2 == 0 ? saved : std::string(below(2000), '\0');
        for (auto changes = i % 2 == 0 ? 1 + below(8) : state.size(); changes > 0 && !state.empty();
             --changes)
            state[below(state.size())] = static_cast<char>(random());
        std::ignore = this->isTaken(plugin, state);
        if (i % 16 == 0)
            expectBoundedBlock(plugin, 64);
    }
    EXPECT_TRUE(aNewPieceOf(plugin) == pieceOfANewPlugin<TypeParam>());
}

TYPED_TEST(HostileState, IsRefusedIfItIsOfAnotherVersionOrFarTooLong)
{
    const auto state = stateOfANewPieceEachTime();
    constexpr std::string_view version = R"("version": 1)";
    TypeParam plugin;
    for (const std::string other :
         {"0", "2", "-1", "1.5", "1e99", "\"1\"", "null", "true", "[1]", "18446744073709551617"}) {
        auto text = state;
        text.replace(text.find(version), version.size(), "\"version\": " + other);
        EXPECT_FALSE(this->isTaken(plugin, text)) << other;
    }
    constexpr std::size_t tenMebibytes = 10U << 20U;
    EXPECT_FALSE(this->isTaken(plugin, std::string(tenMebibytes, ' ')));
    EXPECT_FALSE(this->isTaken(plugin, std::string(tenMebibytes, '[')));
    EXPECT_FALSE(this->isTaken(plugin, state + std::string(tenMebibytes, ' ')));
    EXPECT_TRUE(aNewPieceOf(plugin) == pieceOfANewPlugin<TypeParam>());
}

} // namespace
} // namespace velotrine
