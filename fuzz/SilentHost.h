#pragma once

#include "plugin/InstrumentHost.h"

namespace velotrine {

/// A music host that is told and does nothing about it.
class SilentHost final : public InstrumentHost
{
public:
    void beginGesture(ParameterAddress) override {}

    void valueChanged(ParameterAddress, float) override {}

    void endGesture(ParameterAddress) override {}
};

} // namespace velotrine
