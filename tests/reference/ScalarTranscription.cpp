#include "tests/reference/ScalarTranscription.h"

#include "engine/NoteTables.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace velotrine::reference {

namespace {

constexpr double twoPi = 6.283185307179586;
constexpr float feedbackScale = 4.712389f; // radians at feedback 1
constexpr float silence = 0.001f;          // -60 dB

constexpr std::array<double, 5> ringDirection{1.0, -1.0, 1.0, -1.0, 1.0};
constexpr std::array<double, 5> ringSpread{0.3439, 0.271, 0.19, 0.1, 0.0};

struct Timbre
{
    double modRatio;
    float modIndex;
    float decaySeconds;
};

constexpr std::array<Timbre, 5> timbrePoints{{
    {1.0, 0.5f, 1.2f},
    {1.5, 1.5f, 0.8f},
    {2.0, 3.0f, 0.5f},
    {3.0, 4.5f, 0.25f},
    {5.0, 6.0f, 0.1f},
}};

Timbre timbreAt(float timbre)
{
    if (std::isnan(timbre))
        std::abort();
    const float x = timbre >= 1.0f ? 4.0f : 4.0f * std::max(timbre, 0.0f);
    const auto i = static_cast<std::size_t>(x);
    const float f = x - static_cast<float>(i);
    const Timbre& from = timbrePoints[i];
    const Timbre& to = timbrePoints[std::min<std::size_t>(i + 1, 4)];
    return {
        from.modRatio + static_cast<double>(f) * (to.modRatio - from.modRatio),
        from.modIndex + f * (to.modIndex - from.modIndex),
        from.decaySeconds + f * (to.decaySeconds - from.decaySeconds),
    };
}

/// Cut towards zero; stops the program where there is no such whole number.
std::int64_t wholeNumber(double value)
{
    if (!(value >= -9223372036854775808.0 && value < 9223372036854775808.0))
        std::abort();
    return static_cast<std::int64_t>(value);
}

NoteWeights blendedRow(std::int64_t scale, std::int64_t previous, float boredom)
{
    // A NaN is not above 0, and so becomes 0.
    const float b = boredom > 0.0f ? std::min(boredom, 1.0f) : 0.0f;
    const auto s = static_cast<std::size_t>(scale);
    const auto p = static_cast<std::size_t>(previous);
    NoteWeights from{};
    NoteWeights to{};
    float t = 0.0f;
    if (b <= 0.35f) {
        from = lowTransitions[s][p];
        to = middleTransitions[s][p];
        t = b / 0.35f;
    } else if (b <= 0.7f) {
        from = middleTransitions[s][p];
        to = highTransitions[s][p];
        t = (b - 0.35f) / 0.35f;
    } else {
        from = highTransitions[s][p];
        to.fill(1.0f / 12.0f);
        t = (b - 0.7f) / 0.3f;
    }
    NoteWeights row{};
    for (std::size_t i = 0; i < row.size(); ++i)
        row[i] = (1.0f - t) * from[i] + t * to[i];
    return row;
}

} // namespace

void ScalarVoice::render(float* buffer, int frames)
{
    const double carrierStep = carrierFreq / sampleRate;
    const double modStep = carrierFreq * modRatio / sampleRate;
    for (int k = 0; k < frames; ++k) {
        const float fbIn = (feedback * feedbackScale) * ((lastMod2 + lastMod1) * 0.5f);
        const auto mod = static_cast<float>(std::sin(modPhase * twoPi + static_cast<double>(fbIn)));
        const auto car =
            static_cast<float>(std::sin(carrierPhase * twoPi + static_cast<double>(currentModIndex * mod)));
        buffer[k] += (amplitude * gain) * car;
        carrierPhase += carrierStep;
        if (carrierPhase >= 1.0)
            carrierPhase -= 1.0;
        modPhase += modStep;
        if (modPhase >= 1.0)
            modPhase -= 1.0;
        amplitude *= decayRate;
        currentModIndex *= modDecayRate;
        lastMod2 = lastMod1;
        lastMod1 = mod;
    }
    if (amplitude < silence)
        active = false;
}

void ScalarTranscription::setParameter(std::uint64_t address, float value)
{
    switch (address) {
    case 0:
        activity = value;
        return;
    case 1:
        boredom = value;
        return;
    case 2:
        calories = value;
        return;
    case 3:
        drudgery = value;
        return;
    case 4:
        rootNote = value;
        return;
    case 5:
        scaleType = value;
        return;
    case 6:
        bpm = value;
        return;
    case 7:
        volume = value;
        return;
    case 8:
        sync = value > 0.5f;
        return;
    default:
        break;
    }
    const std::size_t ring = (address - 9) % rings;
    switch ((address - 9) / rings) {
    case 0:
        spotCounts[ring] = wholeNumber(static_cast<double>(value));
        return;
    case 1:
        phaseOffsets[ring] = value;
        return;
    case 2:
        probabilities[ring] = value;
        return;
    case 3:
        ringOctaves[ring] = wholeNumber(static_cast<double>(value));
        return;
    case 4:
        ringVolumes[ring] = value;
        return;
    case 5:
        ringTimbres[ring] = value;
        return;
    default:
        return;
    }
}

void ScalarTranscription::setup(std::int64_t newMaxFrames, double newSampleRate)
{
    if (newMaxFrames < 0)
        std::abort();
    maxFrames = newMaxFrames;
    sampleRate = newSampleRate;
    voices.assign(voiceCount, ScalarVoice{});
    for (auto& voice : voices)
        voice.sampleRate = newSampleRate;
    triggerOrder.clear();
    triggerOrder.reserve(voiceCount);
    scratchBuf.assign(static_cast<std::size_t>(newMaxFrames), 0.0f);
    reset();
}

void ScalarTranscription::reset()
{
    clockPhase = 0.0;
    lfoPhases.fill(0.0);
    clockPhaseBuf = 0.0;
    lastSpotIndex.fill(0);
    ringInitialised.fill(false);
    activityPhases.fill(0.0);
    lfoOffsets.fill(0.0);
    lastRingPhase.fill(0.0);
    lastPitchClass = -1;
    hostPlayingLast = false;
    internalPlayingLast = false;
}

void ScalarTranscription::process(float* left, float* right, int frameCount)
{
    if (frameCount < 1)
        return;
    if (voices.empty())
        std::abort();

    firedNotes.clear();
    noticeTransportEdges();
    const Tempo tempo = currentTempo();
    if (tempo.runs)
        runClock(tempo, frameCount);

    std::fill_n(scratchBuf.begin(), frameCount, 0.0f);
    for (auto& voice : voices)
        if (voice.active)
            voice.render(scratchBuf.data(), frameCount);

    for (int i = 0; i < frameCount; ++i) {
        const float product = volume * scratchBuf[static_cast<std::size_t>(i)];
        const float y = std::isfinite(product) ? std::tanh(product) : 0.0f;
        left[i] = y;
        right[i] = y;
    }

    std::erase_if(triggerOrder,
                  [this](int voice) { return !voices[static_cast<std::size_t>(voice)].active; });
    clockPhaseBuf = clockPhase;
}

void ScalarTranscription::noticeTransportEdges()
{
    const bool running = sync ? hostPlaying : internalPlaying;
    const bool wasRunning = sync ? hostPlayingLast : internalPlayingLast;
    if (wasRunning && !running) {
        clockPhase = 0.0;
        lfoPhases.fill(0.0);
        clockPhaseBuf = 0.0;
        activityPhases.fill(0.0);
        lfoOffsets.fill(0.0);
    }
    if (running && !wasRunning) {
        lastSpotIndex.fill(0);
        ringInitialised.fill(false);
        lastPitchClass = -1;
    }
    hostPlayingLast = hostPlaying;
    internalPlayingLast = internalPlaying;
}

ScalarTranscription::Tempo ScalarTranscription::currentTempo() const
{
    if (sync) {
        double quartersPerBar = 4.0;
        if (hostBeatsPerBar > 0.0)
            quartersPerBar = hostBeatsPerBar * 4.0 / (hostBeatUnit > 0.0 ? hostBeatUnit : 4.0);
        return {hostTempo > 0.0 && hostPlaying, hostTempo, quartersPerBar};
    }
    // A NaN fails both comparisons and runs at 300.
    const float bounded = bpm < 40.0f ? 40.0f : bpm < 300.0f ? bpm : 300.0f;
    return {internalPlaying, static_cast<double>(bounded), 4.0};
}

void ScalarTranscription::runClock(const Tempo& tempo, int frameCount)
{
    const double quartersPerBar = tempo.quartersPerBar;
    const double activityNow = static_cast<double>(activity);
    const double barInc = tempo.quartersPerMinute / (quartersPerBar * 60.0 * sampleRate);
    const double actInc = barInc / quartersPerBar * activityNow * 0.25;
    const double spread = 2.0 * std::max(activityNow - 0.5, 0.0);
    const double beatInc = tempo.quartersPerMinute / (sampleRate * 60.0);
    const double cycle = quartersPerBar * 8.0;
    const double lfoAmp = (static_cast<double>(calories) * 0.25) / (quartersPerBar * quartersPerBar);

    for (int frame = 0; frame < frameCount; ++frame) {
        clockPhase += barInc;
        if (clockPhase >= 1.0)
            clockPhase -= 1.0;
        for (std::size_t r = 0; r < rings; ++r) {
            activityPhases[r] += actInc * ringDirection[r] * (1.0 - spread * ringSpread[r]);
            if (activityPhases[r] >= 1.0)
                activityPhases[r] -= 1.0;
            else if (activityPhases[r] < 0.0)
                activityPhases[r] += 1.0;

            lfoPhases[r] += beatInc * (cycle - (4.0 - static_cast<double>(r))) / cycle;
            if (lfoPhases[r] >= 1.0)
                lfoPhases[r] -= 1.0;

            const double lfo = lfoAmp * std::sin(twoPi * lfoPhases[r]) * ringDirection[r];
            lfoOffsets[r] = lfo;

            if (spotCounts[r] < 1) {
                ringInitialised[r] = false;
                continue;
            }
            const double offset = std::max(static_cast<double>(phaseOffsets[r]), 0.001);
            const double local = std::fmod(clockPhase - offset - activityPhases[r] - lfo + 3.0, 1.0);
            crossSpots(r, local, frame);
        }
    }
}

void ScalarTranscription::crossSpots(std::size_t ring, double local, int frame)
{
    if (ringInitialised[ring] && lastRingPhase[ring] > 0.5 && local < 0.5)
        lastSpotIndex[ring] = -1;
    lastRingPhase[ring] = local;
    const std::int64_t n = spotCounts[ring];
    const std::int64_t spot = wholeNumber(local * static_cast<double>(n)) % n;
    if (!ringInitialised[ring]) {
        lastSpotIndex[ring] = spot;
        ringInitialised[ring] = true;
    } else if (spot != lastSpotIndex[ring]) {
        lastSpotIndex[ring] = spot;
        if (drawsFire(ring))
            fire(ring, spot, frame);
    }
}

float ScalarTranscription::drawUnit()
{
    rngState ^= rngState << 13;
    rngState ^= rngState >> 7;
    rngState ^= rngState << 17;
    return static_cast<float>(rngState & 0xFFFFFF) / 16777215.0f;
}

bool ScalarTranscription::drawsFire(std::size_t ring)
{
    const float probability = probabilities[ring];
    return probability >= 1.0f || drawUnit() < probability;
}

std::int64_t ScalarTranscription::nextNote(std::size_t ring)
{
    const std::int64_t root = wholeNumber(static_cast<double>(rootNote)) % 12;
    const std::int64_t scale = std::clamp<std::int64_t>(wholeNumber(static_cast<double>(scaleType)), 0, 3);
    NoteWeights row = initialWeights[static_cast<std::size_t>(scale)];
    if (lastPitchClass >= 0)
        row = blendedRow(scale, ((lastPitchClass - root) % 12 + 12) % 12, boredom);

    float total = 0.0f;
    for (const float weight : row)
        total += weight;

    std::int64_t chosen = 0;
    if (total <= 0.0f) {
        lastPitchClass = root;
    } else {
        const float target = total * drawUnit();
        float sum = 0.0f;
        for (std::size_t i = 0; i < row.size(); ++i) {
            sum += row[i];
            if (target < sum) {
                chosen = static_cast<std::int64_t>(i);
                break;
            }
        }
        lastPitchClass = (chosen + root) % 12;
    }
    return ringOctaves[ring] * 12 + lastPitchClass;
}

void ScalarTranscription::fire(std::size_t ring, std::int64_t spot, int frame)
{
    const std::int64_t note = nextNote(ring);
    const Timbre timbre = timbreAt(ringTimbres[ring]);
    const float gain = ringVolumes[ring] * ringVolumes[ring];
    const float wantedFeedback = drudgery * 0.75f;
    const auto rate = static_cast<float>(sampleRate);

    const std::size_t index = chooseVoice();
    ScalarVoice& voice = voices[index];
    voice.carrierFreq = 440.0 * std::pow(2.0, static_cast<double>(note - 69) / 12.0);
    voice.modRatio = timbre.modRatio;
    voice.modIndex = timbre.modIndex;
    voice.currentModIndex = timbre.modIndex;
    voice.gain = gain;
    voice.feedback = wantedFeedback > 0.0f ? std::min(wantedFeedback, 1.0f) : 0.0f;
    voice.decayRate = std::pow(0.001f, 1.0f / (timbre.decaySeconds * rate));
    voice.modDecayRate = std::pow(0.001f, 1.5f / (timbre.decaySeconds * rate));
    voice.amplitude = 1.0f;
    voice.lastMod1 = 0.0f;
    voice.lastMod2 = 0.0f;
    voice.carrierPhase = 0.0;
    voice.modPhase = 0.0;
    voice.ring = static_cast<std::int64_t>(ring);
    voice.active = true;
    triggerOrder.push_back(static_cast<int>(index));

    firedNotes.push_back({frame, static_cast<int>(ring), static_cast<int>(spot), static_cast<int>(note), gain,
                          timbre.decaySeconds});
}

std::size_t ScalarTranscription::chooseVoice()
{
    for (std::size_t i = 0; i < voices.size(); ++i)
        if (!voices[i].active)
            return i;
    if (triggerOrder.empty())
        std::abort();
    const auto oldest = static_cast<std::size_t>(triggerOrder.front());
    triggerOrder.erase(triggerOrder.begin());
    return oldest;
}

} // namespace velotrine::reference
