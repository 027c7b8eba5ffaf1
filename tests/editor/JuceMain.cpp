#include <gtest/gtest.h>

#include <juce_gui_basics/juce_gui_basics.h>

/// Views need JUCE's message manager, on this thread.
int main(int argc, char** argv)
{
    const juce::ScopedJuceInitialiser_GUI juce;
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
