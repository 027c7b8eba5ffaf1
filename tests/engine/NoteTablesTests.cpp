#include "engine/NoteTables.h"

#include <array>
#include <cstddef>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

constexpr std::size_t major = 0;
constexpr std::size_t minor = 1;
constexpr std::size_t majorPentatonic = 2;
constexpr std::size_t minorPentatonic = 3;

const std::map<std::string, const TransitionTable*> tables{
    {"low", &lowTransitions}, {"middle", &middleTransitions}, {"high", &highTransitions}};

std::vector<std::string> fieldsOf(const std::string& line)
{
    std::vector<std::string> fields;
    std::istringstream rest(line);
    for (std::string field; std::getline(rest, field, ',');)
        fields.push_back(field);
    return fields;
}

TEST(NoteTables, HoldTheLearnedWeightsToTheNearestFloat)
{
    std::ifstream file(std::string(VELOTRINE_SOURCE_DIR) + "/engine/data/note-tables.csv");
    ASSERT_TRUE(file.is_open());
    std::string line;
    std::getline(file, line);
    ASSERT_EQ(line, "table,scale,previous,c0,c1,c2,c3,c4,c5,c6,c7,c8,c9,c10,c11");

    std::map<std::vector<std::string>, int> rows;
    while (std::getline(file, line)) {
        SCOPED_TRACE(line);
        const auto fields = fieldsOf(line);
        ASSERT_EQ(fields.size(), 15U);
        ASSERT_TRUE(tables.contains(fields[0]));
        const auto& row = tables.at(fields[0])->at(std::stoul(fields[1])).at(std::stoul(fields[2]));
        for (std::size_t i = 0; i < row.size(); ++i) {
            EXPECT_EQ(fields[3 + i].size(), 6U) << "four decimals";
            EXPECT_EQ(row[i], std::strtof(fields[3 + i].c_str(), nullptr)) << "column " << i;
        }
        ++rows[{fields[0], fields[1], fields[2]}];
    }
    EXPECT_EQ(rows.size(), 144U) << "every row of every table, once";
    for (const auto& [key, count] : rows)
        EXPECT_EQ(count, 1);
}

TEST(NoteTables, EveryRowIsAllZeroOrSumsToOne)
{
    for (const auto& [name, table] : tables)
        for (std::size_t scale = 0; scale < scaleCount; ++scale)
            for (std::size_t previous = 0; previous < pitchClassCount; ++previous) {
                SCOPED_TRACE(testing::Message() << name << " " << scale << " " << previous);
                double sum = 0.0;
                for (const float weight : (*table)[scale][previous]) {
                    EXPECT_GE(weight, 0.0f);
                    sum += static_cast<double>(weight);
                }
                if (sum != 0.0) {
                    EXPECT_NEAR(sum, 1.0, 0.0005 + 1.0e-7);
                }
            }
}

void expectOnlyNotesOfScale(std::size_t scale, const std::array<bool, pitchClassCount>& inScale)
{
    for (const auto& [name, table] : tables) {
        NoteWeights columnSums{};
        for (std::size_t previous = 0; previous < pitchClassCount; ++previous) {
            SCOPED_TRACE(testing::Message() << name << " " << previous);
            float rowSum = 0.0f;
            for (std::size_t i = 0; i < pitchClassCount; ++i) {
                const float weight = (*table)[scale][previous][i];
                rowSum += weight;
                columnSums[i] += weight;
                if (!inScale[i]) {
                    EXPECT_EQ(weight, 0.0f) << "column " << i;
                }
            }
            EXPECT_EQ(rowSum > 0.0f, inScale[previous]);
        }
        for (std::size_t i = 0; i < pitchClassCount; ++i)
            EXPECT_EQ(columnSums[i] > 0.0f, inScale[i]) << name << " column " << i;
    }
}

TEST(NoteTables, ThePentatonicScalesHaveFiveNotesAndNoOthers)
{
    constexpr bool x = true;
    constexpr bool o = false;
    expectOnlyNotesOfScale(majorPentatonic, {x, o, x, o, x, o, o, x, o, x, o, o});
    expectOnlyNotesOfScale(minorPentatonic, {x, o, o, x, o, x, o, x, o, o, x, o});
}

TEST(NoteTables, MajorAndMinorUseAllTwelveNotesAndLeaveSomeStepsOut)
{
    for (const auto& [name, table] : tables)
        for (const auto scale : {major, minor}) {
            SCOPED_TRACE(testing::Message() << name << " " << scale);
            NoteWeights columnSums{};
            int zeros = 0;
            for (const auto& row : (*table)[scale]) {
                EXPECT_NE(row, NoteWeights{});
                for (std::size_t i = 0; i < pitchClassCount; ++i) {
                    columnSums[i] += row[i];
                    zeros += row[i] == 0.0f;
                }
            }
            for (const float sum : columnSums)
                EXPECT_GT(sum, 0.0f);
            EXPECT_GT(zeros, 0);
        }
}

TEST(NoteTables, TheMajorPentatonicLeavesItsRootAsTheBodiesOfMusicDo)
{
    EXPECT_EQ(lowTransitions[majorPentatonic][0],
              (NoteWeights{0.4091f, 0, 0.3354f, 0, 0.0583f, 0, 0, 0.1344f, 0, 0.0629f, 0, 0}));
    EXPECT_EQ(middleTransitions[majorPentatonic][0],
              (NoteWeights{0.4814f, 0, 0.2904f, 0, 0.0445f, 0, 0, 0.1030f, 0, 0.0807f, 0, 0}));
    EXPECT_EQ(highTransitions[majorPentatonic][0],
              (NoteWeights{0.3037f, 0, 0.2654f, 0, 0.1763f, 0, 0, 0.1342f, 0, 0.1203f, 0, 0}));
}

TEST(NoteTables, TheMajorScaleFollowsTheLearnedMusic)
{
    // First and last rows of each table, and one with zeros, as counted.
    EXPECT_EQ(lowTransitions[major][0], (NoteWeights{0.2624f, 0.0059f, 0.2152f, 0.0001f, 0.0374f, 0.0567f,
                                                     0.0030f, 0.0862f, 0.0015f, 0.0403f, 0.0308f, 0.2605f}));
    EXPECT_EQ(lowTransitions[major][11], (NoteWeights{0.4492f, 0.0207f, 0.0176f, 0.0000f, 0.0473f, 0.0025f,
                                                      0.0002f, 0.1090f, 0.0033f, 0.2740f, 0.0051f, 0.0711f}));
    EXPECT_EQ(middleTransitions[major][3],
              (NoteWeights{0.0278f, 0.0000f, 0.3056f, 0.3611f, 0.0278f, 0.1667f, 0.0000f, 0.0278f, 0.0000f,
                           0.0000f, 0.0833f, 0.0000f}));
    EXPECT_EQ(middleTransitions[major][11],
              (NoteWeights{0.4317f, 0.0051f, 0.0354f, 0.0000f, 0.0169f, 0.0034f, 0.0000f, 0.0809f, 0.0000f,
                           0.2411f, 0.0017f, 0.1838f}));
    EXPECT_EQ(highTransitions[major][0], (NoteWeights{0.2583f, 0.0008f, 0.2257f, 0.0006f, 0.1499f, 0.0205f,
                                                      0.0009f, 0.1141f, 0.0002f, 0.1023f, 0.0052f, 0.1216f}));
    EXPECT_EQ(highTransitions[major][11],
              (NoteWeights{0.3924f, 0.0008f, 0.1185f, 0.0001f, 0.0123f, 0.0081f, 0.0012f, 0.0846f, 0.0012f,
                           0.2941f, 0.0010f, 0.0856f}));
}

TEST(NoteTables, AFirstNoteIsTheRootInSevenOfTenCases)
{
    EXPECT_EQ(initialWeights[major], (NoteWeights{0.7f, 0, 0, 0, 0, 0, 0, 0.2f, 0, 0, 0, 0.1f}));
    EXPECT_EQ(initialWeights[minor], (NoteWeights{0.7f, 0, 0, 0, 0, 0, 0, 0.2f, 0, 0, 0.1f, 0}));
    EXPECT_EQ(initialWeights[majorPentatonic], (NoteWeights{0.7f, 0, 0, 0, 0.1f, 0, 0, 0.2f, 0, 0, 0, 0}));
    EXPECT_EQ(initialWeights[minorPentatonic], (NoteWeights{0.7f, 0, 0, 0, 0, 0, 0, 0.2f, 0, 0, 0.1f, 0}));
}

} // namespace
} // namespace velotrine
