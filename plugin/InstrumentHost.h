#pragma once

#include "engine/ParameterAddress.h"

namespace velotrine {

/// What a music host is told of edits that it did not make itself: a gesture on a control begins, brings new
/// values, and ends. Main thread.
class InstrumentHost
{
public:
    virtual ~InstrumentHost() = default;

    virtual void beginGesture(ParameterAddress address) = 0;
    virtual void valueChanged(ParameterAddress address, float value) = 0;
    virtual void endGesture(ParameterAddress address) = 0;

    /// Something that only a state tells is another now, such as the seed. For hosts that know that a session
    /// is to be saved.
    virtual void stateChanged() {}
};

} // namespace velotrine
