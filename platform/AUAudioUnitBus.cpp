#include "platform/AUAudioUnitBus.h"

#include "platform/AUError.h"

#include <string>

namespace velotrine {

namespace {

const AVAudioFormat& checked(const AVAudioFormat& format)
{
    if (!AVAudioFormat::standardFormat(format.sampleRate, format.channelCount))
        throw AUError(kAudioUnitErr_FormatNotSupported,
                      "A bus needs a positive, finite sample rate and at least one channel.");
    return format;
}

} // namespace

AUAudioUnitBus::AUAudioUnitBus(const AVAudioFormat& format) : busFormat(checked(format)) {}

void AUAudioUnitBus::setFormat(const AVAudioFormat& format)
{
    busFormat = checked(format);
}

AUAudioUnitBus& AUAudioUnitBusArray::operator[](std::size_t index) const
{
    if (index >= count())
        throw AUError(kAudioUnitErr_InvalidElement, "There is no bus " + std::to_string(index) + ".");
    return *busses[index];
}

} // namespace velotrine
