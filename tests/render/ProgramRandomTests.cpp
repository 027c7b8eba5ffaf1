#include "tests/render/ProgramTest.h"

#include "audiounit/Parameters.h"

#include <algorithm>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velotrine {
namespace {

using Texts = std::vector<std::string>;

const std::string hugeText(100000, 'x');

/// What nobody means, but anybody can type.
const Texts hostile{"nan",
                    "-nan",
                    "inf",
                    "-inf",
                    "1e999",
                    "-1e999",
                    "1e-999",
                    "1e38",
                    "3.5e38",
                    "-0",
                    "0",
                    "-1",
                    "9223372036854775808",
                    "18446744073709551616",
                    "0x10",
                    "1_000",
                    "",
                    " ",
                    "\n",
                    "\t1",
                    "%s%n",
                    "\x1b[31m",
                    "\xff\xfe\x80",
                    "\xf0\x9f\xa5\x81",
                    "Ünïcødé",
                    "--",
                    "-",
                    "=",
                    "@file",
                    "[1,2]",
                    "{}",
                    "/",
                    ".",
                    "/dev/null",
                    "/proc/self/mem",
                    hugeText};

/// Arguments made of good and of hostile values; always the same ones for a seed.
class Typist
{
public:
    explicit Typist(unsigned seed) : random(seed) {}

    Texts renderArguments()
    {
        Texts arguments{"render"};
        // Short, whatever else is typed.
        add(arguments, "--seconds", mostly({"0.01"}));
        add(arguments, "--preset", mostly({"0", "4", "9", "Drum Circle", "wobbly bits"}));
        add(arguments, "--out", mostly({"a.wav", "a.flac", "-", "/dev/null", "missing/a.wav"}));
        for (auto count = below(4); count > 0; --count)
            add(arguments, "--set", setting());
        sometimes(arguments, "--state",
                  {"good.json", "odd.json", "huge.json", "list.json", "missing.json", "/dev/zero"});
        sometimes(arguments, "--bars", {"0.001", "0.01"});
        sometimes(arguments, "--tempo", {"40", "96.5", "300"});
        sometimes(arguments, "--sample-rate", {"8000", "44100", "96001", "768000"});
        sometimes(arguments, "--block", {"1", "17", "512", "8192"});
        sometimes(arguments, "--tail", {"none", "0", "0.01"});
        sometimes(arguments, "--format", {"s16", "s24", "f32"});
        sometimes(arguments, "--midi", {"a.mid", "/dev/full"});
        sometimes(arguments, "--save-state", {"a.json"});
        if (below(10) == 0)
            arguments.push_back(any(hostile));
        if (below(10) == 0)
            std::shuffle(arguments.begin() + 1, arguments.end(), random);
        return arguments;
    }

    Texts looseArguments()
    {
        static const Texts words{"render",    "list",  "presets",       "parameters", "--json",
                                 "--help",    "-h",    "--version",     "--set",      "--quiet",
                                 "--out",     "a.wav", "--preset",      "1",          "--",
                                 "--seconds", "0.01",  "--seconds=0.01"};
        Texts arguments;
        for (auto count = below(6); count > 0; --count)
            arguments.push_back(below(3) == 0 ? any(hostile) : any(words));
        return arguments;
    }

private:
    std::size_t below(std::size_t limit) { return random() % limit; }

    const std::string& any(const Texts& texts) { return texts[below(texts.size())]; }

    std::string mostly(const Texts& good) { return below(6) == 0 ? any(hostile) : any(good); }

    static void add(Texts& arguments, const std::string& option, const std::string& value)
    {
        arguments.push_back(option);
        arguments.push_back(value);
    }

    void sometimes(Texts& arguments, const std::string& option, const Texts& good)
    {
        if (below(4) == 0)
            add(arguments, option, mostly(good));
    }

    std::string setting()
    {
        const auto& parameter = parameterTable()[below(parameterTable().size())];
        const auto value = below(3) == 0
                               ? any(hostile)
                               : std::to_string(below(2) == 0 ? parameter.minValue : parameter.maxValue);
        return (below(10) == 0 ? any(hostile) : parameter.identifier) + "=" + value;
    }

    std::mt19937 random;
};

class AnythingTyped : public ProgramTest
{
protected:
    void SetUp() override
    {
        folder.write("good.json", R"({"version": 1, "parameters": {"activity": 1, "spotsR1": 16}})");
        folder.write("odd.json",
                     R"({"version": 1, "parameters": {"rootNote": 1e300, "spotsR1": -1e300, "bpm": -0.0}})");
        folder.write("huge.json", std::string(1024 * 1024 + 1, '['));
        folder.write("list.json", std::string(100000, '['));
        before = folder.entries();
    }

    void expectAnAnswer(const Texts& arguments)
    {
        const auto result = run(arguments);
        EXPECT_EQ(result.signal, 0) << testing::PrintToString(arguments);
        EXPECT_THAT(result.exitCode, testing::AnyOf(0, 1, 2)) << testing::PrintToString(arguments);
        if (result.exitCode == 0) {
            EXPECT_EQ(result.err, "") << testing::PrintToString(arguments);
            ++successes;
        } else {
            expectOneComplaint(result, result.exitCode);
            EXPECT_EQ(folder.entries(), before) << testing::PrintToString(arguments);
        }
        for (const auto& entry : folder.entries())
            if (!std::ranges::binary_search(before, entry))
                std::filesystem::remove(folder.file(entry));
    }

    Texts before;
    int successes = 0;
};

TEST_F(AnythingTyped, BehindRenderGetsAnAnswer)
{
    constexpr int rounds = 400;
    for (unsigned seed = 0; seed < rounds; ++seed)
        expectAnAnswer(Typist(seed).renderArguments());
    // Renderings, too, and not only refusals.
    EXPECT_GT(successes, rounds / 20);
    EXPECT_LT(successes, rounds / 2);
}

TEST_F(AnythingTyped, AtAllGetsAnAnswer)
{
    for (unsigned seed = 1000; seed < 1200; ++seed)
        expectAnAnswer(Typist(seed).looseArguments());
}

TEST_F(AnythingTyped, ThatIsHostileGetsAnAnswerFromEveryOption)
{
    for (const auto* const option :
         {"--preset", "--state", "--set", "--bars", "--seconds", "--tempo", "--sample-rate", "--block",
          "--tail", "--format", "--midi", "--save-state", "--out"})
        for (const auto& text : hostile) {
            const std::string name(option);
            Texts arguments{"render"};
            for (const auto& [other, value] :
                 {std::pair{"--preset", "1"}, {"--out", "a.wav"}, {"--tail", "none"}})
                if (name != other)
                    arguments.insert(arguments.end(), {other, value});
            if (name != "--bars" && name != "--seconds")
                arguments.insert(arguments.end(), {"--seconds", "0.01"});
            arguments.insert(arguments.end(), {name, text});
            expectAnAnswer(arguments);
        }
}

} // namespace
} // namespace velotrine
