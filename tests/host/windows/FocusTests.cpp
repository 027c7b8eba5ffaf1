// The window by keys alone: where the keyboard goes, what marks it, and what a screen reader reads there.

#include "tests/host/windows/Hands.h"

#include <map>
#include <tuple>

namespace velotrine {
namespace {

class KeysAlone : public Hands
{};

TEST_F(KeysAlone, TabWalksThroughEverythingInReadingOrderAndShiftTabBack)
{
    auto& e = editor();
    const std::vector<juce::Component*> order{
        host->presetPopup.get(), host->helpButton.get(), e.rootButton.get(),   e.scaleButton.get(),
        e.bpmField.get(),        e.bpmStepper.get(),     e.playButton.get(),   e.circlesView.get(),
        e.activityKnob.get(),    e.boredomKnob.get(),    e.caloriesKnob.get(), e.drudgeryKnob.get()};
    for (int round = 0; round < 2; ++round)
        for (auto* next : order) {
            keys({"Tab"});
            EXPECT_TRUE(next->hasKeyboardFocus(false)) << next->getTitle();
        }
    for (std::size_t i = order.size() - 1; i-- > 0;) {
        keys({"shift+Tab"});
        EXPECT_TRUE(order[i]->hasKeyboardFocus(false)) << order[i]->getTitle();
    }
}

TEST_F(KeysAlone, TabGoesOnFromAFieldThatReturnHasLeft)
{
    click(*editor().bpmField);
    keys({"Return", "Tab"});
    EXPECT_TRUE(editor().bpmStepper->hasKeyboardFocus(false));
}

TEST_F(KeysAlone, ShiftTabInANewWindowBeginsAtTheEnd)
{
    keys({"shift+Tab"});
    EXPECT_TRUE(editor().drudgeryKnob->hasKeyboardFocus(false));
}

TEST_F(KeysAlone, AKeyThatComesWithAnAnswerOfTheServersIsNotLeftLying)
{
    // Until the window is at rest, and nothing else comes from the server.
    runMessagesFor(5.0);
    pressKey("Tab");
    (void)juce::Desktop::getMousePosition();
    EXPECT_TRUE(runMessagesUntil([this] { return host->presetPopup->hasKeyboardFocus(false); }, 2.0));
}

TEST_F(KeysAlone, TheControlWithTheKeyboardLooksDifferent)
{
    const auto pictureOf = [&](juce::Component& component) {
        return window->createComponentSnapshot(window->getLocalArea(&component, component.getLocalBounds()));
    };
    const auto differs = [](const juce::Image& one, const juce::Image& other) {
        int pixels = 0;
        for (int y = 0; y < one.getHeight(); ++y)
            for (int x = 0; x < one.getWidth(); ++x) {
                const auto change =
                    one.getPixelAt(x, y).getBrightness() - other.getPixelAt(x, y).getBrightness();
                pixels += std::abs(change) > 0.15f ? 1 : 0;
            }
        return pixels;
    };
    auto& e = editor();
    for (auto* control : std::initializer_list<juce::Component*>{
             host->presetPopup.get(), host->helpButton.get(), e.rootButton.get(), e.scaleButton.get(),
             e.bpmField.get(), e.bpmStepper.get(), e.playButton.get(), e.circlesView.get(),
             e.activityKnob.get()}) {
        const auto before = pictureOf(*control);
        keys({"Tab"});
        ASSERT_TRUE(control->hasKeyboardFocus(false)) << control->getTitle();
        EXPECT_GT(differs(before, pictureOf(*control)), 40) << control->getTitle();
    }
}

TEST_F(KeysAlone, SpaceAndReturnPressWhatTabHasReached)
{
    editor().rootButton->grabKeyboardFocus();
    keys({"shift+Tab", "Tab", "Tab"}); // back, and by key to the scale
    ASSERT_TRUE(editor().scaleButton->hasKeyboardFocus(false));
    for (const auto* key : {"space", "Return"}) {
        keys({key});
        EXPECT_TRUE(soon([] { return juce::Component::getNumCurrentlyModalComponents() == 1; })) << key;
        keys({"Escape"});
        EXPECT_TRUE(soon([] { return juce::Component::getNumCurrentlyModalComponents() == 0; })) << key;
        EXPECT_TRUE(hasKeyboard(*editor().scaleButton)) << key;
    }
    EXPECT_FALSE(editor().isPlaying);
}

TEST_F(KeysAlone, ArrowsPagesAndEndsChooseAndTurn)
{
    keys({"Tab", "Down", "Down", "Up"});
    EXPECT_EQ(host->audioUnit->currentPreset()->number, 1);
    keys({"End"});
    EXPECT_EQ(host->audioUnit->currentPreset()->number, 9);
    const auto root = value(addressOf(GlobalParameter::rootNote));
    keys({"Tab", "Tab", "Down", "Page_Down"});
    EXPECT_EQ(value(addressOf(GlobalParameter::rootNote)), root + 5.0f);
    keys({"Home", "Tab", "End"});
    EXPECT_EQ(value(addressOf(GlobalParameter::rootNote)), 0.0f);
    EXPECT_EQ(value(addressOf(GlobalParameter::scaleType)), 3.0f);
    const auto before = value(bpm);
    keys({"Tab", "Tab", "Up", "Page_Up"});
    EXPECT_EQ(value(bpm), before + 11.0f);
    keys({"Tab", "Tab", "Tab", "Home", "Page_Up", "Up"});
    EXPECT_NEAR(value(activity), 0.11f, 1e-6f);
}

TEST_F(KeysAlone, ARingIsReachedOpenedAndLeftByKeysAlone)
{
    auto& rings = *editor().circlesView;
    rings.grabKeyboardFocus();
    keys({"Up", "Up", "Return"});
    EXPECT_TRUE(panel().isVisible());
    EXPECT_EQ(panel().ringIndex, 2);
    EXPECT_TRUE(hasKeyboard(panel().field(RingEditorViewMac::steps)));
    type("11");
    keys({"Tab"});
    EXPECT_EQ(value(addressOf(RingParameter::spots, 2)), 11.0f);
    EXPECT_TRUE(panel().slider(RingEditorViewMac::shift).hasKeyboardFocus(false));
    keys({"Right"});
    EXPECT_NEAR(value(addressOf(RingParameter::phase, 2)), 0.01f, 1e-6f);
    type("0.5");
    keys({"Return"});
    EXPECT_EQ(value(addressOf(RingParameter::phase, 2)), 0.5f);
    EXPECT_TRUE(hasKeyboard(panel().slider(RingEditorViewMac::shift))) << "where the entry began";
    keys({"Escape"});
    EXPECT_FALSE(panel().isVisible());
    EXPECT_TRUE(hasKeyboard(rings));
    EXPECT_TRUE(rings.isMarked());
    keys({"Up", "Return"});
    EXPECT_EQ(panel().ringIndex, 3);
}

TEST_F(KeysAlone, OneEscapeDiscardsAnEntryAndTheNextClosesThePanel)
{
    openRing(2);
    click(panel().field(RingEditorViewMac::steps));
    type("9");
    keys({"Escape"});
    EXPECT_TRUE(panel().isVisible());
    EXPECT_EQ(panel().field(RingEditorViewMac::steps).getText(), "4");
    keys({"Escape"});
    EXPECT_FALSE(panel().isVisible());
    EXPECT_EQ(value(addressOf(RingParameter::spots, 2)), 4.0f);
}

TEST_F(KeysAlone, DigitsOnAKnobAreItsValue)
{
    auto& knob = *editor().boredomKnob;
    click(knob);
    type("70");
    ASSERT_NE(knob.entryField(), nullptr);
    EXPECT_TRUE(knob.entryField()->isVisible());
    EXPECT_EQ(knob.entryField()->getText(), "70");
    keys({"Return"});
    EXPECT_EQ(value(addressOf(GlobalParameter::boredom)), 0.7f);
    EXPECT_FALSE(knob.entryField()->isVisible());
    EXPECT_TRUE(knob.hasKeyboardFocus(false));
    type("9");
    keys({"Escape", "Up"});
    EXPECT_NEAR(value(addressOf(GlobalParameter::boredom)), 0.71f, 1e-5f);
    type("0.2");
    click(*editor().playButton);
    EXPECT_EQ(value(addressOf(GlobalParameter::boredom)), 0.2f);
}

/// What a screen reader reads as an element's value; empty for none.
juce::String valueRead(const juce::AccessibilityHandler& element)
{
    if (const auto* text = element.getTextInterface())
        return text->getText({0, text->getTotalNumCharacters()});
    const auto* value = element.getValueInterface();
    return value != nullptr ? value->getCurrentValueAsString() : juce::String();
}

void collectElements(const juce::AccessibilityHandler& element,
                     std::map<juce::Component*, juce::String>& values,
                     std::map<juce::Component*, juce::String>& names)
{
    names[&const_cast<juce::Component&>(element.getComponent())] = element.getTitle();
    values[&const_cast<juce::Component&>(element.getComponent())] = valueRead(element);
    for (const auto* child : element.getChildren())
        collectElements(*child, values, names);
}

TEST_F(KeysAlone, EveryControlHasANameAndItsValueAsTextForAScreenReader)
{
    openRing(2);
    std::map<juce::Component*, juce::String> values;
    std::map<juce::Component*, juce::String> names;
    collectElements(*window->getAccessibilityHandler(), values, names);
    auto& e = editor();
    const std::vector<std::tuple<juce::Component*, const char*, const char*>> expected{
        {host->presetPopup.get(), "Preset", "Default"},
        {e.rootButton.get(), "Root", "E"},
        {e.scaleButton.get(), "Scale", "Major"},
        {e.bpmField.get(), "BPM", "120.0"},
        {e.bpmStepper.get(), "BPM", "120.0"},
        {e.playButton.get(), "Play", "Stopped"},
        {e.circlesView.get(), "Rings", "Ring 3, 4 spots"},
        {e.activityKnob.get(), "ACTIVITY", "0 %"},
        {&panel().slider(RingEditorViewMac::steps), "STEPS", "4"},
        {&panel().field(RingEditorViewMac::steps), "STEPS", "4"},
        {&panel().slider(RingEditorViewMac::ringVol), "VOLUME", "0.70"},
        {&panel().field(RingEditorViewMac::ringVol), "VOLUME", "0.70"},
    };
    for (const auto& [control, name, value] : expected) {
        EXPECT_EQ(names[control], name);
        EXPECT_EQ(values[control], value) << name;
    }
    EXPECT_EQ(names[host->helpButton.get()], "Help");
    const auto everyControl = [&](const auto& self, juce::Component& parent) -> void {
        for (auto* child : parent.getChildren()) {
            if (child->isShowing() && child->getWantsKeyboardFocus()) {
                EXPECT_TRUE(names[child].isNotEmpty()) << child->getName();
                if (child != host->helpButton.get()) {
                    EXPECT_TRUE(values[child].isNotEmpty()) << names[child];
                }
            }
            self(self, *child);
        }
    };
    everyControl(everyControl, *window);
}

} // namespace
} // namespace velotrine
