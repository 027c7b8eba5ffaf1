#pragma once

namespace velotrine {

/// Stops the program after naming the broken precondition on standard error: "velotrine: fatal: <condition>".
/// For mistakes of this program alone; whatever comes from a user, a host or a file is refused before it gets
/// here. Any thread, even the render thread: the process ends, so printing does no harm.
[[noreturn]] void fatalError(const char* condition) noexcept;

} // namespace velotrine
