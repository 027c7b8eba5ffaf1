#pragma once

#include "engine/ParameterAddress.h"

namespace velotrine {

/// What a music host is told of the edits that do not come from itself: a control is taken hold of, has new
/// values, is let go. Main thread.
class InstrumentHost
{
public:
    virtual ~InstrumentHost() = default;

    virtual void beginGesture(ParameterAddress address) = 0;
    virtual void valueChanged(ParameterAddress address, float value) = 0;
    virtual void endGesture(ParameterAddress address) = 0;
};

} // namespace velotrine
