#include "plugin/vst3/HostChecks.h"

#include "plugin/HostedState.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <span>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace velotrine {

namespace {

using namespace Steinberg;
using namespace std::string_view_literals;

constexpr std::size_t outputChannels = 2;

std::span<Vst::AudioBusBuffers> bussesOf(const Vst::ProcessData& block) noexcept
{
    if (block.outputs == nullptr || block.numOutputs < 1)
        return {};
    return {block.outputs, static_cast<std::size_t>(block.numOutputs)};
}

/// Pointers to samples of either size.
std::span<void*> channelsOf(const Vst::AudioBusBuffers& bus) noexcept
{
    if (bus.channelBuffers32 == nullptr || bus.numChannels < 1)
        return {};
    return {reinterpret_cast<void**>(bus.channelBuffers32), static_cast<std::size_t>(bus.numChannels)};
}

/// @param kept  how many of the first bus's channels stay as they are
void clearAllBut(std::size_t kept, const Vst::ProcessData& block) noexcept
{
    const auto sampleBytes = block.symbolicSampleSize == Vst::kSample64 ? sizeof(double) : sizeof(float);
    for (const auto& bus : bussesOf(block))
        for (auto* const channel : channelsOf(bus).subspan(std::exchange(kept, 0)))
            if (channel != nullptr)
                std::memset(channel, 0, sampleBytes * static_cast<std::size_t>(block.numSamples));
}

// What the wrapper puts behind the instrument's text: eight zero bytes, its own values, their length, its
// name. It has one value, a byte that says whether the host has bypassed the plug-in.
constexpr auto wrapperName = "JUCEPrivateData"sv;
constexpr auto beforeBypass = "\0\0\0\0\0\0\0\0JUCEPrivateData\0\1\1Bypass\0\1\1"sv;
constexpr auto yesAndNo = "\2\3"sv;
constexpr auto behindBypass = "\0\x1D\0\0\0\0\0\0\0JUCEPrivateData"sv;

/// Without the wrapper's part, which a state need not have.
std::string_view instrumentsPart(std::string_view state)
{
    if (!state.ends_with(wrapperName))
        return state;
    constexpr auto size = beforeBypass.size() + 1 + behindBypass.size();
    const auto ours = state.substr(0, state.size() - std::min(state.size(), size));
    const auto wrappers = state.substr(ours.size());
    if (wrappers.size() != size || !wrappers.starts_with(beforeBypass) || !wrappers.ends_with(behindBypass) ||
        yesAndNo.find(wrappers[beforeBypass.size()]) == std::string_view::npos)
        throw std::invalid_argument("the wrapper's part of the state is damaged");
    return ours;
}

} // namespace

tresult checkBlock(const Vst::ProcessData& block, bool isActive) noexcept
{
    if (block.numSamples < 0)
        return kInvalidArgument;
    if (block.numSamples == 0)
        return kResultOk; // nothing but values, which a host may set at any time
    if (isActive && block.symbolicSampleSize == Vst::kSample32)
        return kResultOk;
    clearAllBut(0, block);
    return isActive ? kInvalidArgument : kNotInitialized;
}

template <typename Sample>
juce::AudioBuffer<Sample> outputOf(const Vst::ProcessData& block, bool isSwitchedOn) noexcept
{
    const auto busses = bussesOf(block);
    const auto channels = busses.empty() ? std::span<void*>() : channelsOf(busses[0]);
    std::array<Sample*, outputChannels> output{};
    for (std::size_t i = 0; i < std::min(channels.size(), outputChannels); ++i)
        output[i] = static_cast<Sample*>(channels[i]);
    const bool isWhole = isSwitchedOn && output[0] != nullptr && output[1] != nullptr;
    const auto used = isWhole ? outputChannels : 0;
    clearAllBut(used, block);
    return {output.data(), static_cast<int>(used), block.numSamples};
}

template juce::AudioBuffer<float> outputOf(const Vst::ProcessData&, bool) noexcept;
template juce::AudioBuffer<double> outputOf(const Vst::ProcessData&, bool) noexcept;

void checkState(const void* bytes, int size)
{
    const std::string_view state(static_cast<const char*>(bytes), static_cast<std::size_t>(size));
    if (const auto read = hostedStateFromText(instrumentsPart(state)); !read.state)
        throw std::invalid_argument(read.error);
}

} // namespace velotrine
