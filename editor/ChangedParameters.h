#pragma once

#include "engine/AddressSet.h"

#include <juce_events/juce_events.h>

#include <functional>
#include <utility>

namespace velotrine {

/// Which parameters have changed since the editor last read them. Any thread adds to it; the main thread
/// reads them again, once for any number of changes. Whoever adds holds it by a weak pointer, since it may be
/// gone before a thread notices. Made and cancelled on the main thread; not for the render thread, since a
/// message may wait.
class ChangedParameters final : private juce::AsyncUpdater
{
public:
    /// @param read  called on the main thread with what has changed
    explicit ChangedParameters(std::function<void(AddressSet)> read) : readAgain(std::move(read)) {}

    void insert(AddressSet addresses)
    {
        changed.insert(addresses);
        triggerAsyncUpdate();
    }

    /// Nothing is read any more.
    void cancel()
    {
        readAgain = nullptr;
        cancelPendingUpdate();
    }

private:
    void handleAsyncUpdate() override
    {
        if (readAgain)
            readAgain(changed.takeAll());
    }

    SharedAddressSet changed;
    std::function<void(AddressSet)> readAgain; ///< main thread
};

} // namespace velotrine
