#pragma once

#include <lv2/core/lv2.h>
#include <lv2/log/log.h>
#include <lv2/urid/urid.h>

#include <string>

namespace velotrine {

/// Where a host wants to read what went wrong: its own log, or standard error if it has none. Not for the
/// render thread.
class Lv2Log
{
public:
    explicit Lv2Log(const LV2_Feature* const* features);

    void error(const std::string& message) const;

    /// That the instrument is silent at a rate, in Hz, which no device has.
    void sampleRateError(double sampleRate) const;

private:
    const LV2_Log_Log* hostLog;
    LV2_URID errorKind = 0;
};

} // namespace velotrine
