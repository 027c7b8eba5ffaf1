#include "tests/reference/SideBySide.h"

#include <algorithm>
#include <cmath>
#include <sstream>

namespace velotrine {

namespace {

constexpr double phaseToleranceTurns = 1.0e-9;
constexpr double sampleTolerance = 2.0e-6;

template <typename A, typename B>
std::string differs(const std::string& what, const A& engine, const B& expected)
{
    std::ostringstream text;
    text.precision(17);
    text << what << " is " << engine << " but should be " << expected;
    return text.str();
}

/// A NaN is near nothing.
bool isNear(double a, double b, double tolerance)
{
    return std::abs(a - b) <= tolerance;
}

bool isSameNote(const NoteEvent& a, const reference::FiredNote& b)
{
    return a.frame == b.frame && a.ring == b.ring && a.spot == b.spot && a.note == b.note &&
           a.gain == b.gain && a.decaySeconds == b.decaySeconds;
}

template <typename Indices>
std::string listed(const Indices& indices)
{
    std::ostringstream text;
    for (const auto index : indices)
        text << index << ' ';
    return text.str();
}

template <typename Note>
std::string inWords(const Note& note)
{
    std::ostringstream text;
    text.precision(9);
    text << "{frame " << note.frame << ", ring " << note.ring << ", spot " << note.spot << ", note "
         << note.note << ", gain " << note.gain << ", decay " << note.decaySeconds << " s}";
    return text.str();
}

} // namespace

SideBySide::SideBySide(int maxFrames, double sampleRate)
{
    const auto size = static_cast<std::size_t>(maxFrames);
    for (auto* buffer : {&scalarLeft, &scalarRight, &left, &right})
        buffer->resize(size);
    scalar.setup(maxFrames, sampleRate);
    for (const SimdTarget& target : availableSimdTargets()) {
        forceSimdTarget(target);
        players.push_back({target, std::make_unique<VelotrineDSPKernel>()});
        players.back().kernel->setup(maxFrames, sampleRate);
    }
}

void SideBySide::set(ParameterAddress address, float value)
{
    scalar.setParameter(address, value);
    for (auto& player : players)
        player.kernel->setParameter(address, value);
}

void SideBySide::setAllRings(RingParameter parameter, float value)
{
    for (int ring = 0; ring < ringCount; ++ring)
        set(addressOf(parameter, ring), value);
}

void SideBySide::setInternalPlaying(bool playing)
{
    scalar.internalPlaying = playing;
    for (auto& player : players)
        player.kernel->internalPlaying = playing;
}

void SideBySide::setHostPlaying(bool playing)
{
    scalar.hostPlaying = playing;
    for (auto& player : players)
        player.kernel->hostPlaying = playing;
}

void SideBySide::setHostTempo(double quartersPerMinute, double beatsPerBar, double beatUnit)
{
    scalar.hostTempo = quartersPerMinute;
    scalar.hostBeatsPerBar = beatsPerBar;
    scalar.hostBeatUnit = beatUnit;
    for (auto& player : players) {
        player.kernel->hostTempo = quartersPerMinute;
        player.kernel->hostBeatsPerBar = beatsPerBar;
        player.kernel->hostBeatUnit = beatUnit;
    }
}

std::optional<std::string> SideBySide::process(int frames)
{
    scalar.process(scalarLeft.data(), scalarRight.data(), frames);
    noteCount += scalar.firedNotes.size();
    for (int i = 0; i < frames; ++i)
        loudest = std::max(loudest, std::abs(scalarLeft[static_cast<std::size_t>(i)]));
    for (const auto& voice : scalar.voices)
        if (voice.active)
            longestModStep = std::max(longestModStep, voice.carrierFreq * voice.modRatio / voice.sampleRate);

    for (auto& player : players) {
        forceSimdTarget(player.target);
        player.kernel->process(left.data(), right.data(), frames);
        auto difference = compareNotes(*player.kernel);
        if (!difference)
            difference = compareState(*player.kernel);
        if (!difference)
            difference = compareSamples(frames);
        if (difference)
            return player.target.name + ", in the call of " + std::to_string(frames) +
                   " frames that starts at frame " + std::to_string(framesBefore) + ": " + *difference;
    }
    framesBefore += frames;
    return std::nullopt;
}

std::optional<std::string> SideBySide::compareNotes(const VelotrineDSPKernel& kernel) const
{
    const auto& expected = scalar.firedNotes;
    const auto notes = kernel.noteEvents();
    for (std::size_t i = 0; i < std::min(notes.size(), expected.size()); ++i)
        if (!isSameNote(notes[i], expected[i]))
            return differs("note " + std::to_string(i) + " of the call", inWords(notes[i]),
                           inWords(expected[i]));
    const auto fired = notes.size() + static_cast<std::size_t>(kernel.droppedNoteEvents);
    if (fired != expected.size())
        return differs("the number of notes", fired, expected.size());
    if (kernel.droppedNoteEvents > 0 && notes.size() < 256)
        return differs("the number of notes kept", notes.size(), 256);
    return std::nullopt;
}

std::optional<std::string> SideBySide::compareState(const VelotrineDSPKernel& kernel) const
{
    if (kernel.rngState != scalar.rngState)
        return differs("rngState", kernel.rngState, scalar.rngState);
    if (kernel.lastPitchClass != scalar.lastPitchClass)
        return differs("lastPitchClass", kernel.lastPitchClass, scalar.lastPitchClass);
    if (!isNear(kernel.clockPhase, scalar.clockPhase, phaseToleranceTurns))
        return differs("clockPhase", kernel.clockPhase, scalar.clockPhase);
    if (!isNear(kernel.clockPhaseBuf, scalar.clockPhaseBuf, phaseToleranceTurns))
        return differs("clockPhaseBuf", kernel.clockPhaseBuf.load(), scalar.clockPhaseBuf);

    for (std::size_t r = 0; r < reference::ScalarTranscription::rings; ++r) {
        const std::string ofRing = " of ring " + std::to_string(r);
        if (!isNear(kernel.activityPhases[r], scalar.activityPhases[r], phaseToleranceTurns))
            return differs("activityPhase" + ofRing, kernel.activityPhases[r].load(),
                           scalar.activityPhases[r]);
        if (!isNear(kernel.lfoPhases[r], scalar.lfoPhases[r], phaseToleranceTurns))
            return differs("lfoPhase" + ofRing, kernel.lfoPhases[r], scalar.lfoPhases[r]);
        if (!isNear(kernel.lfoOffsets[r], scalar.lfoOffsets[r], phaseToleranceTurns))
            return differs("lfoOffset" + ofRing, kernel.lfoOffsets[r].load(), scalar.lfoOffsets[r]);
        if (kernel.lastSpotIndex[r] != scalar.lastSpotIndex[r])
            return differs("lastSpotIndex" + ofRing, kernel.lastSpotIndex[r], scalar.lastSpotIndex[r]);
        if (kernel.ringInitialised[r] != scalar.ringInitialised[r])
            return differs("ringInitialised" + ofRing, kernel.ringInitialised[r], scalar.ringInitialised[r]);
        const double apart = std::abs(kernel.lastRingPhase[r] - scalar.lastRingPhase[r]);
        if (!isNear(apart, std::round(apart), phaseToleranceTurns))
            return differs("lastRingPhase" + ofRing, kernel.lastRingPhase[r], scalar.lastRingPhase[r]);
    }

    const auto& order = kernel.voicePool->triggerOrder;
    if (!std::equal(order.begin(), order.end(), scalar.triggerOrder.begin(), scalar.triggerOrder.end()))
        return differs("the order of the sounding voices", listed(order), listed(scalar.triggerOrder));
    return std::nullopt;
}

std::optional<std::string> SideBySide::compareSamples(int frames)
{
    for (std::size_t i = 0; i < static_cast<std::size_t>(frames); ++i) {
        if (left[i] != right[i])
            return differs("right sample " + std::to_string(i), right[i], left[i]);
        const double error = std::abs(static_cast<double>(left[i]) - static_cast<double>(scalarLeft[i]));
        worstSample = std::max(worstSample, error);
        if (!(error <= sampleTolerance))
            return differs("sample " + std::to_string(i), left[i], scalarLeft[i]);
    }
    return std::nullopt;
}

} // namespace velotrine
