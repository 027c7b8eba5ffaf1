#include "engine/VoicePool.h"

#include "engine/FatalError.h"
#include "engine/VoiceBatch.h"

#include <algorithm>
#include <span>

namespace velotrine {

void VoicePool::TriggerOrder::append(int voice) noexcept VELOTRINE_NONBLOCKING
{
    if (count == indices.size())
        fatalError("VoicePool: more sounding voices than there are");
    indices[count++] = voice;
}

int VoicePool::TriggerOrder::takeFront() noexcept VELOTRINE_NONBLOCKING
{
    if (count == 0)
        fatalError("VoicePool: all voices sound, but none of them was noted as started");
    const int front = indices[0];
    std::copy(indices.begin() + 1, indices.begin() + static_cast<std::ptrdiff_t>(count), indices.begin());
    --count;
    return front;
}

VoicePool::VoicePool(double sampleRate) noexcept
{
    for (auto& voice : voices)
        voice.sampleRate = sampleRate;
}

FMVoice& VoicePool::allocate() noexcept VELOTRINE_NONBLOCKING
{
    const auto* const free =
        std::find_if(voices.begin(), voices.end(), [](const FMVoice& voice) { return !voice.active; });
    const int index =
        free != voices.end() ? static_cast<int>(free - voices.begin()) : triggerOrder.takeFront();
    triggerOrder.append(index);
    return voices[static_cast<std::size_t>(index)];
}

void VoicePool::silence() noexcept VELOTRINE_NONBLOCKING
{
    for (auto& voice : voices)
        voice.active = false;
    triggerOrder.clear();
}

bool VoicePool::isSilent() const noexcept VELOTRINE_NONBLOCKING
{
    return std::ranges::none_of(voices, &FMVoice::active);
}

void VoicePool::render(float* buffer, int frames) noexcept VELOTRINE_NONBLOCKING
{
    std::array<FMVoice*, voiceCount> sounding{};
    std::size_t soundingCount = 0;
    for (auto& voice : voices)
        if (voice.active)
            sounding[soundingCount++] = &voice;
    renderVoices(std::span(sounding).first(soundingCount), buffer, frames);
}

void VoicePool::forgetSilentVoices() noexcept VELOTRINE_NONBLOCKING
{
    triggerOrder.removeIf([this](int index) { return !voices[static_cast<std::size_t>(index)].active; });
}

} // namespace velotrine
