#pragma once

#include "host/AVAudioEngine.h"
#include "tests/support/TestInstrument.h"

#include <memory>

namespace velotrine {

/// An engine with the instrument connected to it, ready to start; once started, the instrument plays fast and
/// from every spot.
struct PlayingEngine
{
    explicit PlayingEngine(DeviceTypeFactory deviceTypes = systemDeviceTypes,
                           const NotePortFactory& makeNotePort = systemNotePort)
        : engine(std::move(deviceTypes), makeNotePort)
    {
        instrument->dspKernel->internalPlaying = true;
        const auto node = std::make_shared<AVAudioUnit>(instrument);
        engine.attach(node);
        engine.connect(node, engine.mainMixerNode(), std::nullopt);
    }

    [[nodiscard]] double clock() const { return instrument->dspKernel->clockPhaseBuf; }

    std::shared_ptr<VelotrineAudioUnit> instrument = makePlayingInstrument();
    AVAudioEngine engine;
};

} // namespace velotrine
