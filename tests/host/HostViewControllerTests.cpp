#include "host/HostViewController.h"

#include "audiounit/Presets.h"
#include "audiounit/VelotrineComponent.h"
#include "editor/Colours.h"
#include "tests/host/FakeDevices.h"
#include "tests/support/FakeAudioUnit.h"
#include "tests/support/MessageLoop.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <thread>
#include <utility>

namespace velotrine {
namespace {

class HostViewControllerTest : public testing::Test
{
protected:
    HostViewControllerTest()
    {
        surroundings.deviceTypes = fakeDeviceTypes({&sound});
        surroundings.preferencesFile = juce::File(folder.file("settings"));
        surroundings.lastSettingsFile = juce::File(folder.file("last.json"));
    }

    /// As the application does, up to the arrival of the audio unit.
    void load()
    {
        controller = std::make_shared<HostViewController>(surroundings);
        std::ignore = controller->view();
        runMessagesFor(0.05);
    }

    void loadWithUnit(const std::shared_ptr<AUAudioUnit>& unit)
    {
        surroundings.instantiate = [unit](const auto&, auto, const AVAudioUnit::Completion& completion) {
            completion(std::make_shared<AVAudioUnit>(unit), std::nullopt);
        };
        load();
    }

    [[nodiscard]] float valueAt(ParameterAddress address) const
    {
        return controller->audioUnit->parameterTree()->parameterWithAddress(address)->value();
    }

    void choosePreset(int index) { controller->presetPopup->choose(index + 1); }

    TemporaryFolder folder;
    FakeSound sound;
    HostSurroundings surroundings;
    std::shared_ptr<HostViewController> controller;
};

constexpr auto syncAddress = addressOf(GlobalParameter::sync);

TEST_F(HostViewControllerTest, StartsEmptyExceptForItsEngine)
{
    const HostViewController fresh(surroundings);
    EXPECT_FALSE(fresh.isViewLoaded());
    EXPECT_EQ(fresh.avAudioUnit, nullptr);
    EXPECT_EQ(fresh.audioUnit, nullptr);
    EXPECT_EQ(fresh.topBar, nullptr);
    EXPECT_EQ(fresh.presetPopup, nullptr);
    EXPECT_EQ(fresh.helpButton, nullptr);
    EXPECT_EQ(fresh.auContainerView, nullptr);
    EXPECT_EQ(fresh.auViewController, nullptr);
    EXPECT_EQ(fresh.helpWindowController, nullptr);
}

TEST_F(HostViewControllerTest, ItsViewIs480By404AndGrey)
{
    load();
    auto& view = controller->view();
    EXPECT_EQ(view.getLocalBounds(), juce::Rectangle<int>(480, 404));
    const auto picture = view.createComponentSnapshot(view.getLocalBounds());
    EXPECT_EQ(picture.getPixelAt(2, 2), grey(0.25f));
    EXPECT_EQ(picture.getPixelAt(2, 402), grey(0.25f));
}

TEST_F(HostViewControllerTest, LaysItsBarOutAtAnyWidth)
{
    load();
    for (int width = 360; width <= 1000; ++width) {
        controller->view().setSize(width, 500);
        EXPECT_EQ(controller->topBar->getBounds(), juce::Rectangle<int>(0, 0, width, 44));
        EXPECT_EQ(controller->auContainerView->getBounds(), juce::Rectangle<int>(0, 44, width, 456));
        EXPECT_EQ(controller->helpButton->getBounds(), juce::Rectangle<int>(width - 64, 8, 56, 28));
        const auto popup = controller->presetPopup->getBounds();
        EXPECT_EQ(popup.getWidth(), width < 440 ? width / 2 : 220);
        EXPECT_EQ(popup.getX(), (width - popup.getWidth()) / 2);
        EXPECT_EQ(popup.getY(), 8);
        EXPECT_EQ(popup.getHeight(), 28);
    }
}

TEST_F(HostViewControllerTest, TheEditorFillsItsContainer)
{
    load();
    ASSERT_NE(controller->auViewController, nullptr);
    auto& editor = controller->auViewController->view();
    EXPECT_EQ(editor.getParentComponent(), controller->auContainerView.get());
    EXPECT_EQ(editor.getBounds(), juce::Rectangle<int>(480, 360));
    controller->view().setSize(700, 650);
    EXPECT_EQ(editor.getBounds(), juce::Rectangle<int>(700, 606));
}

TEST_F(HostViewControllerTest, InstantiatesTheInstrumentInProcess)
{
    AudioComponentDescription asked;
    auto options = AudioComponentInstantiationOptions::none;
    surroundings.instantiate = [&](const auto& description, auto wanted, const auto& completion) {
        asked = description;
        options = wanted;
        AVAudioUnit::instantiate(description, wanted, completion);
    };
    load();
    EXPECT_EQ(asked, velotrineComponentDescription());
    EXPECT_EQ(options, AudioComponentInstantiationOptions::loadInProcess);
    ASSERT_NE(controller->avAudioUnit, nullptr);
    EXPECT_EQ(controller->avAudioUnit->audioUnit(), controller->audioUnit);
    EXPECT_NE(std::dynamic_pointer_cast<VelotrineAudioUnit>(controller->audioUnit), nullptr);
    EXPECT_EQ(controller->auViewController->audioUnit, controller->audioUnit);
    EXPECT_FALSE(controller->auViewController->hostProvidesSync);
}

TEST_F(HostViewControllerTest, PlaysOnTheDevice)
{
    load();
    EXPECT_TRUE(controller->engine.hasDevice());
    EXPECT_NE(sound.callback, nullptr);
}

TEST_F(HostViewControllerTest, ListsThePresetsAndAppliesTheFirst)
{
    load();
    ASSERT_EQ(controller->presetPopup->getNumItems(), static_cast<int>(presetCount));
    for (int index = 0; index < controller->presetPopup->getNumItems(); ++index)
        EXPECT_EQ(controller->presetPopup->getItemText(index).toStdString(),
                  presetTable()[static_cast<std::size_t>(index)].name);
    EXPECT_EQ(controller->presetPopup->getSelectedItemIndex(), 0);
    EXPECT_EQ(controller->audioUnit->currentPreset(), controller->audioUnit->factoryPresets().front());
}

TEST_F(HostViewControllerTest, AChosenPresetIsApplied)
{
    load();
    choosePreset(3);
    EXPECT_EQ(controller->audioUnit->currentPreset()->name, presetTable()[3].name);
    EXPECT_EQ(valueAt(addressOf(GlobalParameter::activity)), presetTable()[3].values[0]);
}

TEST_F(HostViewControllerTest, APresetChosenAgainBringsItsValuesBack)
{
    load();
    choosePreset(2);
    const auto activity = controller->audioUnit->parameterTree()->parameterWithAddress(0);
    activity->setValue(0.123f);
    choosePreset(2);
    EXPECT_EQ(activity->value(), presetTable()[2].values[0]);
}

TEST_F(HostViewControllerTest, NothingPickedFromTheMenuChangesNothing)
{
    load();
    choosePreset(2);
    controller->presetPopup->choose(0);
    EXPECT_EQ(controller->presetPopup->getSelectedItemIndex(), 2);
    EXPECT_EQ(controller->audioUnit->currentPreset()->name, presetTable()[2].name);
}

TEST_F(HostViewControllerTest, SyncIsOffFromTheStart)
{
    const auto unit = std::make_shared<VelotrineAudioUnit>(velotrineComponentDescription(),
                                                           AudioComponentInstantiationOptions::none);
    unit->parameterTree()->parameterWithAddress(syncAddress)->setValue(1.0f);
    loadWithUnit(unit);
    EXPECT_EQ(valueAt(syncAddress), 0.0f);
}

TEST_F(HostViewControllerTest, APresetThatTurnsSyncOnLeavesItOff)
{
    load();
    bool presetTurnedSyncOn = false;
    const auto tree = controller->audioUnit->parameterTree();
    const auto token = controller->audioUnit->addPropertyObserver(AUProperty::currentPreset, [&] {
        presetTurnedSyncOn |= tree->parameterWithAddress(syncAddress)->value() != 0.0f;
    });
    for (int index = 0; index < static_cast<int>(presetCount); ++index) {
        tree->parameterWithAddress(syncAddress)->setValue(1.0f);
        choosePreset(index);
        EXPECT_EQ(valueAt(syncAddress), 0.0f) << index;
    }
    EXPECT_TRUE(presetTurnedSyncOn);
    controller->audioUnit->removePropertyObserver(AUProperty::currentPreset, token);
}

TEST_F(HostViewControllerTest, WithoutFactoryPresetsThePopupIsEmptyAndNoneIsApplied)
{
    const auto unit = std::make_shared<FakeAudioUnit>(AudioComponentDescription{},
                                                      AudioComponentInstantiationOptions::none);
    loadWithUnit(unit);
    EXPECT_EQ(controller->presetPopup->getNumItems(), 0);
    EXPECT_EQ(unit->presetsApplied, 0);
}

TEST_F(HostViewControllerTest, AUnitOfAnotherClassGetsNoEditor)
{
    const auto unit = std::make_shared<FakeAudioUnit>(AudioComponentDescription{},
                                                      AudioComponentInstantiationOptions::none);
    loadWithUnit(unit);
    EXPECT_EQ(controller->audioUnit, unit);
    EXPECT_EQ(controller->auViewController, nullptr);
    EXPECT_EQ(controller->auContainerView->getNumChildComponents(), 0);
}

TEST_F(HostViewControllerTest, SaysWhyThereIsNoAudioUnit)
{
    surroundings.instantiate = [](const auto&, auto, const auto& completion) {
        completion(nullptr, AUError(-1, "The instrument is out of order."));
    };
    testing::internal::CaptureStdout();
    load();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Failed to instantiate AU: The instrument is out of order.\n");
    EXPECT_EQ(controller->audioUnit, nullptr);
    EXPECT_EQ(controller->presetPopup->getNumItems(), 0);
    EXPECT_EQ(controller->auViewController, nullptr);
}

TEST_F(HostViewControllerTest, SaysUnknownWhereNoReasonIsGiven)
{
    surroundings.instantiate = [](const auto&, auto, const auto& completion) { completion(nullptr, {}); };
    testing::internal::CaptureStdout();
    load();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Failed to instantiate AU: unknown\n");
}

TEST_F(HostViewControllerTest, ACompletionThatOutlivesTheControllerIsAFailure)
{
    AVAudioUnit::Completion late;
    surroundings.instantiate = [&late](const auto&, auto, const auto& completion) { late = completion; };
    load();
    const std::weak_ptr<HostViewController> watched = controller;
    controller.reset();
    EXPECT_TRUE(watched.expired());
    testing::internal::CaptureStdout();
    late(std::make_shared<AVAudioUnit>(std::make_shared<FakeAudioUnit>(
             AudioComponentDescription{}, AudioComponentInstantiationOptions::none)),
         {});
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Failed to instantiate AU: unknown\n");
}

TEST_F(HostViewControllerTest, ACompletionOnAnotherThreadIsDealtWithOnTheMainThread)
{
    AVAudioUnit::Completion completion;
    surroundings.instantiate = [&completion](const auto&, auto, const auto& given) { completion = given; };
    load();
    std::thread([&] {
        completion(std::make_shared<AVAudioUnit>(std::make_shared<FakeAudioUnit>(
                       AudioComponentDescription{}, AudioComponentInstantiationOptions::none)),
                   {});
    }).join();
    EXPECT_EQ(controller->audioUnit, nullptr);
    EXPECT_TRUE(runMessagesUntil([this] { return controller->audioUnit != nullptr; }, 5.0));
}

TEST_F(HostViewControllerTest, WithoutADeviceItSaysSoAndCarriesOn)
{
    sound.isPresent = false;
    testing::internal::CaptureStdout();
    load();
    EXPECT_THAT(testing::internal::GetCapturedStdout(),
                testing::AllOf(testing::StartsWith("Engine start error: "), testing::EndsWith(".\n")));
    EXPECT_EQ(controller->presetPopup->getNumItems(), static_cast<int>(presetCount));
    EXPECT_NE(controller->auViewController, nullptr);
    EXPECT_EQ(valueAt(syncAddress), 0.0f);
    EXPECT_TRUE(controller->noDeviceLabel->isVisible());
}

TEST_F(HostViewControllerTest, TheLabelForNoDeviceGoesWhenADeviceComes)
{
    sound.isPresent = false;
    testing::internal::CaptureStdout();
    load();
    std::ignore = testing::internal::GetCapturedStdout();
    sound.isPresent = true;
    EXPECT_TRUE(runMessagesUntil([this] { return !controller->noDeviceLabel->isVisible(); }, 5.0));
    EXPECT_TRUE(controller->engine.hasDevice());
}

TEST_F(HostViewControllerTest, WithADeviceNoLabelShows)
{
    load();
    EXPECT_FALSE(controller->noDeviceLabel->isVisible());
}

TEST_F(HostViewControllerTest, TheLabelForNoDeviceStaysClearOfThePopupAndInTheBar)
{
    load();
    for (int width = 360; width <= 1000; ++width) {
        controller->view().setSize(width, 500);
        const auto& label = *controller->noDeviceLabel;
        EXPECT_GE(label.getX(), 8);
        EXPECT_LE(label.getRight(), controller->presetPopup->getX() - 8);
        EXPECT_GE(label.getY(), 2) << width;
        EXPECT_LE(label.getBottom(), 42) << width;
        EXPECT_EQ(label.getHeight(), label.heightForWidth(label.getWidth()));
    }
}

TEST_F(HostViewControllerTest, TheContextMenuHasTheManualOnlyWhereItIsInstalled)
{
    const auto hasManual = [this] {
        const auto entries = controller->auViewController->tools->menu.entries();
        return std::ranges::count(entries, "Read the Manual", &SettingsMenu::Entry::title) == 1;
    };
    surroundings.manual.clear();
    load();
    EXPECT_FALSE(hasManual());
    surroundings.manual = "/share/doc/velotrine/html/index.html";
    load();
    EXPECT_TRUE(hasManual());
}

} // namespace
} // namespace velotrine
