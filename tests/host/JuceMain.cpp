#include <gtest/gtest.h>

#include <juce_gui_basics/juce_gui_basics.h>

#include <cstdlib>
#include <string>

#include <unistd.h>

/// The engine needs JUCE's message manager, on this thread. Tests meet none of the machine's own devices:
/// they have a JACK server of their own or none, and an ALSA that knows no device.
int main(int argc, char** argv)
{
    const auto server = "velotrine-test-" + std::to_string(::getpid());
    ::setenv("JACK_DEFAULT_SERVER", server.c_str(), 1);
    ::setenv("JACK_NO_AUDIO_RESERVATION", "1", 1);
    ::setenv("ALSA_CONFIG_PATH", "/dev/null", 1);

    const juce::ScopedJuceInitialiser_GUI juce;
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
