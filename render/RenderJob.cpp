#include "render/RenderJob.h"

#include "audiounit/CycleRenderer.h"
#include "audiounit/StateText.h"
#include "audiounit/VelotrineAudioUnit.h"
#include "audiounit/VelotrineComponent.h"
#include "commandline/Errors.h"
#include "render/Interruption.h"
#include "render/MidiFile.h"
#include "render/OutputFile.h"
#include "render/ProgressBar.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace velotrine {

namespace {

constexpr double quartersPerBar = 4.0;
constexpr double secondsPerMinute = 60.0;

std::shared_ptr<VelotrineAudioUnit> makeAudioUnit()
{
    registerVelotrineComponent();
    std::shared_ptr<AUAudioUnit> unit;
    AUAudioUnit::instantiate(
        velotrineComponentDescription(), AudioComponentInstantiationOptions::loadInProcess,
        [&unit](std::shared_ptr<AUAudioUnit> made, const std::optional<AUError>& error) {
            if (!made)
                throw WorkError(error ? error->what() : "the instrument could not be made");
            unit = std::move(made);
        });
    return std::dynamic_pointer_cast<VelotrineAudioUnit>(unit);
}

std::string readStateFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    // One byte more than allowed is enough to be refused for its size.
    std::string text(maxStateBytes + 1, '\0');
    if (!file.is_open() || (!file.read(text.data(), static_cast<std::streamsize>(text.size())) && file.bad()))
        throw UsageError("--state " + path, std::string("it could not be read: ") + std::strerror(errno));
    text.resize(static_cast<std::size_t>(file.gcount()));
    return text;
}

void loadState(AUAudioUnit& unit, const std::string& path)
{
    const auto read = stateFromText(readStateFile(path));
    if (!read.state)
        throw UsageError("--state " + path, read.error);
    unit.setFullState(*read.state);
}

void applySettings(AUAudioUnit& unit, const RenderOptions& options)
{
    if (options.presetNumber)
        unit.setCurrentPreset(unit.factoryPresets()[static_cast<std::size_t>(*options.presetNumber)]);
    if (!options.statePath.empty())
        loadState(unit, options.statePath);
    const auto tree = unit.parameterTree();
    for (const auto& [address, value] : options.settings)
        tree->parameterWithAddress(address)->setValue(value);
    if (options.tempo)
        tree->parameterWithAddress(addressOf(GlobalParameter::bpm))->setValue(*options.tempo);
}

/// Where the sound and the notes of one rendering go, piece by piece.
class Rendering
{
public:
    Rendering(VelotrineAudioUnit& unit, const RenderOptions& options, double bpm, std::int64_t playedFrames)
        : kernel(*unit.dspKernel), sampleRate(options.sampleRate), cycleFrames(options.blockFrames),
          framesToPlay(playedFrames),
          midi(options.midiPath.empty() ? std::nullopt : std::optional(MidiFile(bpm))),
          audio(options.outPath, audioFormat(options, playedFrames)), progress(!options.quiet)
    {
        renderer.setup(unit.renderBlock(), cycleFrames);
        left.resize(static_cast<std::size_t>(cycleFrames));
        right.resize(static_cast<std::size_t>(cycleFrames));
        interleaved.resize(samplesPerWrite + 2 * static_cast<std::size_t>(cycleFrames));
    }

    /// Renders exactly this many frames: a change made after it takes effect at the very next one.
    void render(std::int64_t frames)
    {
        for (std::int64_t done = 0; done < frames;) {
            const auto count = static_cast<int>(std::min<std::int64_t>(cycleFrames, frames - done));
            renderCycle(count);
            done += count;
        }
    }

    void renderUntilSilent()
    {
        while (!kernel.voicePool->triggerOrder.empty())
            renderCycle(cycleFrames);
    }

    void finish()
    {
        flush();
        audio.finish();
    }

    [[nodiscard]] OutputFile& output() noexcept { return audio.file(); }

    void sayWhatCameOfIt() { progress.finish(audio.file().name().c_str(), secondsRendered()); }

    /// The notes; none unless they were asked for.
    [[nodiscard]] const std::optional<MidiFile>& notes() const noexcept { return midi; }

private:
    /// Samples of both channels that are collected before they are converted and written.
    static constexpr std::size_t samplesPerWrite = 8192;

    static AudioFileWriter::Format audioFormat(const RenderOptions& options, std::int64_t playedFrames)
    {
        // A note rings for little more than a second.
        constexpr double longestNoteSeconds = 2.0;
        const double tail = std::max(options.tailSeconds, longestNoteSeconds);
        return {.container = options.container,
                .samples = options.format,
                .sampleRate = options.sampleRate,
                .expectedFrames = playedFrames + std::llround(tail * options.sampleRate)};
    }

    void renderCycle(int frames)
    {
        const auto status =
            renderer.render({left.data(), right.data()}, frames, CycleRenderer::LastCycle::cutShort);
        if (status != noErr)
            throw WorkError("the instrument refused to render (error " + std::to_string(status) + ")");
        if (midi)
            collectNotes(*midi);
        auto* sample = interleaved.data() + samplesCollected;
        for (std::size_t i = 0; i < static_cast<std::size_t>(frames); ++i) {
            *sample++ = left[i];
            *sample++ = right[i];
        }
        samplesCollected += 2 * static_cast<std::size_t>(frames);
        framesRendered += frames;
        if (samplesCollected >= samplesPerWrite)
            flush();
    }

    void collectNotes(MidiFile& file) const
    {
        for (const auto& event : kernel.noteEvents())
            if (const auto note = midiNote(event))
                file.addNote(secondsAt(framesRendered + event.frame), *note);
    }

    void flush()
    {
        stopIfInterrupted();
        audio.write(std::span(interleaved).first(samplesCollected));
        samplesCollected = 0;
        progress.update(static_cast<double>(framesRendered) / static_cast<double>(framesToPlay),
                        secondsRendered());
    }

    [[nodiscard]] double secondsAt(std::int64_t frame) const
    {
        return static_cast<double>(frame) / sampleRate;
    }

    [[nodiscard]] double secondsRendered() const { return secondsAt(framesRendered); }

    VelotrineDSPKernel& kernel;
    double sampleRate;
    int cycleFrames;
    std::int64_t framesToPlay;
    std::int64_t framesRendered = 0;
    CycleRenderer renderer;
    std::optional<MidiFile> midi;
    AudioFileWriter audio;
    ProgressBar progress;
    std::vector<float> left;
    std::vector<float> right;
    std::vector<float> interleaved; ///< left and right; room for a cycle beyond samplesPerWrite
    std::size_t samplesCollected = 0;
};

std::int64_t framesToPlay(const RenderOptions& options, double bpm)
{
    const double seconds = options.seconds.value_or(options.bars * quartersPerBar * secondsPerMinute / bpm);
    return std::max<std::int64_t>(1, std::llround(seconds * options.sampleRate));
}

void renderTail(Rendering& rendering, const RenderOptions& options)
{
    switch (options.tail) {
    case RenderOptions::Tail::none:
        return;
    case RenderOptions::Tail::untilSilent:
        return rendering.renderUntilSilent();
    case RenderOptions::Tail::fixed:
        return rendering.render(std::llround(options.tailSeconds * options.sampleRate));
    }
}

std::span<const std::uint8_t> bytesOf(const std::string& text)
{
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// A second output beside the sound; none for an empty path.
std::unique_ptr<OutputFile> openOptional(const std::string& path)
{
    return path.empty() ? nullptr : std::make_unique<OutputFile>(path);
}

} // namespace

void runRenderJob(const RenderOptions& options)
{
    const auto unit = makeAudioUnit();
    unit->setMaximumFramesToRender(static_cast<AUAudioFrameCount>(options.blockFrames));
    const auto& bus = *unit->outputBusses();
    bus[0].setFormat({static_cast<double>(options.sampleRate), bus[0].format().channelCount});
    unit->allocateRenderResources();
    applySettings(*unit, options);
    const auto stateText = textFromState(unit->fullState());

    const auto tree = unit->parameterTree();
    const auto bpm =
        static_cast<double>(tree->parameterWithAddress(addressOf(GlobalParameter::bpm))->value());
    const auto playedFrames = framesToPlay(options, bpm);
    const auto midiFile = openOptional(options.midiPath);
    const auto stateFile = openOptional(options.saveStatePath);
    Rendering rendering(*unit, options, bpm, playedFrames);

    // There is no host whose tempo could be followed.
    tree->parameterWithAddress(addressOf(GlobalParameter::sync))->setValue(0.0f);
    unit->dspKernel->internalPlaying = true;
    rendering.render(playedFrames);
    unit->dspKernel->internalPlaying = false;
    renderTail(rendering, options);

    // All is written before anything appears.
    rendering.finish();
    if (const auto& notes = rendering.notes(); midiFile && notes)
        midiFile->write(notes->bytes());
    if (stateFile)
        stateFile->write(bytesOf(stateText));
    std::vector<OutputFile*> outputs{&rendering.output(), midiFile.get(), stateFile.get()};
    std::erase(outputs, nullptr);
    OutputFile::commitTogether(outputs);
    rendering.sayWhatCameOfIt();
}

} // namespace velotrine
