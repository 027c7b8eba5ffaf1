#include "platform/AUAudioUnit.h"

#include "platform/AUError.h"
#include "tests/platform/TestParameter.h"
#include "tests/support/FakeAudioUnit.h"
#include "tests/support/OutputBuffers.h"

#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

using Options = AudioComponentInstantiationOptions;

/// A description that no other test uses: the process has one registry.
AudioComponentDescription freshDescription()
{
    static std::uint32_t lastSubType = 0;
    return {kAudioUnitType_Generator, ++lastSubType, fourCharCode("Test"), 0, 0};
}

/// What a completion was given, and how often it was called.
struct Completed
{
    std::shared_ptr<AUAudioUnit> unit;
    std::optional<AUError> error;
    int calls = 0;
};

Completed instantiated(const AudioComponentDescription& description, Options options)
{
    Completed completed;
    AUAudioUnit::instantiate(description, options,
                             [&completed](std::shared_ptr<AUAudioUnit> unit, std::optional<AUError> error) {
                                 completed.unit = std::move(unit);
                                 completed.error = std::move(error);
                                 ++completed.calls;
                             });
    return completed;
}

class RefusingAudioUnit : public FakeAudioUnit
{
public:
    RefusingAudioUnit(const AudioComponentDescription& description, Options options)
        : FakeAudioUnit(description, options)
    {
        throw AUError(kAudioUnitErr_FormatNotSupported, "There is nothing to play on.");
    }
};

TEST(AUAudioUnitInstantiation, MakesAUnitOfTheClassRegisteredUnderTheDescription)
{
    const auto description = freshDescription();
    AUAudioUnit::registerSubclass<FakeAudioUnit>(description, "Fake", 1);
    AUAudioUnit::registerSubclass<RefusingAudioUnit>(freshDescription(), "Refusing", 1);
    const auto completed = instantiated(description, Options::loadInProcess);
    EXPECT_EQ(completed.calls, 1);
    EXPECT_FALSE(completed.error.has_value());
    ASSERT_NE(std::dynamic_pointer_cast<FakeAudioUnit>(completed.unit), nullptr);
    EXPECT_EQ(completed.unit->componentDescription(), description);
}

TEST(AUAudioUnitInstantiation, CompletesOnTheCallersThread)
{
    const auto description = freshDescription();
    AUAudioUnit::registerSubclass<FakeAudioUnit>(description, "Fake", 1);
    std::thread::id thread;
    AUAudioUnit::instantiate(description, Options::none,
                             [&thread](const auto&, const auto&) { thread = std::this_thread::get_id(); });
    EXPECT_EQ(thread, std::this_thread::get_id());
}

TEST(AUAudioUnitInstantiation, MakesANewUnitEachTime)
{
    const auto description = freshDescription();
    AUAudioUnit::registerSubclass<FakeAudioUnit>(description, "Fake", 1);
    EXPECT_NE(instantiated(description, Options::none).unit, instantiated(description, Options::none).unit);
}

TEST(AUAudioUnitInstantiation, OfAnUnknownDescriptionCompletesWithAnError)
{
    const auto completed = instantiated(freshDescription(), Options::loadInProcess);
    EXPECT_EQ(completed.calls, 1);
    EXPECT_EQ(completed.unit, nullptr);
    ASSERT_TRUE(completed.error.has_value());
    EXPECT_EQ(completed.error->status(), kAudioComponentErr_NotFound);
    EXPECT_STRNE(completed.error->what(), "");
}

TEST(AUAudioUnitInstantiation, OutOfProcessCompletesWithAnError)
{
    const auto description = freshDescription();
    AUAudioUnit::registerSubclass<FakeAudioUnit>(description, "Fake", 1);
    const auto completed = instantiated(description, Options::loadOutOfProcess);
    EXPECT_EQ(completed.calls, 1);
    EXPECT_EQ(completed.unit, nullptr);
    ASSERT_TRUE(completed.error.has_value());
    EXPECT_STRNE(completed.error->what(), "");
}

TEST(AUAudioUnitInstantiation, CompletesWithTheErrorThatTheUnitsConstructorThrows)
{
    const auto description = freshDescription();
    AUAudioUnit::registerSubclass<RefusingAudioUnit>(description, "Refusing", 1);
    const auto completed = instantiated(description, Options::loadInProcess);
    EXPECT_EQ(completed.calls, 1);
    EXPECT_EQ(completed.unit, nullptr);
    ASSERT_TRUE(completed.error.has_value());
    EXPECT_EQ(completed.error->status(), kAudioUnitErr_FormatNotSupported);
    EXPECT_STREQ(completed.error->what(), "There is nothing to play on.");
}

TEST(AUAudioUnitInstantiation, DoesNotCallAThrowingCompletionAgain)
{
    const auto description = freshDescription();
    AUAudioUnit::registerSubclass<FakeAudioUnit>(description, "Fake", 1);
    int calls = 0;
    const auto throwing = [&calls](const auto&, const auto&) {
        ++calls;
        throw AUError(kAudioUnitErr_InvalidParameter, "The host has changed its mind.");
    };
    EXPECT_THROW(AUAudioUnit::instantiate(description, Options::none, throwing), AUError);
    EXPECT_EQ(calls, 1);
}

TEST(AUAudioUnitRegistration, RefusesADescriptionThatIsTaken)
{
    const auto description = freshDescription();
    AUAudioUnit::registerSubclass<FakeAudioUnit>(description, "Fake", 1);
    EXPECT_THROW(AUAudioUnit::registerSubclass<RefusingAudioUnit>(description, "Refusing", 1), AUError);
    EXPECT_NE(instantiated(description, Options::none).unit, nullptr);
}

class AUAudioUnitRenderBlock : public testing::Test
{
protected:
    std::shared_ptr<FakeAudioUnit> unit =
        std::make_shared<FakeAudioUnit>(AudioComponentDescription{}, Options::none);
    std::shared_ptr<FakeAudioUnit::RenderLog> log = unit->log;
    OutputBuffers output{2, 256};
};

TEST_F(AUAudioUnitRenderBlock, RefusesBeforeAllocationAndLeavesTheOutputAsItIs)
{
    EXPECT_FALSE(unit->renderResourcesAllocated());
    EXPECT_EQ(renderInto(output, unit->renderBlock(), 64), kAudioUnitErr_Uninitialized);
    EXPECT_TRUE(log->frameCounts.empty());
    EXPECT_TRUE(output.isUntouched(0) && output.isUntouched(1));
}

TEST_F(AUAudioUnitRenderBlock, RefusesAfterDeallocation)
{
    unit->allocateRenderResources();
    EXPECT_TRUE(unit->renderResourcesAllocated());
    const auto block = unit->renderBlock();
    unit->deallocateRenderResources();
    EXPECT_FALSE(unit->renderResourcesAllocated());
    EXPECT_EQ(renderInto(output, block, 64), kAudioUnitErr_Uninitialized);
    EXPECT_TRUE(log->frameCounts.empty());
    EXPECT_TRUE(output.isUntouched(0));
}

TEST_F(AUAudioUnitRenderBlock, ObtainedBeforeAllocationWorksAfterIt)
{
    const auto block = unit->renderBlock();
    unit->allocateRenderResources();
    EXPECT_EQ(renderInto(output, block, 64), noErr);
    EXPECT_EQ(log->frameCounts, std::vector<AUAudioFrameCount>{64});
}

TEST_F(AUAudioUnitRenderBlock, RefusesWhileRenderResourcesAreMadeAndDropped)
{
    const auto block = unit->renderBlock();
    const auto refuse = [&] { EXPECT_EQ(renderInto(output, block, 64), kAudioUnitErr_Uninitialized); };
    unit->whileMade = refuse;
    unit->whileDropped = refuse;
    unit->allocateRenderResources();
    unit->allocateRenderResources();
    EXPECT_EQ(renderInto(output, block, 64), noErr);
    unit->deallocateRenderResources();
    EXPECT_EQ(log->frameCounts.size(), 1U);
}

TEST_F(AUAudioUnitRenderBlock, IsUnchangedWhenAnAllocationFails)
{
    const auto block = unit->renderBlock();
    unit->whileMade = [] { throw AUError(-17, "The unit cannot."); };
    EXPECT_THROW(unit->allocateRenderResources(), AUError);
    EXPECT_FALSE(unit->renderResourcesAllocated());
    unit->whileMade = nullptr;
    unit->allocateRenderResources();
    unit->setMaximumFramesToRender(256);
    unit->whileMade = [] { throw std::bad_alloc(); };
    try {
        unit->allocateRenderResources();
        FAIL() << "it should have thrown";
    } catch (const AUError& error) {
        EXPECT_EQ(error.status(), kAudioUnitErr_FailedInitialization);
        EXPECT_STREQ(error.what(), "There is not enough memory to render.");
    }
    EXPECT_TRUE(unit->renderResourcesAllocated());
    EXPECT_EQ(renderInto(output, block, 64), noErr);
    EXPECT_EQ(renderInto(output, block, 65), kAudioUnitErr_TooManyFramesToProcess);
}

TEST_F(AUAudioUnitRenderBlock, IsNotAllocatedForMoreFramesThanCanBeCounted)
{
    constexpr auto most = AUAudioUnit::mostFramesToRender;
    int made = 0;
    unit->whileMade = [&made] { ++made; };
    for (const auto frames : {most + 1, AUAudioFrameCount{INT32_MAX}, AUAudioFrameCount{UINT32_MAX}}) {
        unit->setMaximumFramesToRender(frames);
        try {
            unit->allocateRenderResources();
            FAIL() << "it should have thrown";
        } catch (const AUError& error) {
            EXPECT_EQ(error.status(), kAudioUnitErr_TooManyFramesToProcess);
            EXPECT_EQ(error.what(),
                      std::to_string(frames) +
                          " frames are too many for one render cycle; it takes up to 16777216.");
        }
        EXPECT_FALSE(unit->renderResourcesAllocated());
    }
    EXPECT_EQ(made, 0);
    unit->setMaximumFramesToRender(most);
    unit->allocateRenderResources();
    EXPECT_EQ(made, 1);
}

TEST_F(AUAudioUnitRenderBlock, RefusesMoreFramesThanTheMaximumAndLeavesTheOutputAsItIs)
{
    unit->allocateRenderResources();
    const auto block = unit->renderBlock();
    EXPECT_EQ(renderInto(output, block, 65), kAudioUnitErr_TooManyFramesToProcess);
    EXPECT_EQ(renderInto(output, block, UINT32_MAX), kAudioUnitErr_TooManyFramesToProcess);
    EXPECT_TRUE(log->frameCounts.empty());
    EXPECT_TRUE(output.isUntouched(0) && output.isUntouched(1));
}

TEST_F(AUAudioUnitRenderBlock, RendersUpToTheMaximum)
{
    unit->allocateRenderResources();
    const auto block = unit->renderBlock();
    EXPECT_EQ(renderInto(output, block, 64), noErr);
    EXPECT_EQ(renderInto(output, block, 0), noErr);
    EXPECT_EQ(log->frameCounts, (std::vector<AUAudioFrameCount>{64, 0}));
}

TEST_F(AUAudioUnitRenderBlock, AChangedMaximumCountsFromTheNextAllocationOn)
{
    unit->allocateRenderResources();
    const auto block = unit->renderBlock();
    unit->setMaximumFramesToRender(256);
    EXPECT_EQ(renderInto(output, block, 65), kAudioUnitErr_TooManyFramesToProcess);
    unit->allocateRenderResources();
    EXPECT_EQ(renderInto(output, block, 256), noErr);
    unit->setMaximumFramesToRender(16);
    EXPECT_EQ(renderInto(output, block, 256), noErr);
    unit->allocateRenderResources();
    EXPECT_EQ(renderInto(output, block, 17), kAudioUnitErr_TooManyFramesToProcess);
}

TEST_F(AUAudioUnitRenderBlock, PassesItsArgumentsOnAndReturnsWhatTheUnitReturns)
{
    unit->allocateRenderResources();
    log->answer = -17;
    const AURenderEvent event;
    const auto block = unit->renderBlock();
    EXPECT_EQ(block(nullptr, nullptr, 12, 3, &output.list, &event, nullptr), -17);
    EXPECT_EQ(log->frameCounts, std::vector<AUAudioFrameCount>{12});
    EXPECT_EQ(log->busNumbers, std::vector{3});
    EXPECT_EQ(log->lastEvents, &event);
}

TEST_F(AUAudioUnitRenderBlock, StaysValidBeyondTheUnit)
{
    unit->allocateRenderResources();
    const auto block = unit->renderBlock();
    const std::weak_ptr<FakeAudioUnit> released = unit;
    unit.reset();
    EXPECT_TRUE(released.expired());
    EXPECT_EQ(renderInto(output, block, 64), noErr);
    EXPECT_EQ(renderInto(output, block, 65), kAudioUnitErr_TooManyFramesToProcess);
    EXPECT_EQ(log->frameCounts, std::vector<AUAudioFrameCount>{64});
}

class AUAudioUnitFullState : public testing::Test
{
protected:
    AUAudioUnitFullState() { unit.tree = AUParameterTree::createTree({second, first}); }

    std::shared_ptr<AUParameter> first = AUParameterTree::createParameter(definedAs(0, "first"));
    std::shared_ptr<AUParameter> second =
        AUParameterTree::createParameter(definedAs(1, "second", 40.0f, 300.0f));
    FakeAudioUnit unit{{}, Options::none};
};

TEST_F(AUAudioUnitFullState, ListsTheValuesInTheTreesOrderAndThePreset)
{
    first->setValue(0.25f);
    second->setValue(1000.0f);
    unit.setCurrentPreset(AUAudioUnitPreset{3, "Three"});
    const AUFullState expected{{{"second", 1000.0f}, {"first", 0.25f}}, AUAudioUnitPreset{3, "Three"}};
    EXPECT_EQ(unit.fullState(), expected);
}

TEST_F(AUAudioUnitFullState, OfAUnitWithoutATreeHasNoValues)
{
    unit.tree = nullptr;
    EXPECT_EQ(unit.fullState(), AUFullState{});
    unit.setFullState({{{"first", 0.5f}}, AUAudioUnitPreset{2, "Two"}});
    EXPECT_EQ(unit.currentPreset(), (AUAudioUnitPreset{2, "Two"}));
}

TEST_F(AUAudioUnitFullState, IsRestoredByTheStateThatWasRead)
{
    first->setValue(0.25f);
    second->setValue(90.0f);
    const auto state = unit.fullState();
    first->setValue(0.75f);
    second->setValue(120.0f);
    unit.setCurrentPreset(AUAudioUnitPreset{1, "One"});
    unit.setFullState(state);
    EXPECT_EQ(unit.fullState(), state);
}

TEST_F(AUAudioUnitFullState, IsWrittenThroughTheTreeInItsOrder)
{
    std::vector<std::pair<AUParameterAddress, AUValue>> writes;
    const auto token = unit.tree->tokenByAddingParameterObserver(
        [&writes](AUParameterAddress address, AUValue value) { writes.emplace_back(address, value); });
    unit.setFullState({{{"first", 0.5f}, {"second", 60.0f}}, {}});
    EXPECT_NE(token, 0U);
    EXPECT_EQ(writes, (std::vector<std::pair<AUParameterAddress, AUValue>>{{1, 60.0f}, {0, 0.5f}}));
}

TEST_F(AUAudioUnitFullState, IsWrittenWithoutTellingItsOriginatorOfTheValues)
{
    int told = 0;
    const auto originator =
        unit.tree->tokenByAddingParameterObserver([&told](AUParameterAddress, AUValue) { ++told; });
    int changes = 0;
    std::ignore = unit.addPropertyObserver(AUProperty::fullState, [&changes] { ++changes; });
    unit.setFullState({{{"first", 0.5f}, {"second", 60.0f}}, {}}, originator);
    EXPECT_EQ(told, 0);
    EXPECT_EQ(first->value(), 0.5f);
    EXPECT_EQ(changes, 1);
    unit.setFullState({{{"first", 0.5f}}, {}});
    EXPECT_EQ(told, 1);
}

TEST_F(AUAudioUnitFullState, BoundsValuesToTheParametersRange)
{
    unit.setFullState({{{"first", -5.0f}, {"second", 39.9f}}, {}});
    EXPECT_EQ(first->value(), 0.0f);
    EXPECT_EQ(second->value(), 40.0f);
    unit.setFullState({{{"first", 1.5f}, {"second", std::numeric_limits<float>::max()}}, {}});
    EXPECT_EQ(first->value(), 1.0f);
    EXPECT_EQ(second->value(), 300.0f);
}

TEST_F(AUAudioUnitFullState, KeepsWhatTheNewStateDoesNotNameOrNamesWithoutAFiniteValue)
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    first->setValue(0.25f);
    second->setValue(90.0f);
    unit.setFullState({{{"First", 0.5f}, {"third", 0.5f}}, {}});
    unit.setFullState({{{"first", std::numeric_limits<float>::quiet_NaN()}, {"second", infinity}}, {}});
    unit.setFullState({{{"first", -infinity}}, {}});
    EXPECT_EQ(first->value(), 0.25f);
    EXPECT_EQ(second->value(), 90.0f);
}

TEST_F(AUAudioUnitFullState, NotesThePresetWithoutApplyingIt)
{
    unit.setFullState({{}, AUAudioUnitPreset{4, "Four"}});
    EXPECT_EQ(unit.currentPreset(), (AUAudioUnitPreset{4, "Four"}));
    EXPECT_EQ(unit.presetsRestored, 1);
    EXPECT_EQ(unit.presetsApplied, 0);
}

TEST_F(AUAudioUnitFullState, WithoutAPresetClearsIt)
{
    unit.setCurrentPreset(AUAudioUnitPreset{1, "One"});
    unit.setFullState({});
    EXPECT_EQ(unit.currentPreset(), std::nullopt);
}

TEST_F(AUAudioUnitFullState, NotifiesItsObserversOnceWhenAllOfItIsApplied)
{
    std::vector<AUFullState> seen;
    const auto token =
        unit.addPropertyObserver(AUProperty::fullState, [&] { seen.push_back(unit.fullState()); });
    const AUFullState state{{{"second", 60.0f}, {"first", 0.5f}}, AUAudioUnitPreset{2, "Two"}};
    unit.setFullState(state);
    EXPECT_EQ(seen, std::vector{state});
    unit.removePropertyObserver(AUProperty::fullState, token);
    unit.setFullState({});
    EXPECT_EQ(seen.size(), 1U);
}

TEST_F(AUAudioUnitFullState, IsNotReportedToObserversOfThePresetOrOfSingleValues)
{
    int fullStateChanges = 0;
    int presetChanges = 0;
    const auto fullStateToken =
        unit.addPropertyObserver(AUProperty::fullState, [&fullStateChanges] { ++fullStateChanges; });
    const auto presetToken =
        unit.addPropertyObserver(AUProperty::currentPreset, [&presetChanges] { ++presetChanges; });
    unit.setFullState({});
    EXPECT_EQ(presetChanges, 0);
    first->setValue(0.5f);
    unit.setCurrentPreset(AUAudioUnitPreset{1, "One"});
    EXPECT_EQ(fullStateChanges, 1);
    EXPECT_EQ(presetChanges, 1);
    EXPECT_NE(fullStateToken, 0U);
    EXPECT_NE(presetToken, 0U);
}

TEST(AUAudioUnitCurrentPreset, NotifiesItsObserversOnceThePresetIsApplied)
{
    FakeAudioUnit unit({}, Options::none);
    std::vector<std::optional<AUAudioUnitPreset>> seen;
    const auto token =
        unit.addPropertyObserver(AUProperty::currentPreset, [&] { seen.push_back(unit.currentPreset()); });
    unit.setCurrentPreset(AUAudioUnitPreset{1, "One"});
    unit.setCurrentPreset(std::nullopt);
    EXPECT_EQ(seen, (std::vector<std::optional<AUAudioUnitPreset>>{AUAudioUnitPreset{1, "One"}, {}}));
    unit.removePropertyObserver(AUProperty::currentPreset, token);
    unit.setCurrentPreset(AUAudioUnitPreset{2, "Two"});
    EXPECT_EQ(seen.size(), 2U);
    EXPECT_EQ(unit.presetsApplied, 3);
    EXPECT_EQ(unit.presetsRestored, 0);
}

TEST(AUAudioUnitHostBlocks, AreKeptAsTheHostGaveThem)
{
    FakeAudioUnit unit({}, Options::none);
    EXPECT_FALSE(unit.musicalContextBlock());
    EXPECT_FALSE(unit.transportStateBlock());
    unit.setMusicalContextBlock([](auto...) { return true; });
    unit.setTransportStateBlock([](auto...) { return false; });
    ASSERT_TRUE(unit.musicalContextBlock());
    ASSERT_TRUE(unit.transportStateBlock());
    EXPECT_TRUE(unit.musicalContextBlock()(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr));
    EXPECT_FALSE(unit.transportStateBlock()(nullptr, nullptr, nullptr, nullptr));
}

} // namespace
} // namespace velotrine
