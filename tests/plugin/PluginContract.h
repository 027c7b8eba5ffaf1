#pragma once

#include "tests/plugin/ClapUnderTest.h"
#include "tests/plugin/Lv2UnderTest.h"
#include "tests/plugin/PluginUnderTest.h"
#include "tests/plugin/Vst3UnderTest.h"
#include "tests/support/Sound.h"

#include <string>

#include <gtest/gtest.h>

namespace velotrine {

// What the plug-in promises in every format: each rule is one test, which runs in all of them. What only one
// format knows is tested in that format's own file.

using EveryFormat = testing::Types<ClapUnderTest, Lv2UnderTest, Vst3UnderTest>;

struct FormatNames
{
    template <typename Plugin>
    static std::string GetName(int)
    {
        return Plugin::formatName;
    }
};

inline constexpr double sampleRate = 48000.0;
inline constexpr HostTransport stopped{.tempo = 240.0, .beatsPerBar = 4, .beatUnit = 4, .isPlaying = false};
inline constexpr HostTransport rolling{.tempo = 240.0, .beatsPerBar = 4, .beatUnit = 4, .isPlaying = true};

/// One block.
inline Sound playedBy(PluginUnderTest& plugin, int frames)
{
    Sound sound(frames);
    EXPECT_TRUE(plugin.render(sound.left.data(), sound.right.data(), frames));
    return sound;
}

/// One block, at whose first frame the host says what its transport does.
inline Sound playedBy(PluginUnderTest& plugin, int frames, const HostTransport& transport)
{
    plugin.setTransport(transport);
    return playedBy(plugin, frames);
}

} // namespace velotrine
