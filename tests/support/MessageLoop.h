#pragma once

#include <functional>

namespace velotrine {

/// Runs JUCE's messages on this thread until the condition holds. Whether it did in time.
[[nodiscard]] bool runMessagesUntil(const std::function<bool()>& condition, double timeoutSeconds);

void runMessagesFor(double seconds);

} // namespace velotrine
