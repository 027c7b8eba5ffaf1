#include "editor/ValueField.h"

#include <gtest/gtest.h>

#include <vector>

namespace velotrine {
namespace {

class NumberField : public testing::Test
{
protected:
    NumberField()
    {
        field.setSize(60, 22);
        field.onEntryEnded = [this](const juce::String& text) { entries.push_back(text); };
        field.show("0.50");
    }

    bool press(int key) { return field.keyPressed(juce::KeyPress(key)); }

    ValueField field;
    std::vector<juce::String> entries;
};

TEST_F(NumberField, ShowingAValueTellsNobody)
{
    field.show("0.75");
    EXPECT_EQ(field.getText(), "0.75");
    EXPECT_TRUE(entries.empty());
}

TEST_F(NumberField, ReturnEndsAnEntryOnce)
{
    field.setText("0.9", false);
    press(juce::KeyPress::returnKey);
    press(juce::KeyPress::returnKey);
    EXPECT_EQ(entries, std::vector<juce::String>{"0.9"});
}

TEST_F(NumberField, EscapeTakesAnEntryBack)
{
    field.setText("0.9", false);
    press(juce::KeyPress::escapeKey);
    field.focusLost(juce::Component::focusChangedDirectly);
    EXPECT_EQ(field.getText(), "0.50");
    EXPECT_TRUE(entries.empty());
}

TEST_F(NumberField, EscapeWithNothingToTakeBackIsLeftToWhatTheFieldLiesIn)
{
    EXPECT_FALSE(press(juce::KeyPress::escapeKey));
    field.setText("0.9", false);
    EXPECT_TRUE(press(juce::KeyPress::escapeKey));
}

TEST_F(NumberField, ANumberBeginsWithADigitAPointOrASignAndNotWithACommand)
{
    for (const auto character : {'0', '9', '.', '-'})
        EXPECT_TRUE(ValueField::isFirstKeyOfNumber(
            juce::KeyPress(character, {}, static_cast<juce::juce_wchar>(character))));
    EXPECT_FALSE(ValueField::isFirstKeyOfNumber(juce::KeyPress('a', {}, 'a')));
    EXPECT_FALSE(ValueField::isFirstKeyOfNumber(juce::KeyPress(juce::KeyPress::spaceKey, {}, ' ')));
    EXPECT_FALSE(ValueField::isFirstKeyOfNumber(juce::KeyPress(juce::KeyPress::upKey)));
    EXPECT_FALSE(
        ValueField::isFirstKeyOfNumber(juce::KeyPress('1', juce::ModifierKeys::commandModifier, '1')));
}

TEST_F(NumberField, LosingTheFocusEndsAnEntryThatChangedTheTextAndNoOther)
{
    field.focusLost(juce::Component::focusChangedByTabKey);
    EXPECT_TRUE(entries.empty());
    field.setText("0.1", false);
    field.focusLost(juce::Component::focusChangedByTabKey);
    EXPECT_EQ(entries, std::vector<juce::String>{"0.1"});
}

TEST_F(NumberField, TabIsLeftToTheFocusOrder)
{
    EXPECT_FALSE(field.keyPressed(juce::KeyPress(juce::KeyPress::tabKey)));
}

} // namespace
} // namespace velotrine
