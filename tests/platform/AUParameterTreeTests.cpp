#include "platform/AUParameterTree.h"

#include "platform/AUError.h"
#include "tests/platform/TestParameter.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

using Write = std::pair<AUParameterAddress, AUValue>;

std::shared_ptr<AUParameter> parameterAt(AUParameterAddress address)
{
    return AUParameterTree::createParameter(definedAs(address));
}

class AUParameterTreeOfThree : public testing::Test
{
protected:
    AUParameterObserverToken addRecorder(std::vector<Write>& writes) const
    {
        return tree->tokenByAddingParameterObserver(
            [&writes](AUParameterAddress address, AUValue value) { writes.emplace_back(address, value); });
    }

    std::shared_ptr<AUParameter> first = parameterAt(5);
    std::shared_ptr<AUParameter> second = parameterAt(0);
    std::shared_ptr<AUParameter> third = parameterAt(39);
    std::shared_ptr<AUParameterTree> tree = AUParameterTree::createTree({first, second, third});
};

TEST_F(AUParameterTreeOfThree, ListsItsParametersInTheOrderGiven)
{
    const auto all = tree->allParameters();
    EXPECT_EQ((std::vector<std::shared_ptr<AUParameter>>{all.begin(), all.end()}),
              (std::vector{first, second, third}));
}

TEST_F(AUParameterTreeOfThree, FindsAParameterByItsAddress)
{
    EXPECT_EQ(tree->parameterWithAddress(5), first);
    EXPECT_EQ(tree->parameterWithAddress(0), second);
    EXPECT_EQ(tree->parameterWithAddress(39), third);
}

TEST_F(AUParameterTreeOfThree, HasNoParameterAtAnUnusedAddress)
{
    EXPECT_EQ(tree->parameterWithAddress(1), nullptr);
    EXPECT_EQ(tree->parameterWithAddress(40), nullptr);
    EXPECT_EQ(tree->parameterWithAddress(UINT64_MAX), nullptr);
}

TEST(AUParameterTree, MayBeEmpty)
{
    const auto tree = AUParameterTree::createTree({});
    EXPECT_TRUE(tree->allParameters().empty());
    EXPECT_EQ(tree->parameterWithAddress(0), nullptr);
}

TEST(AUParameterTree, RefusesTwoParametersAtOneAddressAndNamesIt)
{
    try {
        const auto tree = AUParameterTree::createTree({parameterAt(1), parameterAt(27), parameterAt(27)});
        ADD_FAILURE() << "a tree with two parameters at one address";
    } catch (const AUError& error) {
        EXPECT_EQ(error.status(), kAudioUnitErr_InvalidParameter);
        EXPECT_NE(std::string(error.what()).find("27"), std::string::npos) << error.what();
    }
}

TEST_F(AUParameterTreeOfThree, PassesEveryWriteToTheValueObserverUnchanged)
{
    std::vector<std::pair<const AUParameter*, AUValue>> writes;
    tree->setImplementorValueObserver(
        [&writes](const AUParameter& parameter, AUValue value) { writes.emplace_back(&parameter, value); });
    first->setValue(1.5f);
    third->setValue(-2.0f);
    EXPECT_EQ(writes, (std::vector<std::pair<const AUParameter*, AUValue>>{{first.get(), 1.5f},
                                                                           {third.get(), -2.0f}}));
}

TEST_F(AUParameterTreeOfThree, DoesNotPassOnWhatWasWrittenBeforeTheValueObserverCame)
{
    first->setValue(0.5f);
    int writes = 0;
    tree->setImplementorValueObserver([&writes](const AUParameter&, AUValue) { ++writes; });
    EXPECT_EQ(writes, 0);
}

TEST_F(AUParameterTreeOfThree, ReadsEveryValueFromTheValueProvider)
{
    tree->setImplementorValueProvider(
        [](const AUParameter& parameter) { return static_cast<float>(parameter.address()) + 0.5f; });
    first->setValue(100.0f);
    EXPECT_EQ(first->value(), 5.5f);
    EXPECT_EQ(third->value(), 39.5f);
}

TEST_F(AUParameterTreeOfThree, WithoutAProviderReadsTheValueLastSet)
{
    first->setValue(0.125f);
    EXPECT_EQ(first->value(), 0.125f);
    EXPECT_EQ(second->value(), 0.0f);
}

TEST_F(AUParameterTreeOfThree, StoresAWriteBeforeItNotifiesTheObservers)
{
    float stored = 0.0f;
    float seen = 0.0f;
    const auto token =
        tree->tokenByAddingParameterObserver([&](AUParameterAddress, AUValue) { seen = first->value(); });
    tree->setImplementorValueObserver([&stored](const AUParameter&, AUValue value) { stored = value; });
    tree->setImplementorValueProvider([&stored](const AUParameter&) { return stored; });
    first->setValue(0.75f);
    EXPECT_EQ(seen, 0.75f);
    EXPECT_NE(token, 0U);
}

TEST_F(AUParameterTreeOfThree, NotifiesEveryObserverOfEveryWriteEvenOfTheSameValue)
{
    std::vector<Write> writes;
    std::vector<Write> others;
    addRecorder(writes);
    addRecorder(others);
    first->setValue(0.5f);
    first->setValue(0.5f);
    second->setValue(1.0f);
    const std::vector<Write> expected{{5, 0.5f}, {5, 0.5f}, {0, 1.0f}};
    EXPECT_EQ(writes, expected);
    EXPECT_EQ(others, expected);
}

TEST_F(AUParameterTreeOfThree, DoesNotNotifyTheWriterThatPassesItsOwnToken)
{
    std::vector<Write> writersWrites;
    std::vector<Write> othersWrites;
    std::vector<AUValue> stored;
    const auto writer = addRecorder(writersWrites);
    addRecorder(othersWrites);
    tree->setImplementorValueObserver(
        [&stored](const AUParameter&, AUValue value) { stored.push_back(value); });
    first->setValue(0.5f, writer);
    EXPECT_TRUE(writersWrites.empty());
    EXPECT_EQ(othersWrites, (std::vector<Write>{{5, 0.5f}}));
    EXPECT_EQ(stored, std::vector{0.5f});
}

TEST_F(AUParameterTreeOfThree, NoLongerNotifiesARemovedObserver)
{
    std::vector<Write> writes;
    const auto token = addRecorder(writes);
    first->setValue(0.25f);
    tree->removeParameterObserver(token);
    first->setValue(0.5f);
    EXPECT_EQ(writes, (std::vector<Write>{{5, 0.25f}}));
}

TEST_F(AUParameterTreeOfThree, AnObserverMayWriteAnotherParameterInItsTurn)
{
    std::vector<Write> writes;
    addRecorder(writes);
    addRecorder(writes);
    const auto writing =
        tree->tokenByAddingParameterObserver([this](AUParameterAddress address, AUValue value) {
            if (address == 5)
                second->setValue(value + 1.0f);
        });
    EXPECT_NE(writing, 0U);
    first->setValue(1.0f);
    EXPECT_EQ(writes, (std::vector<Write>{{5, 1.0f}, {5, 1.0f}, {0, 2.0f}, {0, 2.0f}}));
    EXPECT_EQ(second->value(), 2.0f);
}

TEST_F(AUParameterTreeOfThree, AnObserverMayWriteTheSameParameterUnderItsOwnToken)
{
    int calls = 0;
    AUParameterObserverToken token = 0;
    token = tree->tokenByAddingParameterObserver([&](AUParameterAddress, AUValue) {
        ++calls;
        first->setValue(0.0f, token);
    });
    first->setValue(1.0f);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(first->value(), 0.0f);
}

TEST_F(AUParameterTreeOfThree, AnObserverMayAddAndRemoveObserversInItsTurn)
{
    std::vector<Write> late;
    AUParameterObserverToken lateToken = 0;
    AUParameterObserverToken own = 0;
    own = tree->tokenByAddingParameterObserver([&](AUParameterAddress, AUValue) {
        tree->removeParameterObserver(own);
        lateToken = addRecorder(late);
    });
    first->setValue(0.25f);
    first->setValue(0.5f);
    tree->removeParameterObserver(lateToken);
    first->setValue(0.75f);
    EXPECT_EQ(late, (std::vector<Write>{{5, 0.5f}}));
}

TEST_F(AUParameterTreeOfThree, AnAutomationObserverHearsOfTouchAndReleaseAndOthersOnlyOfValues)
{
    std::vector<Write> writes;
    addRecorder(writes);
    std::vector<AUParameterAutomationEventType> types;
    std::vector<AUValue> values;
    std::ignore =
        tree->tokenByAddingParameterAutomationObserver([&](const AUParameterAutomationEvent& event) {
            EXPECT_EQ(event.address, 5u);
            EXPECT_EQ(event.hostTime, 77u);
            types.push_back(event.eventType);
            values.push_back(event.value);
        });
    using enum AUParameterAutomationEventType;
    first->setValue(0.25f, 0, 77, touch);
    first->setValue(0.5f, 0, 77, value);
    first->setValue(0.75f, 0, 77, release);
    EXPECT_EQ(types, (std::vector{touch, value, release}));
    EXPECT_EQ(values, (std::vector{0.25f, 0.5f, 0.75f}));
    EXPECT_EQ(writes, (std::vector<Write>{{5, 0.5f}}));
    EXPECT_EQ(first->value(), 0.75f);
}

TEST_F(AUParameterTreeOfThree, ARemovedAutomationObserverIsNotNotified)
{
    int calls = 0;
    const auto token =
        tree->tokenByAddingParameterAutomationObserver([&](const AUParameterAutomationEvent&) { ++calls; });
    tree->removeParameterObserver(token);
    first->setValue(0.25f);
    EXPECT_EQ(calls, 0);
}

TEST_F(AUParameterTreeOfThree, ReportsAValueThatChangedElsewhereWithoutWritingIt)
{
    std::vector<Write> originatorsWrites;
    std::vector<Write> othersWrites;
    const auto originator = addRecorder(originatorsWrites);
    addRecorder(othersWrites);
    int stores = 0;
    tree->setImplementorValueObserver([&stores](const AUParameter&, AUValue) { ++stores; });
    tree->setImplementorValueProvider([](const AUParameter&) { return 0.625f; });
    tree->tellObserversOf(39, originator);
    tree->tellObserversOf(40, originator);
    EXPECT_TRUE(originatorsWrites.empty());
    EXPECT_EQ(othersWrites, (std::vector<Write>{{39, 0.625f}}));
    EXPECT_EQ(stores, 0);
}

} // namespace
} // namespace velotrine
