#pragma once

#include <lv2/core/lv2.h>
#include <lv2/log/log.h>
#include <lv2/urid/urid.h>

#include <string>

namespace velotrine {

/// Where to say what went wrong: the host's log, or standard error if it has none. Not for the
/// render thread.
class Lv2Log
{
public:
    explicit Lv2Log(const LV2_Feature* const* features);

    void error(const std::string& message) const;

    /// Says that the instrument stays silent at a rate, in Hz, that no device has.
    void sampleRateError(double sampleRate) const;

private:
    const LV2_Log_Log* hostLog;
    LV2_URID errorKind = 0;
};

} // namespace velotrine
