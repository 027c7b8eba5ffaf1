#include <gtest/gtest.h>

#include <juce_gui_basics/juce_gui_basics.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <unistd.h>

namespace {

/// Tests never meet the machine's own sound devices: they have a JACK server of their own or none, and an
/// ALSA that knows no device.
void stayOffTheDevices()
{
    const auto server = "velotrine-test-" + std::to_string(::getpid());
    ::setenv("JACK_DEFAULT_SERVER", server.c_str(), 1);
    ::setenv("JACK_NO_AUDIO_RESERVATION", "1", 1);
    ::setenv("ALSA_CONFIG_PATH", "/dev/null", 1);
}

/// Nor do they meet its desktop, however they are started. Without a name for a display JUCE takes :0.
void stayOffTheDesktop([[maybe_unused]] char** arguments)
{
#ifdef VELOTRINE_WITH_DISPLAY
    if (std::getenv("VELOTRINE_TEST_DISPLAY") != nullptr)
        return;
    std::string script = VELOTRINE_WITH_DISPLAY;
    std::vector<char*> command{script.data()};
    do
        command.push_back(*arguments);
    while (*arguments++ != nullptr);
    ::execv(command[0], command.data());
    std::perror(command[0]);
    std::exit(1);
#else
    ::setenv("DISPLAY", ":none", 1);
#endif
}

} // namespace

/// Views and the engine need JUCE's message manager, on this thread.
int main(int argc, char** argv)
{
    stayOffTheDesktop(argv);
    stayOffTheDevices();
    const juce::ScopedJuceInitialiser_GUI juce;
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
