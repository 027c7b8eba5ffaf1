#pragma once

#include "audiounit/Parameters.h"
#include "tests/plugin/PluginContract.h"

#include <string>

namespace velotrine {

// Hosts that break their promises, the same ones in every format. Whatever such a host has done, sound has
// stayed within full scale, and the plug-in afterwards plays as a new one does.

/// All initial values, and dice that fall at each start as they did at the first.
inline std::string stateOfANewPieceEachTime()
{
    std::string values;
    for (const auto& parameter : parameterTable())
        values += (values.empty() ? "\"" : ", \"") + parameter.identifier +
                  "\": " + std::to_string(parameter.initialValue);
    return R"({"version": 1, "sameMusicAtEveryStart": true, "parameters": {)" + values + "}}";
}

/// The same as the format saves it, with what the format adds.
template <typename Plugin>
const std::string& savedNewPiece()
{
    static const auto state = [] {
        Plugin plugin;
        EXPECT_TRUE(plugin.load(stateOfANewPieceEachTime()));
        return plugin.save();
    }();
    return state;
}

/// A second of music from its start, as a host plays it that keeps its promises.
template <typename Plugin>
Sound aNewPieceOf(Plugin& plugin)
{
    EXPECT_TRUE(plugin.load(savedNewPiece<Plugin>()));
    // The host's controls show what the state says.
    for (const auto& parameter : parameterTable())
        plugin.setValue(parameter.address, static_cast<double>(parameter.initialValue));
    EXPECT_TRUE(plugin.start(sampleRate, 512));
    playedBy(plugin, 512, stopped);
    Sound sound(0);
    while (sound.frames() < 48000)
        sound.append(playedBy(plugin, 480, rolling));
    plugin.setTransport(stopped);
    return sound;
}

/// What a plug-in plays that nobody has harmed.
template <typename Plugin>
const Sound& pieceOfANewPlugin()
{
    static const auto sound = [] {
        Plugin plugin;
        return aNewPieceOf(plugin);
    }();
    return sound;
}

/// A block from a plug-in that need not be ready to play.
inline void expectBoundedBlock(PluginUnderTest& plugin, int frames)
{
    Sound sound(frames);
    plugin.render(sound.left.data(), sound.right.data(), frames);
    EXPECT_TRUE(sound.isInBounds()) << frames << " frames";
}

} // namespace velotrine
