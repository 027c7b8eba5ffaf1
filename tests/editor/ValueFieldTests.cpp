#include "editor/ValueField.h"

#include "tests/host/MessageLoop.h"

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

    /// A text field tells what a key means in a message of its own.
    void press(int key)
    {
        field.keyPressed(juce::KeyPress(key));
        runMessagesFor(0.005);
    }

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
