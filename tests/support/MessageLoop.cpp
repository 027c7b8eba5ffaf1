#include "tests/support/MessageLoop.h"

#include <juce_events/juce_events.h>
#include <juce_events/native/juce_linux_EventLoopInternal.h>

#include <chrono>
#include <vector>

#include <poll.h>

namespace velotrine {

bool runMessagesUntil(const std::function<bool()>& condition, double timeoutSeconds)
{
    using std::chrono::steady_clock;
    constexpr int pollMilliseconds = 5;
    const auto end = steady_clock::now() + std::chrono::duration<double>(timeoutSeconds);
    while (!condition()) {
        if (steady_clock::now() >= end)
            return false;
        std::vector<pollfd> sources;
        for (const int descriptor : juce::LinuxEventLoopInternal::getRegisteredFds())
            sources.push_back({descriptor, POLLIN, 0});
        ::poll(sources.data(), sources.size(), pollMilliseconds);
        for (const auto& source : sources)
            if (source.revents != 0)
                juce::LinuxEventLoopInternal::invokeEventLoopCallbackForFd(source.fd);
    }
    return true;
}

void runMessagesFor(double seconds)
{
    (void)runMessagesUntil([] { return false; }, seconds);
}

} // namespace velotrine
