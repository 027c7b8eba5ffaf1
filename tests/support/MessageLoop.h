#pragma once

#include <functional>

namespace velotrine {

/// Lets JUCE's message thread, which is the test's own, do what is due, until the condition holds. Whether it
/// did in time.
[[nodiscard]] bool runMessagesUntil(const std::function<bool()>& condition, double timeoutSeconds);

void runMessagesFor(double seconds);

} // namespace velotrine
