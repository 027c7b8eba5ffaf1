#pragma once

namespace velotrine {

/// Stops the program after naming the broken precondition on standard error: "velotrine: fatal: <condition>".
/// For mistakes of this program alone; whatever comes from a user, a host or a file is refused before it gets
/// here. Any thread. It ends the process, so that it may print even where printing is otherwise forbidden.
[[noreturn]] void fatalError(const char* condition) noexcept;

} // namespace velotrine
