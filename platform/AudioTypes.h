#pragma once

#include <cstdint>
#include <span>

/// Basic types: counts, times, buffers, result codes.
namespace velotrine {

using AUValue = float;
using AUAudioFrameCount = std::uint32_t;
using AUEventSampleTime = std::int64_t;
using AUParameterAddress = std::uint64_t;

/// 0 for success, negative for an error.
using AUAudioUnitStatus = std::int32_t;

inline constexpr AUAudioUnitStatus noErr = 0;
inline constexpr AUAudioUnitStatus kAudioUnitErr_Uninitialized = -10867;
inline constexpr AUAudioUnitStatus kAudioUnitErr_FormatNotSupported = -10868;
inline constexpr AUAudioUnitStatus kAudioUnitErr_TooManyFramesToProcess = -10874;
inline constexpr AUAudioUnitStatus kAudioUnitErr_FailedInitialization = -10875;
inline constexpr AUAudioUnitStatus kAudioUnitErr_InvalidElement = -10877;
inline constexpr AUAudioUnitStatus kAudioUnitErr_InvalidParameter = -10878;
inline constexpr AUAudioUnitStatus kAudioComponentErr_NotFound = -3000;
inline constexpr AUAudioUnitStatus kAudioComponentErr_DuplicateDescription = -66752;

using AudioUnitRenderActionFlags = std::uint32_t;

struct AudioTimeStamp
{
    double mSampleTime = 0.0;    ///< frames since the start of rendering
    std::uint64_t mHostTime = 0; ///< host clock ticks
};

/// One channel of samples, each a 32-bit float.
struct AudioBuffer
{
    std::uint32_t mNumberChannels = 1;
    std::uint32_t mDataByteSize = 0;
    void* mData = nullptr;
};

/// The channels of one render cycle. The buffers belong to the caller.
struct AudioBufferList
{
    std::span<AudioBuffer> mBuffers;
};

} // namespace velotrine
