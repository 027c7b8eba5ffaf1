#pragma once

#include <juce_events/juce_events.h>

#include <functional>
#include <utility>

namespace velotrine {

/// Brings a request from any thread to the main thread; several before it gets there are one. Whoever asks
/// holds it by a weak pointer, since it may be gone before a thread notices. Made and cancelled on the main
/// thread; not for the render thread, since it may wait.
class MainThreadRequest final : public juce::AsyncUpdater
{
public:
    explicit MainThreadRequest(std::function<void()> actionToRun) : action(std::move(actionToRun)) {}

    /// The action will not run any more.
    void cancel()
    {
        action = nullptr;
        cancelPendingUpdate();
    }

private:
    void handleAsyncUpdate() override
    {
        if (action)
            action();
    }

    std::function<void()> action; ///< main thread
};

} // namespace velotrine
